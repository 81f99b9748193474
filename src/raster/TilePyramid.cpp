#include "raster/TilePyramid.h"

#include <algorithm>
#include <utility>

namespace kelvox {

namespace {
std::uint64_t keyOf(int level, int row, int column, PaletteScheme scheme)
{
    const auto palette = level == 0 ? 0U : static_cast<unsigned>(scheme);
    return std::uint64_t{palette} << 56 | static_cast<std::uint64_t>(level) << 48
        | static_cast<std::uint64_t>(row) << 24 | static_cast<std::uint64_t>(column);
}

/// Red, green and blue summed side by side. Wraps around on purpose: the differences below do, and
/// come out right in the running sum.
struct ColorSum {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    std::uint32_t unused = 0; ///< so that one vector instruction adds all

    void operator+=(const ColorSum& other)
    {
        red += other.red;
        green += other.green;
        blue += other.blue;
        unused += other.unused;
    }
    friend ColorSum operator*(const ColorSum& sum, std::uint32_t factor)
    {
        return {sum.red * factor, sum.green * factor, sum.blue * factor, 0};
    }
};

ColorSum partsOf(std::uint32_t argb)
{
    return {argb >> 16 & 0xFF, argb >> 8 & 0xFF, argb & 0xFF, 0};
}

/// Sums runs of colour into boxes of 2^level pixels. Keeps the differences between neighbouring
/// boxes, so that a run costs the same however long it is.
class BoxRow {
public:
    BoxRow(int boxes, int level)
        : m_differences(static_cast<std::size_t>(boxes) + 2)
        , m_level(level)
    {
    }
    void add(int from, int to, const ColorSum& color)
    {
        const int side = 1 << m_level;
        const auto first = static_cast<std::size_t>(from >> m_level);
        const auto last = static_cast<std::size_t>((to - 1) >> m_level);
        const auto times = [&](int count) { return color * static_cast<std::uint32_t>(count); };
        if (first == last) {
            m_differences[first] += times(to - from);
            m_differences[first + 1] += times(from - to);
            return;
        }
        const int left = static_cast<int>(first + 1) * side - from;
        const int right = to - static_cast<int>(last) * side;
        m_differences[first] += times(left);
        m_differences[first + 1] += times(side - left);
        m_differences[last] += times(right - side);
        m_differences[last + 1] += times(-right);
    }
    /// Hands out the sum of each box in turn and starts anew.
    template <typename OnBox> void take(OnBox&& onBox)
    {
        ColorSum sum;
        for (std::size_t box = 0; box + 2 < m_differences.size(); ++box) {
            sum += m_differences[box];
            onBox(static_cast<int>(box), sum);
        }
        std::fill(m_differences.begin(), m_differences.end(), ColorSum{});
    }

private:
    std::vector<ColorSum> m_differences;
    int m_level;
};

std::uint32_t meanColor(const ColorSum& sum, std::uint32_t count)
{
    const auto mean = [count](std::uint32_t part) { return (part + count / 2) / count; };
    return 0xFF000000U | mean(sum.red) << 16 | mean(sum.green) << 8 | mean(sum.blue);
}
} // namespace

TilePyramid::TilePyramid(BSBRows rows, const Palettes& palettes, std::size_t budget)
    : m_rows(std::move(rows))
    , m_budget(budget)
{
    for (std::size_t i = 0; i < paletteSchemeCount; ++i)
        m_colorTables[i] = palettes.colorTable(static_cast<PaletteScheme>(i));
    while (std::max(levelWidth(m_levelCount - 1), levelHeight(m_levelCount - 1)) > RasterTile::side)
        ++m_levelCount;
}

std::vector<TilePyramid::Tile> TilePyramid::tiles(int level, int row, int firstColumn,
                                                  int lastColumn, PaletteScheme scheme)
{
    std::vector<Tile> found;
    int firstMissing = lastColumn + 1;
    int lastMissing = firstColumn - 1;
    {
        const std::lock_guard lock(m_mutex);
        for (int column = firstColumn; column <= lastColumn; ++column) {
            found.push_back(find(keyOf(level, row, column, scheme)));
            if (!found.back()) {
                firstMissing = std::min(firstMissing, column);
                lastMissing = column;
            }
        }
    }
    if (firstMissing > lastMissing)
        return found;

    auto made = make(level, row, firstMissing, lastMissing, scheme);
    const std::lock_guard lock(m_mutex);
    for (int column = firstMissing; column <= lastMissing; ++column) {
        Tile& tile = found[static_cast<std::size_t>(column - firstColumn)];
        if (tile)
            continue;
        tile = std::make_shared<const RasterTile>(
            std::move(made[static_cast<std::size_t>(column - firstMissing)]));
        keep(keyOf(level, row, column, scheme), tile);
    }
    return found;
}

TilePyramid::Tile TilePyramid::find(std::uint64_t key)
{
    const auto it = m_byKey.find(key);
    if (it == m_byKey.end())
        return nullptr;
    m_recent.splice(m_recent.begin(), m_recent, it->second);
    return it->second->tile;
}

void TilePyramid::keep(std::uint64_t key, const Tile& tile)
{
    if (m_byKey.contains(key))
        return; // another thread was as quick
    m_recent.push_front({key, tile});
    m_byKey.emplace(key, m_recent.begin());
    m_bytes += tile->bytes();
    while (m_bytes > m_budget && !m_recent.empty()) {
        m_bytes -= m_recent.back().tile->bytes();
        m_byKey.erase(m_recent.back().key);
        m_recent.pop_back();
    }
}

std::size_t TilePyramid::bytesInMemory() const
{
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

std::vector<RasterTile> TilePyramid::make(int level, int row, int firstColumn, int lastColumn,
                                          PaletteScheme scheme) const
{
    std::vector<RasterTile> strip(static_cast<std::size_t>(lastColumn - firstColumn + 1));
    for (int i = 0; i <= lastColumn - firstColumn; ++i) {
        RasterTile& tile = strip[static_cast<std::size_t>(i)];
        const int left = (firstColumn + i) * RasterTile::side;
        tile.width = std::clamp(levelWidth(level) - left, 0, RasterTile::side);
        tile.height = std::clamp(levelHeight(level) - row * RasterTile::side, 0, RasterTile::side);
        const auto pixels = static_cast<std::size_t>(tile.width) * tile.height;
        if (level == 0)
            tile.colorNumbers.assign(pixels, noColorNumber);
        else
            tile.colors.assign(pixels, 0);
    }
    if (level == 0)
        decodeStrip(row, firstColumn, strip);
    else
        reduceStrip(level, row, firstColumn, colorTable(scheme), strip);
    return strip;
}

void TilePyramid::decodeStrip(int row, int firstColumn, std::vector<RasterTile>& strip) const
{
    const int left = firstColumn * RasterTile::side;
    const int width =
        std::min(static_cast<int>(strip.size()) * RasterTile::side, m_rows.width() - left);
    std::vector<std::uint8_t> line(static_cast<std::size_t>(width));
    for (int y = 0; y < strip.front().height; ++y) {
        m_rows.decode(row * RasterTile::side + y, left, line);
        auto from = line.begin();
        for (RasterTile& tile : strip) {
            std::copy(from, from + tile.width,
                      tile.colorNumbers.begin() + static_cast<std::ptrdiff_t>(y) * tile.width);
            from += tile.width;
        }
    }
}

void TilePyramid::reduceStrip(int level, int row, int firstColumn, const ColorTable& colorTable,
                              std::vector<RasterTile>& strip) const
{
    const int side = 1 << level;
    const int left = (firstColumn * RasterTile::side) << level;
    const int right = static_cast<int>(std::min<std::int64_t>(
        left + (static_cast<std::int64_t>(strip.size()) * RasterTile::side << level),
        m_rows.width()));
    std::array<ColorSum, 256> parts;
    std::transform(colorTable.begin(), colorTable.end(), parts.begin(), partsOf);
    BoxRow boxes((right - left + side - 1) >> level, level);
    for (int y = 0; y < strip.front().height; ++y) {
        const int top = (row * RasterTile::side + y) << level;
        const int bottom = std::min(top + side, m_rows.height());
        std::uint32_t present = 0;
        for (int source = top; source < bottom; ++source) {
            if (!m_rows.hasRow(source))
                continue;
            ++present;
            m_rows.forEachRun(source, [&](int from, int to, std::uint8_t color) {
                from = std::max(from, left);
                to = std::min(to, right);
                if (from < to)
                    boxes.add(from - left, to - left, parts[color]);
                return to < right;
            });
        }
        if (present == 0)
            continue; // stays transparent
        boxes.take([&](int box, const ColorSum& sum) {
            const auto columns =
                static_cast<std::uint32_t>(std::min(side, right - left - (box << level)));
            RasterTile& tile = strip[static_cast<std::size_t>(box / RasterTile::side)];
            const auto x = static_cast<std::size_t>(box % RasterTile::side);
            tile.colors[static_cast<std::size_t>(y) * tile.width + x] =
                meanColor(sum, columns * present);
        });
    }
}

} // namespace kelvox
