#pragma once

#include "base/Rect.h"
#include "chartview/S57Controller.h"

namespace kelvox {

/// A place on the Mercator sheet whatever its scale: fractions of its width and height from the
/// lower left corner. Keeps the full precision that a view needs while it moves.
struct SheetPlace {
    double x = 0.5;
    double y = 0.5;

    friend bool operator==(const SheetPlace&, const SheetPlace&) = default;
};

/// What a picture of the chart shows: a snapshot of the view transform with the picture's place,
/// size and sharpness. Pixels run right and down from the upper left corner of the picture.
struct ViewFrame {
    S57Controller view{S57Controller::maximumDpi}; ///< no raster chart attached
    Point center; ///< view point in the middle of the picture
    int width = 0; ///< pixels
    int height = 0;
    double pixelsPerPoint = 1;

    /// From view points to pixels.
    [[nodiscard]] Point pixelOf(Point viewPoint) const
    {
        return {(viewPoint.x - center.x) * pixelsPerPoint + width / 2.0,
                (center.y - viewPoint.y) * pixelsPerPoint + height / 2.0};
    }
    [[nodiscard]] Point viewPointOf(Point pixel) const
    {
        return {(pixel.x - width / 2.0) / pixelsPerPoint + center.x,
                center.y - (pixel.y - height / 2.0) / pixelsPerPoint};
    }
    /// From longitude in degrees and Mercator ordinate to pixels.
    [[nodiscard]] AffineTransform toPixels() const;
    /// The box of longitude in degrees and Mercator ordinate around the picture grown by a margin
    /// of pixels. Runs past 180° where the picture does.
    [[nodiscard]] Rect coveredBox(double margin) const;

    /// A frame at a scale that shows all of a box of degrees (left west, bottom south) with a
    /// little air around it.
    [[nodiscard]] static ViewFrame fitting(const Rect& degrees, int width, int height,
                                           double pixelsPerPoint, unsigned dpi);
    /// The place under a pixel and back; the rotation is taken out.
    [[nodiscard]] SheetPlace placeOf(Point pixel) const;
    [[nodiscard]] Point pixelOf(SheetPlace place) const;

    /// The position under a pixel in double precision, for what must not wobble while it moves.
    [[nodiscard]] Position positionOf(Point pixel) const;

    /// Centred on a place, turned about it.
    [[nodiscard]] static ViewFrame at(SheetPlace center, int scale, float rotation, int width,
                                      int height, double pixelsPerPoint, unsigned dpi);
    /// Centred on a position.
    [[nodiscard]] static ViewFrame at(Position center, int scale, float rotation, int width,
                                      int height, double pixelsPerPoint, unsigned dpi);
};

} // namespace kelvox
