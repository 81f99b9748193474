#pragma once

#include "painting/AreaFiller.h"

namespace kelvox {

/// Strokes lines smoothly: each pixel takes as much of the pen as it lies within, by its distance
/// from the nearest segment. Joins are round, ends are cut square.
///
/// A pixel near a corner belongs to one segment only, divided at the corner's bisector, so that no
/// joint is painted twice.
class LineFiller {
public:
    /// Each sub-path is an open line.
    /// @param width pixels; a pen of less than one is drawn as one
    /// @param top the row of the picture that is the buffer's first
    static void stroke(const PixelBuffer& buffer, const Path& lines, double width,
                       DisplayColor color, int top);
};

} // namespace kelvox
