#pragma once

#include "presentation/DisplayColor.h"

#include <cstdint>

namespace kelvox {

/// Premultiplied ARGB in native byte order.
[[nodiscard]] inline std::uint32_t premultiplied(DisplayColor color)
{
    const auto part = [&](unsigned value) { return (value * color.alpha + 127U) / 255U; };
    return static_cast<std::uint32_t>(color.alpha) << 24U | part(color.red) << 16U
        | part(color.green) << 8U | part(color.blue);
}

/// All four channels by a share of 0 to 256.
[[nodiscard]] inline std::uint32_t scaled(std::uint32_t color, unsigned share)
{
    const std::uint32_t redBlue = ((color & 0xFF00FFU) * share >> 8U) & 0xFF00FFU;
    const std::uint32_t alphaGreen = ((color >> 8U & 0xFF00FFU) * share) & 0xFF00FF00U;
    return redBlue | alphaGreen;
}

/// The premultiplied source laid over a pixel.
[[nodiscard]] inline std::uint32_t over(std::uint32_t below, std::uint32_t source)
{
    const std::uint32_t keep = 255U - (source >> 24U);
    // Two channels at a time; the division by 255 is rounded.
    std::uint32_t redBlue = (below & 0xFF00FFU) * keep + 0x800080U;
    redBlue = (redBlue + ((redBlue >> 8U) & 0xFF00FFU)) >> 8U & 0xFF00FFU;
    std::uint32_t alphaGreen = (below >> 8U & 0xFF00FFU) * keep + 0x800080U;
    alphaGreen = (alphaGreen + ((alphaGreen >> 8U) & 0xFF00FFU)) & 0xFF00FF00U;
    return source + redBlue + alphaGreen;
}

/// A share of 0 to 256 of an opaque source mixed into a pixel.
[[nodiscard]] inline std::uint32_t mixed(std::uint32_t below, std::uint32_t source, unsigned share)
{
    const std::uint32_t belowRedBlue = below & 0xFF00FFU;
    const std::uint32_t belowAlphaGreen = below >> 8U & 0xFF00FFU;
    // A negative difference borrows from the channel above and pays it back in the sum.
    const std::uint32_t redBlue =
        belowRedBlue + ((((source & 0xFF00FFU) - belowRedBlue) * share) >> 8U);
    const std::uint32_t alphaGreen =
        (belowAlphaGreen << 8U) + ((source >> 8U & 0xFF00FFU) - belowAlphaGreen) * share;
    return (redBlue & 0xFF00FFU) | (alphaGreen & 0xFF00FF00U);
}

/// A share of 0 to 256 of the source laid over a pixel.
[[nodiscard]] inline std::uint32_t over(std::uint32_t below, std::uint32_t source, unsigned share)
{
    return over(below, scaled(source, share));
}

} // namespace kelvox
