#pragma once

#include "ais/AISPicture.h"
#include "app/LiveData.h"
#include "chartview/ViewFrame.h"
#include "presentation/S52Render.h"

#include <QPainter>

namespace kelvox {

/// Paints what moves over the chart: the own vessel and the traffic.
class LiveLayer {
public:
    /// @param painter in device pixels of the frame
    void paint(QPainter& painter, LiveData& live, const ViewFrame& frame,
               const Portrayal& portrayal);

private:
    AISPicture m_picture;
};

} // namespace kelvox
