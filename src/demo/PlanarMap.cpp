#include "demo/PlanarMap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>

namespace kelvox {

namespace {
using Half = std::uint32_t; ///< half segment: twice the segment's index, plus one when walked back

std::int64_t cross(S57Place a, S57Place b, S57Place c)
{
    return (std::int64_t{b.x} - a.x) * (std::int64_t{c.y} - a.y)
        - (std::int64_t{b.y} - a.y) * (std::int64_t{c.x} - a.x);
}

bool isBetween(S57Place a, S57Place b, S57Place c)
{
    return std::min(a.x, b.x) <= c.x && c.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= c.y
        && c.y <= std::max(a.y, b.y);
}

std::int32_t rounded(double value)
{
    return static_cast<std::int32_t>(std::floor(value + 0.5));
}

/// Crossing-number test on the place (x, y).
bool isInside(std::span<const S57Place> ring, double x, double y)
{
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const S57Place a = ring[i];
        const S57Place b = ring[j];
        if ((a.y > y) != (b.y > y)
            && x < (double{1} * b.x - a.x) * (y - a.y) / (double{1} * b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

/// The half-plane of a direction, for sorting counter-clockwise from east.
int halfPlane(S57Place from, S57Place to)
{
    return to.y > from.y || (to.y == from.y && to.x > from.x) ? 0 : 1;
}
} // namespace

/// Builds the map in steps: cut the lines at their crossings, trace the faces, tell which ground
/// they are, join those of one kind, and collect what is left of the lines.
class PlanarMapBuilder {
public:
    explicit PlanarMapBuilder(PlanarMap& map)
        : m_map(map)
    {
    }
    bool build(int cornerBand, const PlanarMap::Rule& rule)
    {
        collectSegments();
        cutAtCrossings();
        addBorder();
        sortAround();
        traceCycles();
        if (!placeCycles() || !findGround(cornerBand))
            return false;
        joinFaces(rule);
        collectLines();
        return collectRings();
    }

private:
    using Segment = PlanarMap::Segment;

    std::uint32_t pointAt(S57Place place)
    {
        const std::uint64_t key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(place.y))
                << 32U
            | static_cast<std::uint32_t>(place.x);
        const auto [it, isNew] = m_index.emplace(key, static_cast<std::uint32_t>(m_points.size()));
        if (isNew)
            m_points.push_back(place);
        return it->second;
    }
    void addSegment(S57Place from, S57Place to, int source)
    {
        if (from != to)
            m_segments.push_back({pointAt(from), pointAt(to), source});
    }
    [[nodiscard]] std::uint32_t origin(Half half) const
    {
        const Segment& segment = m_segments[half / 2];
        return half % 2 == 0 ? segment.from : segment.to;
    }
    [[nodiscard]] std::uint32_t target(Half half) const { return origin(half ^ 1U); }

    void collectSegments();
    void addClipped(S57Place a, S57Place b, int source);
    void cutAtCrossings();
    void noteCrossing(std::uint32_t one, std::uint32_t other);
    void addBorder();
    void sortAround();
    void traceCycles();
    bool placeCycles();
    bool findGround(int cornerBand);
    void joinFaces(const PlanarMap::Rule& rule);
    void collectLines();
    bool collectRings();
    /// The half segment that continues the left face's boundary among those that the test admits.
    template <typename Test> Half following(Half half, const Test& admitted) const
    {
        const std::uint32_t at = target(half);
        const std::uint32_t first = m_around[at];
        const std::uint32_t count = m_around[at + 1] - first;
        std::uint32_t place = m_placeAround[half ^ 1U];
        do
            place = place == 0 ? count - 1 : place - 1;
        while (!admitted(m_halves[first + place]));
        return m_halves[first + place];
    }
    [[nodiscard]] bool isKept(Half half) const
    {
        return m_area[m_face[half]] != m_area[m_face[half ^ 1U]];
    }

    PlanarMap& m_map;
    std::vector<S57Place> m_points;
    std::unordered_map<std::uint64_t, std::uint32_t> m_index;
    std::vector<Segment> m_segments;
    std::uint32_t m_firstOutline = 0; ///< segments from here on come from outlines
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_cuts; ///< segment, point
    std::vector<std::uint32_t> m_around; ///< by point: first of its outgoing halves in m_halves
    std::vector<Half> m_halves; ///< counter-clockwise around each point
    std::vector<std::uint32_t> m_placeAround; ///< by half: its place among those
    std::vector<std::uint32_t> m_cycle; ///< by half
    std::vector<Half> m_cycleStart;
    std::vector<double> m_cycleArea;
    std::vector<std::uint32_t> m_face; ///< by half; face 0 is the outside
    std::uint32_t m_faceCount = 1;
    std::vector<int> m_band;
    std::vector<std::uint64_t> m_mask;
    std::vector<int> m_area; ///< by face
    std::vector<Half> m_lineStart;
    std::vector<Half> m_lineEnd;
};

void PlanarMapBuilder::collectSegments()
{
    for (const auto& [ends, level] : m_map.m_input)
        addSegment(ends.first, ends.second, level);
    m_firstOutline = static_cast<std::uint32_t>(m_segments.size());
    for (std::size_t i = 0; i < m_map.m_outlines.size(); ++i) {
        const auto& ring = m_map.m_outlines[i];
        for (std::size_t k = 0; k < ring.size(); ++k)
            addClipped(ring[k], ring[(k + 1) % ring.size()],
                       PlanarMap::outlineSource(static_cast<int>(i)));
    }
}

void PlanarMapBuilder::addClipped(S57Place a, S57Place b, int source)
{
    const S57Place low = m_map.m_southWest;
    const S57Place high = m_map.m_northEast;
    // From the uncut ends on both sides of a border, so that neighbouring maps meet exactly.
    const double dx = double{1} * b.x - a.x;
    const double dy = double{1} * b.y - a.y;
    double first = 0;
    double last = 1;
    S57Place start = a;
    S57Place end = b;
    const auto cut = [&](double delta, double distance, S57Place place) {
        // Inside where delta * t <= distance.
        if (delta == 0)
            return distance >= 0;
        const double t = distance / delta;
        if (delta > 0 && t < last) {
            last = t;
            end = place;
        } else if (delta < 0 && t > first) {
            first = t;
            start = place;
        }
        return true;
    };
    const auto atX = [&](std::int32_t x) {
        return S57Place{dx == 0 ? a.y : rounded(a.y + dy * (double{1} * x - a.x) / dx), x};
    };
    const auto atY = [&](std::int32_t y) {
        return S57Place{y, dy == 0 ? a.x : rounded(a.x + dx * (double{1} * y - a.y) / dy)};
    };
    if (cut(dx, double{1} * high.x - a.x, atX(high.x))
        && cut(-dx, double{1} * a.x - low.x, atX(low.x))
        && cut(dy, double{1} * high.y - a.y, atY(high.y))
        && cut(-dy, double{1} * a.y - low.y, atY(low.y)) && first < last)
        addSegment(start, end, source);
}

void PlanarMapBuilder::noteCrossing(std::uint32_t one, std::uint32_t other)
{
    const Segment& s = m_segments[one];
    const Segment& t = m_segments[other];
    if (s.from == t.from || s.from == t.to || s.to == t.from || s.to == t.to)
        return;
    const S57Place a = m_points[s.from];
    const S57Place b = m_points[s.to];
    const S57Place c = m_points[t.from];
    const S57Place d = m_points[t.to];
    const std::int64_t sideC = cross(a, b, c);
    const std::int64_t sideD = cross(a, b, d);
    const std::int64_t sideA = cross(c, d, a);
    const std::int64_t sideB = cross(c, d, b);
    if (sideC == 0 && isBetween(a, b, c))
        m_cuts.emplace_back(one, t.from);
    else if (sideD == 0 && isBetween(a, b, d))
        m_cuts.emplace_back(one, t.to);
    else if (sideA == 0 && isBetween(c, d, a))
        m_cuts.emplace_back(other, s.from);
    else if (sideB == 0 && isBetween(c, d, b))
        m_cuts.emplace_back(other, s.to);
    else if ((sideC > 0) != (sideD > 0) && (sideA > 0) != (sideB > 0)) {
        const double share =
            static_cast<double>(sideC) / (static_cast<double>(sideC) - static_cast<double>(sideD));
        const auto point = pointAt({rounded(c.y + share * (double{1} * d.y - c.y)),
                                    rounded(c.x + share * (double{1} * d.x - c.x))});
        m_cuts.emplace_back(one, point);
        m_cuts.emplace_back(other, point);
    }
}

void PlanarMapBuilder::cutAtCrossings()
{
    // Contour segments by the tile they begin in; they are short, so a margin finds them all.
    constexpr int tiles = 256;
    const S57Place low = m_map.m_southWest;
    const double tileWidth = (double{1} * m_map.m_northEast.x - low.x) / tiles + 1;
    const double tileHeight = (double{1} * m_map.m_northEast.y - low.y) / tiles + 1;
    const auto column = [&](double x) {
        return std::clamp(static_cast<int>((x - low.x) / tileWidth), 0, tiles - 1);
    };
    const auto row = [&](double y) {
        return std::clamp(static_cast<int>((y - low.y) / tileHeight), 0, tiles - 1);
    };
    const auto tileAt = [](int r, int c) {
        return static_cast<std::size_t>(r) * tiles + static_cast<std::size_t>(c);
    };
    std::vector<std::vector<std::uint32_t>> byTile(std::size_t{tiles} * tiles);
    double marginX = 0;
    double marginY = 0;
    for (std::uint32_t i = 0; i < m_firstOutline; ++i) {
        const S57Place a = m_points[m_segments[i].from];
        const S57Place b = m_points[m_segments[i].to];
        byTile[tileAt(row(a.y), column(a.x))].push_back(i);
        marginX = std::max(marginX, std::abs(double{1} * b.x - a.x));
        marginY = std::max(marginY, std::abs(double{1} * b.y - a.y));
    }
    const auto count = static_cast<std::uint32_t>(m_segments.size());
    for (std::uint32_t i = m_firstOutline; i < count; ++i) {
        const S57Place a = m_points[m_segments[i].from];
        const S57Place b = m_points[m_segments[i].to];
        const int lastRow = row(std::max(a.y, b.y) + marginY);
        const int lastColumn = column(std::max(a.x, b.x) + marginX);
        for (int r = row(std::min(a.y, b.y) - marginY); r <= lastRow; ++r)
            for (int c = column(std::min(a.x, b.x) - marginX); c <= lastColumn; ++c)
                for (const std::uint32_t other : byTile[tileAt(r, c)])
                    noteCrossing(i, other);
        for (std::uint32_t other = m_firstOutline; other < i; ++other)
            noteCrossing(i, other);
    }
    // Cut, nearest point first.
    const auto along = [&](const auto& cut) {
        const S57Place from = m_points[m_segments[cut.first].from];
        const S57Place at = m_points[cut.second];
        return std::abs(double{1} * at.x - from.x) + std::abs(double{1} * at.y - from.y);
    };
    std::sort(m_cuts.begin(), m_cuts.end(), [&](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : along(a) < along(b);
    });
    for (std::size_t i = 0; i < m_cuts.size();) {
        const std::uint32_t cut = m_cuts[i].first;
        const Segment whole = m_segments[cut];
        std::uint32_t last = whole.from;
        bool first = true;
        const auto piece = [&](std::uint32_t to) {
            if (to == last)
                return;
            const Segment part{last, to, whole.source};
            last = to;
            if (std::exchange(first, false))
                m_segments[cut] = part;
            else
                m_segments.push_back(part);
        };
        for (; i < m_cuts.size() && m_cuts[i].first == cut; ++i)
            piece(m_cuts[i].second);
        piece(whole.to);
    }
}

void PlanarMapBuilder::addBorder()
{
    const S57Place low = m_map.m_southWest;
    const S57Place high = m_map.m_northEast;
    for (const S57Place corner : {low, S57Place{low.y, high.x}, high, S57Place{high.y, low.x}})
        pointAt(corner);
    // Counter-clockwise: the length walked from the south-west corner.
    const auto walked = [&](S57Place p) -> std::int64_t {
        const std::int64_t width = std::int64_t{high.x} - low.x;
        const std::int64_t height = std::int64_t{high.y} - low.y;
        if (p.y == low.y)
            return std::int64_t{p.x} - low.x;
        if (p.x == high.x)
            return width + p.y - low.y;
        if (p.y == high.y)
            return width + height + high.x - p.x;
        return 2 * width + height + high.y - p.y;
    };
    std::vector<std::uint32_t> onBorder;
    for (std::uint32_t i = 0; i < m_points.size(); ++i) {
        const S57Place p = m_points[i];
        if (p.x == low.x || p.x == high.x || p.y == low.y || p.y == high.y)
            onBorder.push_back(i);
    }
    std::sort(onBorder.begin(), onBorder.end(), [&](std::uint32_t a, std::uint32_t b) {
        return walked(m_points[a]) < walked(m_points[b]);
    });
    for (std::size_t i = 0; i < onBorder.size(); ++i)
        m_segments.push_back({onBorder[i], onBorder[(i + 1) % onBorder.size()], PlanarMap::border});
}

void PlanarMapBuilder::sortAround()
{
    m_around.assign(m_points.size() + 1, 0);
    const auto halfCount = static_cast<Half>(m_segments.size() * 2);
    for (Half half = 0; half < halfCount; ++half)
        ++m_around[origin(half) + 1];
    std::partial_sum(m_around.begin(), m_around.end(), m_around.begin());
    m_halves.resize(halfCount);
    auto next = m_around;
    for (Half half = 0; half < halfCount; ++half)
        m_halves[next[origin(half)]++] = half;
    m_placeAround.resize(halfCount);
    for (std::uint32_t point = 0; point < m_points.size(); ++point) {
        const auto begin = m_halves.begin() + m_around[point];
        const auto end = m_halves.begin() + m_around[point + 1];
        const S57Place from = m_points[point];
        if (end - begin > 2)
            std::sort(begin, end, [&](Half a, Half b) {
                const S57Place toA = m_points[target(a)];
                const S57Place toB = m_points[target(b)];
                const int planeA = halfPlane(from, toA);
                const int planeB = halfPlane(from, toB);
                return planeA != planeB ? planeA < planeB : cross(from, toA, toB) > 0;
            });
        for (auto it = begin; it != end; ++it)
            m_placeAround[*it] = static_cast<std::uint32_t>(it - begin);
    }
}

void PlanarMapBuilder::traceCycles()
{
    constexpr auto unseen = std::numeric_limits<std::uint32_t>::max();
    const auto all = [](Half) { return true; };
    m_cycle.assign(m_halves.size(), unseen);
    for (Half start = 0; start < m_halves.size(); ++start) {
        if (m_cycle[start] != unseen)
            continue;
        const auto cycle = static_cast<std::uint32_t>(m_cycleStart.size());
        const S57Place base = m_points[origin(start)];
        double area = 0;
        Half half = start;
        do {
            m_cycle[half] = cycle;
            area +=
                static_cast<double>(cross(base, m_points[origin(half)], m_points[target(half)]));
            half = following(half, all);
        } while (half != start && m_cycle[half] == unseen);
        m_cycleStart.push_back(start);
        m_cycleArea.push_back(area);
    }
}

bool PlanarMapBuilder::placeCycles()
{
    // A cycle walked counter-clockwise bounds a face; any other is the outline of what lies inside
    // one, which is found by looking west from its westernmost point.
    struct Outline {
        std::uint32_t cycle;
        S57Place west;
    };
    std::vector<Outline> outlines;
    std::vector<std::uint32_t> faceOfCycle(m_cycleStart.size(), 0);
    const auto all = [](Half) { return true; };
    for (std::uint32_t cycle = 0; cycle < m_cycleStart.size(); ++cycle) {
        if (m_cycleArea[cycle] > 0) {
            faceOfCycle[cycle] = m_faceCount++;
            continue;
        }
        S57Place west = m_points[origin(m_cycleStart[cycle])];
        for (Half half = following(m_cycleStart[cycle], all); half != m_cycleStart[cycle];
             half = following(half, all)) {
            const S57Place p = m_points[origin(half)];
            if (p.x < west.x || (p.x == west.x && p.y < west.y))
                west = p;
        }
        outlines.push_back({cycle, west});
    }
    std::sort(outlines.begin(), outlines.end(),
              [](const auto& a, const auto& b) { return a.west.x < b.west.x; });

    const std::size_t stripCount = std::clamp<std::size_t>(m_segments.size() / 64, 1, 8'192);
    const double bottom = m_map.m_southWest.y;
    const double height =
        (double{1} * m_map.m_northEast.y - bottom) / static_cast<double>(stripCount) + 1;
    const auto stripOf = [&](double y) {
        return static_cast<std::size_t>(std::max(0.0, (y - bottom) / height));
    };
    std::vector<std::vector<std::uint32_t>> strips(stripCount + 1);
    for (std::uint32_t i = 0; i < m_segments.size(); ++i) {
        const double a = m_points[m_segments[i].from].y;
        const double b = m_points[m_segments[i].to].y;
        for (std::size_t s = stripOf(std::min(a, b)); s <= stripOf(std::max(a, b)); ++s)
            strips[s].push_back(i);
    }
    for (const Outline& outline : outlines) {
        const double y = outline.west.y + 0.5; // between whole units: never at a point
        double nearest = -std::numeric_limits<double>::infinity();
        for (const std::uint32_t i : strips[stripOf(y)]) {
            const S57Place a = m_points[m_segments[i].from];
            const S57Place b = m_points[m_segments[i].to];
            if ((a.y > y) == (b.y > y))
                continue;
            const double x = a.x + (double{1} * b.x - a.x) * (y - a.y) / (double{1} * b.y - a.y);
            if (x < outline.west.x && x > nearest) {
                nearest = x;
                const Half down = 2 * i + (b.y < a.y ? 0U : 1U); // its left side faces east
                faceOfCycle[outline.cycle] = faceOfCycle[m_cycle[down]];
            }
        }
    }
    m_face.resize(m_halves.size());
    for (Half half = 0; half < m_halves.size(); ++half)
        m_face[half] = faceOfCycle[m_cycle[half]];
    return m_faceCount > 1;
}

bool PlanarMapBuilder::findGround(int cornerBand)
{
    constexpr int unknown = -1;
    m_band.assign(m_faceCount, unknown);
    m_mask.assign(m_faceCount, 0);
    std::vector<bool> maskKnown(m_faceCount, false);
    const auto segmentCount = static_cast<std::uint32_t>(m_segments.size());
    for (std::uint32_t i = 0; i < segmentCount; ++i) {
        if (m_segments[i].source != PlanarMap::border)
            continue;
        // The first piece of the border, east of the south-west corner.
        const S57Place a = m_points[m_segments[i].from];
        const S57Place b = m_points[m_segments[i].to];
        const std::uint32_t face = m_face[std::size_t{2} * i];
        m_band[face] = cornerBand;
        maskKnown[face] = true;
        for (std::size_t k = 0; k < m_map.m_outlines.size(); ++k)
            if (isInside(m_map.m_outlines[k], (double{1} * a.x + b.x) / 2,
                         (double{1} * a.y + b.y) / 2))
                m_mask[face] |= std::uint64_t{1} << k;
        break;
    }
    for (bool changed = true; changed;) {
        changed = false;
        for (std::uint32_t i = 0; i < segmentCount; ++i) {
            const int source = m_segments[i].source;
            const std::uint32_t left = m_face[std::size_t{2} * i];
            const std::uint32_t right = m_face[std::size_t{2} * i + 1];
            if (source == PlanarMap::border)
                continue;
            if (left == 0 || right == 0)
                return false;
            const bool isContour = source >= 0;
            const std::uint64_t bit = isContour ? 0 : std::uint64_t{1} << (-2 - source);
            if (maskKnown[left] != maskKnown[right]) {
                m_mask[maskKnown[left] ? right : left] =
                    m_mask[maskKnown[left] ? left : right] ^ bit;
                maskKnown[left] = maskKnown[right] = true;
                changed = true;
            } else if (maskKnown[left] && m_mask[left] != (m_mask[right] ^ bit)) {
                return false;
            }
            for (const bool isLeft : {true, false}) {
                int& band = m_band[isLeft ? left : right];
                const int other = m_band[isLeft ? right : left];
                const int wanted = isContour ? source + (isLeft ? 1 : 0) : other;
                if (wanted == unknown || band == wanted)
                    continue;
                if (band != unknown)
                    return false;
                band = wanted;
                changed = true;
            }
        }
    }
    return std::all_of(m_band.begin() + 1, m_band.end(), [](int band) { return band != unknown; });
}

void PlanarMapBuilder::joinFaces(const PlanarMap::Rule& rule)
{
    std::vector<int> kind(m_faceCount, 0);
    for (std::uint32_t face = 1; face < m_faceCount; ++face)
        kind[face] = rule(m_band[face], m_mask[face]);
    std::vector<std::uint32_t> parent(m_faceCount);
    std::iota(parent.begin(), parent.end(), 0U);
    const auto root = [&](std::uint32_t face) {
        while (parent[face] != face)
            face = parent[face] = parent[parent[face]];
        return face;
    };
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const std::uint32_t left = root(m_face[std::size_t{2} * i]);
        const std::uint32_t right = root(m_face[std::size_t{2} * i + 1]);
        if (left != 0 && right != 0 && left != right && kind[left] == kind[right])
            parent[std::max(left, right)] = std::min(left, right);
    }
    m_area.assign(m_faceCount, PlanarMap::exterior);
    for (std::uint32_t face = 1; face < m_faceCount; ++face)
        if (root(face) == face) {
            m_area[face] = static_cast<int>(m_map.m_areas.size());
            m_map.m_areas.push_back({kind[face], {}});
        }
    for (std::uint32_t face = 1; face < m_faceCount; ++face)
        m_area[face] = m_area[root(face)];
}

void PlanarMapBuilder::collectLines()
{
    const auto kept = [this](Half half) { return isKept(half); };
    const auto isNode = [&](std::uint32_t point) {
        int count = 0;
        int source = 0;
        for (std::uint32_t i = m_around[point]; i < m_around[point + 1]; ++i) {
            const Half half = m_halves[i];
            if (!isKept(half))
                continue;
            if (count++ > 0 && m_segments[half / 2].source != source)
                return true;
            source = m_segments[half / 2].source;
        }
        return count != 2;
    };
    std::vector<bool> seen(m_segments.size(), false);
    const auto walk = [&](Half start) {
        PlanarMap::Line line;
        line.left = m_area[m_face[start]];
        line.right = m_area[m_face[start ^ 1U]];
        line.source = m_segments[start / 2].source;
        line.places.push_back(m_points[origin(start)]);
        const std::uint32_t end = origin(start);
        for (Half half = start;;) {
            seen[half / 2] = true;
            line.places.push_back(m_points[target(half)]);
            if (target(half) == end || isNode(target(half))) {
                m_lineEnd.push_back(half);
                break;
            }
            half = following(half, kept);
        }
        m_lineStart.push_back(start);
        m_map.m_lines.push_back(std::move(line));
    };
    const auto segmentCount = static_cast<std::uint32_t>(m_segments.size());
    for (const bool fromNodes : {true, false}) // then the loops that touch nothing
        for (std::uint32_t i = 0; i < segmentCount; ++i) {
            if (seen[i] || !isKept(2 * i))
                continue;
            if (!fromNodes || isNode(origin(2 * i)))
                walk(2 * i);
            else if (isNode(target(2 * i)))
                walk(2 * i + 1);
        }
}

bool PlanarMapBuilder::collectRings()
{
    // By half segment that begins a line as it is walked: twice the line, plus one when backwards.
    std::unordered_map<Half, std::uint32_t> walkFrom;
    const auto lineCount = static_cast<std::uint32_t>(m_map.m_lines.size());
    for (std::uint32_t i = 0; i < lineCount; ++i) {
        walkFrom[m_lineStart[i]] = 2 * i;
        walkFrom[m_lineEnd[i] ^ 1U] = 2 * i + 1;
    }
    const auto kept = [this](Half half) { return isKept(half); };
    std::vector<bool> seen(std::size_t{2} * lineCount, false);
    for (std::uint32_t start = 0; start < 2 * lineCount; ++start) {
        if (seen[start])
            continue;
        PlanarMap::Ring ring;
        double area = 0;
        const S57Place base = m_map.m_lines[start / 2].places.front();
        for (std::uint32_t walk = start; !seen[walk];) {
            seen[walk] = true;
            const std::uint32_t index = walk / 2;
            const bool reversed = walk % 2 == 1;
            const auto& places = m_map.m_lines[index].places;
            for (std::size_t k = 0; k + 1 < places.size(); ++k)
                area += (reversed ? -1.0 : 1.0)
                    * static_cast<double>(cross(base, places[k], places[k + 1]));
            ring.push_back({index, reversed});
            const Half last = reversed ? m_lineStart[index] ^ 1U : m_lineEnd[index];
            const auto next = walkFrom.find(following(last, kept));
            if (next == walkFrom.end())
                return false;
            walk = next->second;
        }
        const PlanarMap::Line& line = m_map.m_lines[start / 2];
        const int owner = start % 2 == 0 ? line.left : line.right;
        if (owner == PlanarMap::exterior) {
            m_map.m_outside = std::move(ring);
            continue;
        }
        // Traced with the area on the left; charts keep it on the right.
        std::reverse(ring.begin(), ring.end());
        for (auto& step : ring)
            step.reversed = !step.reversed;
        auto& rings = m_map.m_areas[static_cast<std::size_t>(owner)].rings;
        rings.insert(area > 0 ? rings.begin() : rings.end(), std::move(ring));
    }
    return true;
}

PlanarMap::PlanarMap(S57Place southWest, S57Place northEast)
    : m_southWest(southWest)
    , m_northEast(northEast)
{
}

void PlanarMap::addContour(S57Place from, S57Place to, int level)
{
    m_input.push_back({{from, to}, level});
}

void PlanarMap::addOutline(std::span<const S57Place> ring)
{
    m_outlines.emplace_back(ring.begin(), ring.end());
}

bool PlanarMap::build(int cornerBand, const Rule& rule)
{
    return PlanarMapBuilder(*this).build(cornerBand, rule);
}

} // namespace kelvox
