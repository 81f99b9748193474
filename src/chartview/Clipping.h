#pragma once

#include "base/Rect.h"

#include <vector>

namespace kelvox {

/// Cuts the segment down to its part inside the box; false when there is none (Liang and Barsky,
/// 1984). The ends that are inside stay exactly where they are.
[[nodiscard]] bool clipSegment(const Rect& box, Point& a, Point& b);

/// Cuts a ring down to the box (Sutherland and Hodgman, 1974). Pieces stay joined along the box's
/// border. @param scratch working memory, kept from one call to the next
void clipRing(const Rect& box, std::vector<Point>& ring, std::vector<Point>& scratch);

} // namespace kelvox
