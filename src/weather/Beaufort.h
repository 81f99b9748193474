#pragma once

#include <cstdint>
#include <span>

namespace kelvox {

/// A colour of the screen, independent of any drawing library.
struct GribColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
    friend constexpr bool operator==(GribColor, GribColor) = default;
};

/// One force of the Beaufort scale: the wind speeds in knots from `lower` to below `upper`.
struct BeaufortRow {
    double lower = 0;
    double upper = 0;
    GribColor color;
};

/// Forces 0 to 12 by the knots of the WMO scale (force 4 is 11 to 16 knots); the bounds lie between
/// its whole knots, so that every speed belongs to one row. Colours run from blue over green and
/// yellow (force 5) to red (gale, force 8) and violet.
[[nodiscard]] std::span<const BeaufortRow> beaufortScale();

} // namespace kelvox
