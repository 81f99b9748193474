#pragma once

#include "raster/TilePyramid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvox {

/// Colours of a chart at fractional places of one pyramid level. Used by one thread at a time.
class RasterSampler {
public:
    /// @param magnification picture pixels per pixel of the level
    RasterSampler(TilePyramid& pyramid, int level, double magnification, PaletteScheme scheme);

    /// Says that a later prepare() will want this box, so that its tiles are made along with their
    /// neighbours.
    void announce(int left, int top, int right, int bottom);
    /// Makes the tiles of a box of level pixels ready; what lies outside may be asked no more. The
    /// box is clipped to the level; false when nothing is left of it.
    bool prepare(int left, int top, int right, int bottom);

    /// The colour at a place whose pixel centres are whole numbers; 0 outside the level and where
    /// the file holds nothing.
    [[nodiscard]] std::uint32_t at(double x, double y) const;

private:
    struct TileRange {
        int first = 1 << 30;
        int last = -1;
        [[nodiscard]] int count() const { return last < first ? 0 : last - first + 1; }
    };
    [[nodiscard]] const RasterTile* tileOf(int x, int y) const;
    [[nodiscard]] std::uint32_t pixel(int x, int y) const;
    [[nodiscard]] unsigned sharpened(double fraction) const;

    TilePyramid& m_pyramid;
    int m_level;
    float m_magnification;
    PaletteScheme m_scheme;
    int m_width;
    int m_height;
    std::array<std::uint32_t, 256> m_colors;
    std::vector<TileRange> m_announced; ///< by tile row
    std::size_t m_announcedTiles = 0;
    int m_tilesAtOnce = 1;
    std::vector<TilePyramid::Tile> m_tiles; ///< of the prepared box, row by row
    int m_firstTileColumn = 0;
    int m_firstTileRow = 0;
    int m_tileColumns = 0;
};

} // namespace kelvox
