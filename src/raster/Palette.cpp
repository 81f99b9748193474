#include "raster/Palette.h"

namespace kelvox {

namespace {
constexpr std::uint32_t opaque = 0xFF000000U;
constexpr std::uint32_t unknownColor = opaque | 0x808080U;

std::uint32_t argb(PaletteColor color, unsigned percent)
{
    const auto dimmed = [percent](std::uint8_t part) { return part * percent / 100; };
    return opaque | dimmed(color.red) << 16 | dimmed(color.green) << 8 | dimmed(color.blue);
}

unsigned percentOf(PaletteScheme scheme)
{
    switch (scheme) {
    case PaletteScheme::Dusk:
        return 55;
    case PaletteScheme::Night:
        return 20;
    default:
        return 100;
    }
}
} // namespace

void Palettes::set(PaletteScheme scheme, long number, PaletteColor color)
{
    if (number < 0 || number > 127)
        return;
    auto& palette = m_palettes[static_cast<std::size_t>(scheme)];
    const auto index = static_cast<std::size_t>(number);
    if (palette.size() <= index)
        palette.resize(index + 1);
    palette[index] = color;
}

const Palette& Palettes::palette(PaletteScheme scheme) const
{
    return m_palettes[static_cast<std::size_t>(scheme)];
}

bool Palettes::isEmpty() const
{
    for (const Palette& palette : m_palettes)
        if (!palette.empty())
            return false;
    return true;
}

ColorTable Palettes::colorTable(PaletteScheme scheme) const
{
    const Palette* source = &palette(scheme);
    unsigned percent = 100;
    if (source->empty()) {
        percent = percentOf(scheme);
        source = &palette(PaletteScheme::Default);
        for (std::size_t i = 0; source->empty() && i < m_palettes.size(); ++i)
            source = &m_palettes[i];
    }
    ColorTable table;
    table.fill(unknownColor);
    table[noColorNumber] = 0;
    for (std::size_t i = 0; i < source->size(); ++i)
        table[i] = argb((*source)[i], percent);
    return table;
}

} // namespace kelvox
