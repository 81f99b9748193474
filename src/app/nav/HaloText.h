#pragma once

#include <QPainter>
#include <QString>

namespace kelvox {

/// Text over the chart with a rim of the water's colour, legible on whatever lies beneath.
/// @param baseline left end of the base line
inline void drawHaloText(QPainter& painter, QPointF baseline, const QString& text,
                         const QColor& color, const QColor& halo)
{
    painter.setPen(halo);
    for (const QPointF around :
         {QPointF(1, 1), QPointF(1, -1), QPointF(-1, 1), QPointF(-1, -1), QPointF(1.4, 0),
          QPointF(-1.4, 0), QPointF(0, 1.4), QPointF(0, -1.4)})
        painter.drawText(baseline + around, text);
    painter.setPen(color);
    painter.drawText(baseline, text);
}

} // namespace kelvox
