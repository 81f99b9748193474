#pragma once

#include "base/Position.h"

namespace kelvox {

/// What a chart view needs of a raster chart to lay view points onto its picture.
///
/// Image points are pixels of the full-size picture, x to the right from the left column, y UPWARD
/// from the bottom row: the centre of the lower left pixel is (0, 0), that of the upper right one
/// is (width - 1, height - 1). Fractions are kept. Rotations are in degrees, counter-clockwise in a
/// plane whose y grows upward, which is also how the chart view turns its Mercator plane.
///
/// Converting is const and may be done on any thread; setRotate() and resetAngleTransform() belong
/// to the thread of the view that shows the chart.
class RasterChart {
public:
    virtual ~RasterChart() = default;

    /// Width and height in whole pixels.
    [[nodiscard]] virtual Size size() const = 0;

    /// Position of the lower left pixel, image point (0, 0); unknown without geo-referencing.
    [[nodiscard]] virtual Position originOnGPSPosition() const = 0;
    /// Position of the upper right pixel, image point (width - 1, height - 1).
    [[nodiscard]] virtual Position extentOnGPSPosition() const = 0;

    /// The image point of a WGS 84 position, also beyond the picture's edges;
    /// (-10000, -10000) when no header is loaded.
    [[nodiscard]] virtual Point positionToPoint(Position position) const = 0;
    /// The WGS 84 position of an image point; the unknown position when no header is loaded.
    [[nodiscard]] virtual Position pointToPosition(Point point) const = 0;

    /// Turn that brings the picture north up, 0 up to 360: 270 for a chart printed with north to
    /// the left. Does not contain the view's own rotation.
    [[nodiscard]] virtual float angle() const = 0;
    /// The view's rotation, which the picture follows in addition to its angle().
    virtual void setRotate(float degrees) = 0;
    /// Rebuilds the transform behind rotatedPoint() from angle() and the rotation last set.
    virtual void resetAngleTransform() = 0;
    /// The diagonal from the chart's origin to its extent, given by its absolute components in the
    /// view (turned by angle() and the rotation), as components along the picture's own x and y
    /// axes. So |result.x| / width and |result.y| / height are view points per pixel at any turn.
    [[nodiscard]] virtual Point rotatedPoint(Point diagonal) const = 0;
};

} // namespace kelvox
