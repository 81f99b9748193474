#include "chartview/ViewFrame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

AffineTransform ViewFrame::toPixels() const
{
    const AffineTransform t = view.mercatorTransform();
    const double s = pixelsPerPoint;
    return {t.a * s,
            -t.b * s,
            t.c * s,
            -t.d * s,
            (t.tx - center.x) * s + width / 2.0,
            (center.y - t.ty) * s + height / 2.0};
}

Rect ViewFrame::coveredBox(double margin) const
{
    const AffineTransform t = toPixels();
    const double determinant = t.a * t.d - t.b * t.c;
    Rect box;
    for (const double x : {-margin, width + margin})
        for (const double y : {-margin, height + margin}) {
            const double dx = x - t.tx;
            const double dy = y - t.ty;
            box.include(
                Point{(t.d * dx - t.c * dy) / determinant, (t.a * dy - t.b * dx) / determinant});
        }
    return box;
}

SheetPlace ViewFrame::placeOf(Point pixel) const
{
    const double angle = view.rotate() * std::numbers::pi / 180;
    const Point away = viewPointOf(pixel) - view.rotatePoint();
    const Point straight{away.x * std::cos(angle) + away.y * std::sin(angle),
                         away.y * std::cos(angle) - away.x * std::sin(angle)};
    const Point p = view.rotatePoint() + straight;
    return {p.x / view.sheet().width, p.y / view.sheet().height};
}

Position ViewFrame::positionOf(Point pixel) const
{
    const SheetPlace place = placeOf(pixel);
    const double ordinate = (2 * place.y - 1) * static_cast<double>(S57Controller::value85);
    return {place.x * 360 - 180, std::atan(std::sinh(ordinate)) * 180 / std::numbers::pi};
}

Point ViewFrame::pixelOf(SheetPlace place) const
{
    const double angle = view.rotate() * std::numbers::pi / 180;
    const Point p{place.x * view.sheet().width, place.y * view.sheet().height};
    const Point away = p - view.rotatePoint();
    return pixelOf(view.rotatePoint()
                   + Point{away.x * std::cos(angle) - away.y * std::sin(angle),
                           away.x * std::sin(angle) + away.y * std::cos(angle)});
}

ViewFrame ViewFrame::at(SheetPlace center, int scale, float rotation, int width, int height,
                        double pixelsPerPoint, unsigned dpi)
{
    ViewFrame frame;
    frame.view = S57Controller(dpi);
    frame.view.setScale(std::max(scale, 1));
    frame.view.chartSize();
    const Size sheet = frame.view.sheet();
    frame.center = {center.x * sheet.width, center.y * sheet.height};
    frame.view.setRotatePoint(frame.center);
    frame.view.setRotate(rotation);
    frame.width = width;
    frame.height = height;
    frame.pixelsPerPoint = pixelsPerPoint;
    return frame;
}

ViewFrame ViewFrame::at(Position center, int scale, float rotation, int width, int height,
                        double pixelsPerPoint, unsigned dpi)
{
    const S57Controller view(dpi);
    const Point p = view.mercatorPositionToPoint(center);
    return at(SheetPlace{p.x / view.sheet().width, p.y / view.sheet().height}, scale, rotation,
              width, height, pixelsPerPoint, dpi);
}

ViewFrame ViewFrame::fitting(const Rect& degrees, int width, int height, double pixelsPerPoint,
                             unsigned dpi)
{
    constexpr int reference = 1'000'000;
    constexpr double air = 1.06;
    constexpr double farthestLatitude = 85;
    const double south = std::clamp(degrees.bottom, -farthestLatitude, farthestLatitude);
    const double north = std::clamp(degrees.top, -farthestLatitude, farthestLatitude);
    ViewFrame frame =
        at(Position{degrees.left, south}, reference, 0, width, height, pixelsPerPoint, dpi);
    const Point lower = frame.view.positionToPoint({degrees.left, south});
    const Point upper = frame.view.positionToPoint({degrees.right, north});
    const double ratio = std::max((upper.x - lower.x) * pixelsPerPoint / width,
                                  (upper.y - lower.y) * pixelsPerPoint / height);
    const double scale = std::clamp(reference * ratio * air, 500.0, 200e6);
    const Position middle = frame.view.pointToPosition((lower + upper) * 0.5);
    return at(middle, static_cast<int>(scale), 0, width, height, pixelsPerPoint, dpi);
}

} // namespace kelvox
