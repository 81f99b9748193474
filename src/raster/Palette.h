#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvox {

/// Which of the header's palettes colours the chart: RGB/, DAY/, DSK/ or NGT/.
enum class PaletteScheme { Default, Day, Dusk, Night };
inline constexpr std::size_t paletteSchemeCount = 4;

struct PaletteColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const PaletteColor&, const PaletteColor&) = default;
};

/// Colours by their number in the image, which counts from 0 to 127.
using Palette = std::vector<PaletteColor>;

/// Colour numbers end at 127; this one stands for a pixel that the file does not hold.
inline constexpr std::uint8_t noColorNumber = 255;

/// One entry for every byte, 0xAARRGGBB, opaque but for noColorNumber, which is all 0.
using ColorTable = std::array<std::uint32_t, 256>;

/// The palettes of one header.
class Palettes {
public:
    /// Grows the palette to hold the number; numbers above 127 are not taken.
    void set(PaletteScheme scheme, long number, PaletteColor color);
    [[nodiscard]] const Palette& palette(PaletteScheme scheme) const;
    [[nodiscard]] bool isEmpty() const;
    /// Colours for drawing. A palette that the header lacks is made from the default one: the same
    /// by day, at 55 % of its brightness at dusk and 20 % at night.
    [[nodiscard]] ColorTable colorTable(PaletteScheme scheme) const;

private:
    std::array<Palette, paletteSchemeCount> m_palettes;
};

} // namespace kelvox
