#include "basemap/BaseMap.h"

#include "s57/LineDetail.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double highestLatitude = 89.9;
constexpr int closedLine = 4;
constexpr unsigned sideLength = 65535;
constexpr unsigned around = 4 * sideLength;
constexpr std::uint8_t always = 255;

struct Segment {
    unsigned exitSide;
    unsigned entrySide;
    unsigned level;
    std::uint32_t points;

    static Segment of(std::int32_t description)
    {
        const auto bits = static_cast<std::uint32_t>(description);
        return {bits & 7U, bits >> 3U & 7U, bits >> 6U & 7U, bits >> 9U};
    }
};

/// How far round the bin's border a point of a side lies, counter-clockwise from the south-west.
unsigned borderPlace(unsigned side, BaseMap::Vertex v)
{
    switch (side) {
    case 0:
        return v.x;
    case 1:
        return sideLength + v.y;
    case 2:
        return 3 * sideLength - v.x;
    default:
        return (4 * sideLength - v.y) % around;
    }
}

constexpr std::array<BaseMap::Vertex, 4> corners{
    {{0, 0}, {sideLength, 0}, {sideLength, sideLength}, {0, sideLength}}};

double ordinateOf(double latitude)
{
    const double limited = std::clamp(latitude, -highestLatitude, highestLatitude);
    return std::asinh(std::tan(limited * std::numbers::pi / 180));
}

struct Grade {
    char letter;
    double metres; ///< how far its lines may stray from the full ones
};
// Of the files by the letter in their names.
constexpr std::array<Grade, 4> grades{{{'h', 200}, {'i', 1'000}, {'l', 5'000}, {'c', 25'000}}};
constexpr double metresAtScale = 0.0005;
} // namespace

/// Joins the segments of one bin after the other into rings.
class BaseMap::Builder {
public:
    Builder(const ShorelineTables& tables, BaseMap& map)
        : m_tables(tables)
        , m_map(map)
    {
    }
    Result<void> addBin(int row, int column)
    {
        const auto index =
            static_cast<std::size_t>(row) * static_cast<std::size_t>(m_tables.columns)
            + static_cast<std::size_t>(column);
        const double west = column * m_map.m_binDegrees;
        m_bin = {.west = static_cast<float>(west >= 180 ? west - 360 : west),
                 .row = static_cast<std::uint16_t>(row),
                 .firstRing = static_cast<std::uint32_t>(m_map.m_rings.size()),
                 .ringCount = 0};
        m_open.clear();
        const std::int64_t first = m_tables.firstSegment[index];
        const std::int64_t count = m_tables.segmentCount[index];
        if (first < 0 || count < 0
            || first + count > static_cast<std::int64_t>(m_tables.segment.size()))
            return failure(Error::Code::OutOfRange, "a bin's segments lie outside the table",
                           index);
        // Each segment and each point belongs to one bin; a file that says otherwise could ask for
        // memory without bound.
        m_segments += static_cast<std::size_t>(count);
        if (m_segments > m_tables.segment.size())
            return failure(Error::Code::OutOfRange, "bins share segments", index);
        for (std::int64_t i = first; i < first + count; ++i)
            if (auto added = addSegment(static_cast<std::size_t>(i)); !added)
                return added;
        joinAcross((static_cast<unsigned>(m_tables.cornerLevels[index]) >> 9U & 1U) != 0);
        m_bin.ringCount = static_cast<std::uint32_t>(m_map.m_rings.size()) - m_bin.firstRing;
        if (m_bin.ringCount > 0)
            m_map.m_bins.push_back(m_bin);
        return {};
    }

private:
    /// A segment from one place of the border to another.
    struct Open {
        unsigned entry;
        unsigned exit;
        std::size_t firstPoint;
        std::size_t points;
        bool used = false;
    };

    Result<void> addSegment(std::size_t index)
    {
        constexpr unsigned deepest = 4; // beyond are the lines of the Antarctic ground
        const Segment segment = Segment::of(m_tables.segment[index]);
        const std::int64_t first = m_tables.firstPoint[index];
        if (first < 0 || first + segment.points > static_cast<std::int64_t>(m_tables.x.size()))
            return failure(Error::Code::OutOfRange, "a segment's points lie outside the table",
                           index);
        m_points += segment.points;
        if (m_points > m_tables.x.size())
            return failure(Error::Code::OutOfRange, "segments share points", index);
        if (segment.level > deepest || segment.points < 2)
            return {};
        const auto from = static_cast<std::size_t>(first);
        if (segment.entrySide >= closedLine || segment.exitSide >= closedLine) {
            beginRing();
            appendLine(from, segment.points);
            endRing();
            return {};
        }
        m_open.push_back({.entry = borderPlace(segment.entrySide, point(from)),
                          .exit = borderPlace(segment.exitSide, point(from + segment.points - 1)),
                          .firstPoint = from,
                          .points = segment.points});
        return {};
    }

    /// Land lies on the left of every segment, so from where one leaves the bin the land goes on
    /// counter-clockwise along the border to where the next comes in.
    void joinAcross(bool cornerIsLand)
    {
        if (m_open.empty()) {
            if (cornerIsLand) {
                beginRing();
                for (const Vertex corner : corners)
                    append(corner, always);
                endRing();
            }
            return;
        }
        std::ranges::sort(m_open, {}, &Open::entry);
        for (Open& start : m_open) {
            if (start.used)
                continue;
            beginRing();
            Open* at = &start;
            do {
                at->used = true;
                appendLine(at->firstPoint, at->points);
                at = &walkFrom(at->exit);
            } while (!at->used);
            if (at == &start)
                endRing();
            else
                dropRing(); // two lines lead to one: the file contradicts itself
        }
    }

    /// The segment that comes in next after a place of the border, with the corners on the way.
    Open& walkFrom(unsigned place)
    {
        auto next = std::ranges::lower_bound(m_open, place, {}, &Open::entry);
        const bool wraps = next == m_open.end();
        if (wraps)
            next = m_open.begin();
        const unsigned target = next->entry + (wraps ? around : 0);
        for (unsigned corner = place / sideLength + 1; corner * sideLength < target; ++corner)
            append(corners[corner % 4], always);
        return *next;
    }

    [[nodiscard]] Vertex point(std::size_t index) const
    {
        return {m_tables.x[index], m_tables.y[index]};
    }
    void append(Vertex v, std::uint8_t detail)
    {
        m_map.m_vertices.push_back(v);
        m_map.m_details.push_back(detail);
    }
    void appendLine(std::size_t first, std::size_t count)
    {
        m_line.clear();
        for (std::size_t i = first; i < first + count; ++i)
            m_line.push_back({static_cast<float>(m_map.longitude(m_bin, m_tables.x[i])),
                              static_cast<float>(m_map.ordinate(m_bin, m_tables.y[i]))});
        m_lineDetails.resize(count);
        measureDetail(m_line, m_lineDetails);
        for (std::size_t i = 0; i < count; ++i)
            append(point(first + i), m_lineDetails[i]);
    }
    void beginRing() { m_ringStart = m_map.m_vertices.size(); }
    void dropRing()
    {
        m_map.m_vertices.resize(m_ringStart);
        m_map.m_details.resize(m_ringStart);
    }
    void endRing()
    {
        auto& vertices = m_map.m_vertices;
        auto& details = m_map.m_details;
        const bool repeatsStart = vertices.back().x == vertices[m_ringStart].x
            && vertices.back().y == vertices[m_ringStart].y;
        if (repeatsStart && vertices.size() > m_ringStart + 1) {
            vertices.pop_back();
            details.pop_back();
        }
        const std::size_t count = vertices.size() - m_ringStart;
        if (count < 3) {
            dropRing();
            return;
        }
        // A ring with a corner or a second line through it is shown at every scale, an island only
        // where its farthest point can be told from its first.
        const auto inner = std::span(details).subspan(m_ringStart + 1);
        m_map.m_rings.push_back({static_cast<std::uint32_t>(m_ringStart),
                                 static_cast<std::uint32_t>(count),
                                 *std::ranges::max_element(inner)});
    }

    const ShorelineTables& m_tables;
    BaseMap& m_map;
    Bin m_bin{};
    std::vector<Open> m_open;
    std::size_t m_ringStart = 0;
    std::size_t m_segments = 0; ///< of all bins so far
    std::size_t m_points = 0;
    std::vector<CellGeometry::Vertex> m_line;
    std::vector<std::uint8_t> m_lineDetails;
};

void BaseMap::buildOrdinates(int rows)
{
    m_ordinates.reserve(static_cast<std::size_t>(rows) * (tableSteps + 1));
    for (int row = 0; row < rows; ++row)
        for (unsigned step = 0; step <= tableSteps; ++step)
            // The edge between two rows is one number, so that they meet in it.
            m_ordinates.push_back(
                step == tableSteps
                    ? ordinateOf(90 - row * m_binDegrees)
                    : ordinateOf(90 - (row + 1) * m_binDegrees + m_binDegrees * step / tableSteps));
}

Result<BaseMap> BaseMap::from(const ShorelineTables& tables)
{
    constexpr int mostColumns = 3'600;
    const auto bins = static_cast<std::size_t>(std::max(tables.columns, 0))
        * static_cast<std::size_t>(std::max(tables.rows, 0));
    if (tables.columns < 2 || tables.columns > mostColumns || 360 % tables.columns != 0
        || tables.columns != 2 * tables.rows)
        return failure(Error::Code::OutOfRange, "not a grid of bins of whole degrees");
    if (tables.firstSegment.size() != bins || tables.segmentCount.size() != bins
        || tables.cornerLevels.size() != bins || tables.firstPoint.size() != tables.segment.size()
        || tables.y.size() != tables.x.size())
        return failure(Error::Code::BadSyntax, "the tables differ in length");
    BaseMap map;
    map.m_binDegrees = 360.0 / tables.columns;
    map.buildOrdinates(tables.rows);
    Builder builder(tables, map);
    for (int row = 0; row < tables.rows; ++row)
        for (int column = 0; column < tables.columns; ++column)
            if (const auto added = builder.addBin(row, column); !added)
                return tl::unexpected(added.error());
    map.m_vertices.shrink_to_fit();
    map.m_details.shrink_to_fit();
    map.m_rings.shrink_to_fit();
    map.m_bins.shrink_to_fit();
    return map;
}

std::filesystem::path BaseMap::systemFolder()
{
    return "/usr/share/gmt-gshhg";
}

Result<BaseMap> BaseMap::load(const std::filesystem::path& folder)
{
    for (const Grade& grade : grades) {
        const auto path = folder / (std::string("binned_GSHHS_") + grade.letter + ".nc");
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored))
            continue;
        const auto tables = readShoreline(path);
        if (!tables)
            return tl::unexpected(tables.error());
        auto map = from(*tables);
        if (!map)
            map.error().message.insert(0, path.string() + ": ");
        else
            map->m_goodScale = static_cast<int>(grade.metres / metresAtScale);
        return map;
    }
    return failure(Error::Code::CannotOpen,
                   folder.string() + ": no shorelines; install the package gmt-gshhg-low");
}

bool BaseMap::isLand(Position position) const
{
    const double longitude =
        position.longitude - 360 * std::floor((position.longitude + 180) / 360);
    for (const Bin& bin : m_bins) {
        const double x = (longitude - bin.west) / m_binDegrees * most;
        const double south = 90 - (bin.row + 1) * m_binDegrees;
        const double y = (position.latitude - south) / m_binDegrees * most;
        if (x < 0 || x >= most || y < 0 || y >= most)
            continue;
        bool inside = false;
        for (const Ring& ring : rings(bin)) {
            const auto points = vertices(ring);
            Vertex a = points.back();
            for (const Vertex b : points) {
                if ((a.y > y) != (b.y > y)
                    && x < a.x + (y - a.y) / (double{1} * b.y - a.y) * (double{1} * b.x - a.x))
                    inside = !inside;
                a = b;
            }
        }
        return inside;
    }
    return false;
}

std::size_t BaseMap::bytes() const
{
    return m_vertices.capacity() * sizeof(Vertex) + m_details.capacity()
        + m_rings.capacity() * sizeof(Ring) + m_bins.capacity() * sizeof(Bin)
        + m_ordinates.capacity() * sizeof(double);
}

} // namespace kelvox
