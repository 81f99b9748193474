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

/// A share of 0 to 256 of the source laid over a pixel.
[[nodiscard]] inline std::uint32_t over(std::uint32_t below, std::uint32_t source, unsigned share)
{
    return over(below, scaled(source, share));
}

} // namespace kelvox
