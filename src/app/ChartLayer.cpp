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
