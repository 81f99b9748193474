#include "chartview/ViewFrame.h"

#include <algorithm>
#include <cmath>

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

ViewFrame ViewFrame::at(Position center, int scale, float rotation, int width, int height,
                        double pixelsPerPoint, unsigned dpi)
{
    ViewFrame frame;
    frame.view = S57Controller(dpi);
    frame.view.setScale(std::max(scale, 1));
    frame.view.chartSize();
    frame.view.setRotatePosition(center.longitude, center.latitude);
    frame.view.setRotate(rotation);
    frame.center = frame.view.positionToPoint(center);
    frame.width = width;
    frame.height = height;
    frame.pixelsPerPoint = pixelsPerPoint;
    return frame;
}

ViewFrame ViewFrame::fitting(const Rect& degrees, int width, int height, double pixelsPerPoint,
                             unsigned dpi)
{
    constexpr int reference = 1'000'000;
    constexpr double air = 1.06;
    constexpr double farthestLatitude = 85;
    const double south = std::clamp(degrees.bottom, -farthestLatitude, farthestLatitude);
    const double north = std::clamp(degrees.top, -farthestLatitude, farthestLatitude);
    ViewFrame frame = at({degrees.left, south}, reference, 0, width, height, pixelsPerPoint, dpi);
    const Point lower = frame.view.positionToPoint({degrees.left, south});
    const Point upper = frame.view.positionToPoint({degrees.right, north});
    const double ratio = std::max((upper.x - lower.x) * pixelsPerPoint / width,
                                  (upper.y - lower.y) * pixelsPerPoint / height);
    const double scale = std::clamp(reference * ratio * air, 500.0, 200e6);
    const Position middle = frame.view.pointToPosition((lower + upper) * 0.5);
    return at(middle, static_cast<int>(scale), 0, width, height, pixelsPerPoint, dpi);
}

} // namespace kelvox
