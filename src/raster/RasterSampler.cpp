#include "raster/RasterSampler.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr int tileShift = 8;
static_assert(RasterTile::side == 1 << tileShift);
/// So many neighbours at most are made along with a wanted tile; fewer when the picture wants more
/// than stays in memory, since they would be thrown away before their turn.
constexpr int tilesAtOnce = 24;
constexpr int tilesAtOnceWhenShort = 6;

/// Between two colours, all four parts at once; weight 0 to 256 is the share of b.
std::uint32_t mixed(std::uint32_t a, std::uint32_t b, unsigned weight)
{
    constexpr std::uint32_t oddParts = 0x00FF00FF;
    const std::uint32_t even =
        ((a & oddParts) * (256 - weight) + (b & oddParts) * weight + 0x00800080) >> 8;
    const std::uint32_t odd =
        (a >> 8 & oddParts) * (256 - weight) + (b >> 8 & oddParts) * weight + 0x00800080;
    return (even & oddParts) | (odd & ~oddParts);
}

std::size_t indexIn(const RasterTile& tile, int x, int y)
{
    return static_cast<std::size_t>(y & (RasterTile::side - 1)) * tile.width
        + static_cast<std::size_t>(x & (RasterTile::side - 1));
}
} // namespace

RasterSampler::RasterSampler(TilePyramid& pyramid, int level, double magnification,
                             PaletteScheme scheme)
    : m_pyramid(pyramid)
    , m_level(level)
    , m_magnification(static_cast<float>(std::max(magnification, 1.0)))
    , m_scheme(scheme)
    , m_width(pyramid.levelWidth(level))
    , m_height(pyramid.levelHeight(level))
    , m_colors(pyramid.colorTable(scheme))
    , m_announced(static_cast<std::size_t>((m_height >> tileShift) + 1))
{
}

void RasterSampler::announce(int left, int top, int right, int bottom)
{
    left = std::max(left, 0);
    top = std::max(top, 0);
    right = std::min(right, m_width - 1);
    bottom = std::min(bottom, m_height - 1);
    if (left > right)
        return;
    for (int row = top >> tileShift; row <= bottom >> tileShift; ++row) {
        TileRange& range = m_announced[static_cast<std::size_t>(row)];
        const int before = range.count();
        range.first = std::min(range.first, left >> tileShift);
        range.last = std::max(range.last, right >> tileShift);
        m_announcedTiles += range.count() - before;
    }
    constexpr std::size_t tileBytes = std::size_t{RasterTile::side} * RasterTile::side;
    const std::size_t wanted = m_announcedTiles * tileBytes * (m_level == 0 ? 1 : 4);
    m_tilesAtOnce = wanted > m_pyramid.budget() ? tilesAtOnceWhenShort : tilesAtOnce;
}

bool RasterSampler::prepare(int left, int top, int right, int bottom)
{
    left = std::max(left, 0);
    top = std::max(top, 0);
    right = std::min(right, m_width - 1);
    bottom = std::min(bottom, m_height - 1);
    if (left > right || top > bottom)
        return false;
    m_firstTileColumn = left >> tileShift;
    m_firstTileRow = top >> tileShift;
    const int lastTileColumn = right >> tileShift;
    m_tileColumns = lastTileColumn - m_firstTileColumn + 1;
    m_tiles.clear();
    for (int row = m_firstTileRow; row <= bottom >> tileShift; ++row) {
        const TileRange& range = m_announced[static_cast<std::size_t>(row)];
        const int last =
            std::max(lastTileColumn, std::min(range.last, m_firstTileColumn + m_tilesAtOnce - 1));
        const auto tiles = m_pyramid.tiles(m_level, row, m_firstTileColumn, last, m_scheme);
        m_tiles.insert(m_tiles.end(), tiles.begin(), tiles.begin() + m_tileColumns);
    }
    return true;
}

const RasterTile* RasterSampler::tileOf(int x, int y) const
{
    const int column = (x >> tileShift) - m_firstTileColumn;
    const int row = (y >> tileShift) - m_firstTileRow;
    const std::size_t index =
        static_cast<std::size_t>(row) * m_tileColumns + static_cast<std::size_t>(column);
    const bool prepared =
        column >= 0 && column < m_tileColumns && row >= 0 && index < m_tiles.size();
    return prepared ? m_tiles[index].get() : nullptr;
}

std::uint32_t RasterSampler::pixel(int x, int y) const
{
    const RasterTile* tile = tileOf(x, y);
    if (!tile)
        return 0;
    const std::size_t at = indexIn(*tile, x, y);
    return m_level == 0 ? m_colors[tile->colorNumbers[at]] : tile->colors[at];
}

unsigned RasterSampler::sharpened(double fraction) const
{
    const float share = (static_cast<float>(fraction) - 0.5F) * m_magnification + 0.5F;
    return static_cast<unsigned>(std::clamp(share, 0.0F, 1.0F) * 256.0F);
}

std::uint32_t RasterSampler::at(double x, double y) const
{
    if (!(x >= -0.5 && y >= -0.5 && x < m_width - 0.5 && y < m_height - 0.5))
        return 0;
    // One is added and taken off so that the cast, which cuts, rounds down from -0.5 too.
    const int left = static_cast<int>(x + 1) - 1;
    const int top = static_cast<int>(y + 1) - 1;
    constexpr int lastInTile = RasterTile::side - 1;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
    std::uint32_t d = 0;
    const bool within = (left & lastInTile) != lastInTile && (top & lastInTile) != lastInTile
        && left + 1 < m_width && top + 1 < m_height;
    if (within) { // nearly always: all four in one tile
        const RasterTile* tile = tileOf(left, top);
        if (!tile)
            return 0;
        const std::size_t upper = indexIn(*tile, left, top);
        const std::size_t lower = upper + static_cast<std::size_t>(tile->width);
        if (m_level == 0) {
            const auto& numbers = tile->colorNumbers;
            a = m_colors[numbers[upper]];
            b = m_colors[numbers[upper + 1]];
            c = m_colors[numbers[lower]];
            d = m_colors[numbers[lower + 1]];
        } else {
            a = tile->colors[upper];
            b = tile->colors[upper + 1];
            c = tile->colors[lower];
            d = tile->colors[lower + 1];
        }
    } else {
        const int x0 = std::max(left, 0);
        const int y0 = std::max(top, 0);
        const int x1 = std::min(left + 1, m_width - 1);
        const int y1 = std::min(top + 1, m_height - 1);
        a = pixel(x0, y0);
        b = pixel(x1, y0);
        c = pixel(x0, y1);
        d = pixel(x1, y1);
    }
    if (a == b && a == c && a == d)
        return a;
    const unsigned weightX = sharpened(x - left);
    const unsigned weightY = sharpened(y - top);
    if (!a || !b || !c || !d) { // no mixing with what the file does not hold
        const bool right = weightX >= 128;
        return weightY >= 128 ? (right ? d : c) : (right ? b : a);
    }
    return mixed(mixed(a, b, weightX), mixed(c, d, weightX), weightY);
}

} // namespace kelvox
