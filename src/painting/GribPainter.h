#pragma once

#include "chartview/ViewFrame.h"
#include "presentation/DisplayColor.h"
#include "weather/GribController.h"

#include <QPainter>

namespace kelvox {

/// Paints what the weather controller shows over a picture of the chart.
/// @param paper colour of the halo around labels
void paintGrib(QPainter& painter, const GribController& weather, const ViewFrame& frame,
               DisplayColor paper);

} // namespace kelvox
