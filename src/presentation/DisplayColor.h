#pragma once

#include <cmath>
#include <cstdint>

namespace kelvox {

/// A colour as sent to the display: sRGB-coded components, alpha 255 = opaque, not premultiplied.
struct DisplayColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;

    /// The same colour at an opacity of 0 to 1.
    [[nodiscard]] DisplayColor withOpacity(double opacity) const
    {
        return {red, green, blue, static_cast<std::uint8_t>(std::lround(opacity * 255))};
    }
    friend constexpr bool operator==(const DisplayColor&, const DisplayColor&) = default;
};

} // namespace kelvox
