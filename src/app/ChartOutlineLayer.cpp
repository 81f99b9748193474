#include "app/ChartOutlineLayer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

void ChartOutlineLayer::outline(QPainter& painter, const ChartRecord& chart, const ViewFrame& frame)
{
    const Rect view = frame.coveredBox(0);
    const double shift = 360 * std::round((view.center().x - chart.bounds.center().x) / 360);
    const AffineTransform toPixels = frame.toPixels();
    const auto at = [&](Point p) {
        constexpr double highest = 84.9;
        const double latitude = std::clamp(p.y, -highest, highest) * std::numbers::pi / 180;
        const Point pixel = toPixels.map({p.x + shift, std::asinh(std::tan(latitude))});
        // Painters go wrong far outside the view.
        constexpr double far = 20'000;
        return QPointF(std::clamp(pixel.x / frame.pixelsPerPoint, -far, far),
                       std::clamp(pixel.y / frame.pixelsPerPoint, -far, far));
    };
    const Rect& box = chart.bounds;
    if (box.left + shift > view.right || box.right + shift < view.left)
        return;
    if (chart.coverage.empty()) {
        painter.drawPolygon(QPolygonF{at({box.left, box.bottom}), at({box.right, box.bottom}),
                                      at({box.right, box.top}), at({box.left, box.top})});
        return;
    }
    for (const auto& ring : chart.coverage) {
        QPolygonF line;
        for (const Point p : ring)
            line << at(p);
        painter.drawPolygon(line);
    }
}

void ChartOutlineLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    painter.setBrush(Qt::NoBrush);
    for (const auto& chart : m_records()) {
        if (!chart->isUsable())
            continue;
        painter.setPen(
            QPen(look.color(chart->kind == ChartKind::Cell ? "CHMGD" : "CHGRN"), look.scale));
        outline(painter, *chart, frame);
    }
    if (!m_pointed || !m_pointed->isUsable())
        return;
    QColor fill = look.color("CHMGD");
    painter.setPen(QPen(fill, 3 * look.scale));
    fill.setAlphaF(0.15F);
    painter.setBrush(fill);
    outline(painter, *m_pointed, frame);
}

} // namespace kelvox
