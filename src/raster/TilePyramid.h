#pragma once

#include "raster/BSBRows.h"
#include "raster/Palette.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace kelvox {

/// A square piece of a chart picture at one level of reduction; the last of a row or column is
/// smaller. Immutable.
struct RasterTile {
    static constexpr int side = 256;

    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> colorNumbers; ///< level 0: row by row from the top
    std::vector<std::uint32_t> colors; ///< reduced levels: 0xAARRGGBB, opaque or 0
    [[nodiscard]] std::size_t bytes() const
    {
        return sizeof(RasterTile) + colorNumbers.size() + colors.size() * sizeof(std::uint32_t);
    }
};

/// Tiles of a chart's picture, whole and reduced, made from its rows when asked for.
///
/// Level n is reduced 2^n times, each of its pixels the mean colour of its 2^n x 2^n box (linear in
/// the palette's values). The whole size keeps colour numbers, so that one set of tiles serves all
/// palettes; reduced tiles belong to one palette. What was used last stays in memory within the
/// budget. Any thread.
class TilePyramid {
public:
    static constexpr std::size_t defaultBudget = std::size_t{32} << 20;
    using Tile = std::shared_ptr<const RasterTile>;

    TilePyramid(BSBRows rows, const Palettes& palettes, std::size_t budget = defaultBudget);

    /// Levels 0 up to the first one that fits in a single tile.
    [[nodiscard]] int levelCount() const { return m_levelCount; }
    [[nodiscard]] int levelWidth(int level) const { return reduced(m_rows.width(), level); }
    [[nodiscard]] int levelHeight(int level) const { return reduced(m_rows.height(), level); }
    [[nodiscard]] const ColorTable& colorTable(PaletteScheme scheme) const
    {
        return m_colorTables[static_cast<std::size_t>(scheme)];
    }
    [[nodiscard]] const BSBRows& rows() const { return m_rows; }

    /// Tiles firstColumn to lastColumn of a tile row, all inside the level. What is not in memory
    /// is made in one pass over the rows, so ask for neighbours together.
    [[nodiscard]] std::vector<Tile> tiles(int level, int row, int firstColumn, int lastColumn,
                                          PaletteScheme scheme);

    [[nodiscard]] std::size_t budget() const { return m_budget; }
    [[nodiscard]] std::size_t bytesInMemory() const;

private:
    struct Entry {
        std::uint64_t key;
        Tile tile;
    };
    static int reduced(int size, int level) { return (size + (1 << level) - 1) >> level; }
    [[nodiscard]] std::vector<RasterTile> make(int level, int row, int firstColumn, int lastColumn,
                                               PaletteScheme scheme) const;
    void decodeStrip(int row, int firstColumn, std::vector<RasterTile>& strip) const;
    void reduceStrip(int level, int row, int firstColumn, const ColorTable& colorTable,
                     std::vector<RasterTile>& strip) const;
    [[nodiscard]] Tile find(std::uint64_t key);
    void keep(std::uint64_t key, const Tile& tile);

    BSBRows m_rows;
    std::array<ColorTable, paletteSchemeCount> m_colorTables;
    std::size_t m_budget;
    int m_levelCount = 1;

    mutable std::mutex m_mutex; ///< guards what follows
    std::list<Entry> m_recent; ///< last used first
    std::unordered_map<std::uint64_t, std::list<Entry>::iterator> m_byKey;
    std::size_t m_bytes = 0;
};

} // namespace kelvox
