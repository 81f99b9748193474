#pragma once

#include "basemap/BaseMap.h"
#include "chartview/ViewFrame.h"
#include "presentation/Canvas.h"
#include "presentation/S52Item.h"

namespace kelvox {

/// Colours of the base map, from those of the chart but never the same: land between LANDA and
/// NODTA, so that no one takes it for an official chart's. The sea is NODTA, which the picture is
/// filled with before.
struct BaseMapColors {
    DisplayColor land;
    DisplayColor shore;
    DisplayColor hatch; ///< over land and sea where the map is shown finer than it is good for

    [[nodiscard]] static BaseMapColors from(const S52CcieMap& colors);
};

/// Draws the land that a picture shows, simplified to what can be seen and clipped to the picture
/// and a margin: every bin an area, its shores lines, then the hatching. Repeats around the Earth
/// as far as one and a half times to either side.
void drawBaseMap(const BaseMap& map, const ViewFrame& frame, const BaseMapColors& colors,
                 Canvas& canvas);

} // namespace kelvox
