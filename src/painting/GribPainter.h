#pragma once

#include "chartview/ViewFrame.h"
#include "presentation/DisplayColor.h"
#include "presentation/S52Render.h"
#include "weather/GribController.h"

#include <QPainter>

namespace kelvox {

/// The chart's colours that weather is fitted to.
struct GribLook {
    DisplayColor paper; ///< of the halo around labels
    DisplayColor ink{0, 0, 0}; ///< of the chart's own lines: nothing on a dark chart is brighter

    [[nodiscard]] static GribLook of(const Portrayal& portrayal);
};

/// A colour meant for paper as it looks on this chart. On a dark one it keeps its hue, what was
/// dark becomes bright, and nothing has more luminance than the ink.
DisplayColor gribInk(GribColor color, const GribLook& look);

/// Paints what the weather controller shows over a picture of the chart.
void paintGrib(QPainter& painter, const GribController& weather, const ViewFrame& frame,
               const GribLook& look);

} // namespace kelvox
