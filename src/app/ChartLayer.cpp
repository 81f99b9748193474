#include "app/ChartLayer.h"

#include "painting/PainterCanvas.h"

#include <cmath>
#include <numbers>

namespace kelvox {

QColor LayerLook::color(const char* token) const
{
    const DisplayColor* color = portrayal.color(token);
    return color ? toQColor(*color) : QColor(Qt::magenta);
}

QTransform moveBetween(const ViewFrame& from, const ViewFrame& to)
{
    // Three corners of the old picture pin the affine transform to the new one.
    const auto middle = [](const ViewFrame& frame) {
        return frame.placeOf({frame.width / 2.0, frame.height / 2.0}).x;
    };
    const double around = std::round(middle(to) - middle(from)); // one of them crossed 180°
    const auto place = [&](double x, double y) {
        SheetPlace there = from.placeOf({x, y});
        there.x += around;
        const Point p = to.pixelOf(there);
        return QPointF(p.x, p.y);
    };
    const QPointF origin = place(0, 0);
    const QPointF right = place(from.width, 0) - origin;
    const QPointF down = place(0, from.height) - origin;
    return {right.x() / from.width,
            right.y() / from.width,
            down.x() / from.height,
            down.y() / from.height,
            origin.x(),
            origin.y()};
}

QPointF ChartLayer::pointOf(Position position, const ViewFrame& frame)
{
    constexpr double topOrdinate = S57Controller::value85;
    const double latitude = position.latitude * std::numbers::pi / 180;
    const double ordinate = std::asinh(std::tan(latitude));
    SheetPlace place{(position.longitude + 180) / 360, (ordinate / topOrdinate + 1) / 2};
    const double middle = frame.placeOf({frame.width / 2.0, frame.height / 2.0}).x;
    place.x += std::round(middle - place.x);
    const Point p = frame.pixelOf(place);
    return {p.x / frame.pixelsPerPoint, p.y / frame.pixelsPerPoint};
}

} // namespace kelvox
