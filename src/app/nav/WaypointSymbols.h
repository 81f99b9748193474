#pragma once

#include "app/ChartLayer.h"

#include <QIcon>
#include <QPixmap>

namespace kelvox {

/// The picture of a waypoint: that of resources/icons/waypoints where there is one, else a plain
/// shape by the icon's name. In the chart's colours, so that it darkens with the chart.
/// @param index place in waypointIcons()
/// @param size of its square, widget pixels
[[nodiscard]] QPixmap waypointSymbol(int index, const LayerLook& look, int size, double pixelRatio);
/// For lists and the chooser.
[[nodiscard]] QIcon waypointSymbolIcon(int index, const LayerLook& look, int size);

} // namespace kelvox
