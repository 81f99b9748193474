#include "demo/DemoCell.h"

#include "demo/DemoTerrain.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
constexpr int landKind = 1'000;
constexpr int dredgedKind = 2'000; ///< plus the index of the work
constexpr std::uint8_t truncatedUsage = 3; ///< an outline cut off by the chart's border
constexpr std::uint8_t noMask = 255;

std::vector<S57Place> placesOf(const DemoLine& line)
{
    std::vector<S57Place> places;
    for (const Point p : line)
        places.push_back(S57Place::of(DemoGround::position(p)));
    return places;
}

S57CellWriter::Line positionsOf(const std::vector<S57Place>& places)
{
    S57CellWriter::Line line;
    line.reserve(places.size());
    for (const S57Place place : places)
        line.push_back({.longitude = place.x / S57CellWriter::coordinateMultiplier,
                        .latitude = place.y / S57CellWriter::coordinateMultiplier});
    return line;
}

S57CellWriter::Line positionsOf(const DemoLine& line)
{
    S57CellWriter::Line positions;
    for (const Point p : line)
        positions.push_back(DemoGround::position(p));
    return positions;
}

std::vector<S57FeatureSpatial> reversed(std::vector<S57FeatureSpatial> spatials)
{
    std::reverse(spatials.begin(), spatials.end());
    for (auto& spatial : spatials)
        spatial.orient = spatial.orient == 1 ? 2 : 1;
    return spatials;
}

double signedArea(const DemoLine& ring)
{
    double sum = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point a = ring[i];
        const Point b = ring[(i + 1) % ring.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum / 2;
}
} // namespace

std::string demoNumber(double value)
{
    return fmt::format("{:g}", value + 0.0); // and no "-0"
}

DemoCell::DemoCell(DemoChart chart)
    : m_chart(std::move(chart))
    , m_ground(m_chart.spacing * 2.2)
    , m_writer({.name = m_chart.name,
                .edition = 2,
                .issueDate = "20260115",
                .usageBand = m_chart.usageBand,
                .compiledScale = m_chart.scale,
                .comment = "The demo waters: invented, not for navigation"})
{
}

DemoCell::Attributes DemoCell::withReach(Attributes attributes, Reach reach) const
{
    static constexpr std::array<int, 15> steps{17'999,  21'999,  29'999,  44'999,    59'999,
                                               89'999,  119'999, 179'999, 259'999,   349'999,
                                               499'999, 699'999, 999'999, 1'499'999, 2'999'999};
    if (reach != Always) {
        const auto wanted = static_cast<int>(m_chart.scale) * static_cast<int>(reach);
        const auto step = std::lower_bound(steps.begin(), steps.end() - 1, wanted);
        attributes.emplace_back("SCAMIN", std::to_string(*step));
    }
    return attributes;
}

std::optional<DemoCell::FeatureID> DemoCell::point(std::string_view acronym, Point place,
                                                   Attributes attributes, Reach reach)
{
    // A place on the border belongs to the chart east or north of it.
    const Rect& area = m_chart.area;
    if (!(place.x >= area.left && place.x < area.right && place.y >= area.bottom
          && place.y < area.top))
        return std::nullopt;
    return m_writer.addPoint(acronym, DemoGround::position(place),
                             withReach(std::move(attributes), reach));
}

std::optional<DemoCell::FeatureID> DemoCell::line(std::string_view acronym, const DemoLine& line,
                                                  const Attributes& attributes, Reach reach)
{
    std::vector<S57FeatureSpatial> spatials;
    for (const DemoLine& piece : clippedLine(line, m_chart.area))
        if (const auto edges = m_writer.edges(positionsOf(piece)); !edges.empty())
            spatials.insert(spatials.end(), edges.begin(), edges.end());
    if (spatials.empty())
        return std::nullopt;
    return m_writer.addFeature(acronym, S57Feature::line, std::move(spatials),
                               withReach(attributes, reach));
}

void DemoCell::area(std::string_view acronym, const DemoLine& ring, const Attributes& attributes,
                    Reach reach)
{
    const Rect& bounds = m_chart.area;
    DemoLine outline = clippedRing(ring, bounds);
    if (outline.empty())
        return;
    if (signedArea(outline) > 0)
        std::reverse(outline.begin(), outline.end());
    const auto onBorder = [&](std::size_t i) {
        const Point a = outline[i % outline.size()];
        const Point b = outline[(i + 1) % outline.size()];
        return (a.x == b.x && (a.x == bounds.left || a.x == bounds.right))
            || (a.y == b.y && (a.y == bounds.bottom || a.y == bounds.top));
    };
    // Parts on the border are edges of their own, which are not drawn.
    std::size_t start = 0;
    while (start < outline.size() && onBorder(start) == onBorder(start + outline.size() - 1))
        ++start;
    std::vector<S57FeatureSpatial> spatials;
    if (start == outline.size()) {
        spatials = m_writer.ring(positionsOf(outline));
        if (onBorder(0))
            for (auto& spatial : spatials) {
                spatial.usage = truncatedUsage;
                spatial.mask = noMask;
            }
    } else {
        for (std::size_t i = start; i < start + outline.size();) {
            DemoLine part{outline[i % outline.size()]};
            const bool border = onBorder(i);
            for (; i < start + outline.size() && onBorder(i) == border; ++i)
                part.push_back(outline[(i + 1) % outline.size()]);
            for (auto spatial : m_writer.edges(positionsOf(part))) {
                spatial.usage = border ? truncatedUsage : 1;
                spatial.mask = border ? noMask : 2;
                spatials.push_back(spatial);
            }
        }
    }
    m_writer.addFeature(acronym, S57Feature::area, std::move(spatials),
                        withReach(attributes, reach));
}

bool DemoCell::addGround(const std::vector<DemoWork>& works)
{
    const DemoTerrain terrain(m_ground, m_chart.area, m_chart.spacing);
    PlanarMap map(terrain.southWest(), terrain.northEast());
    terrain.contours(m_chart.levels, [&](S57Place from, S57Place to, int level) {
        map.addContour(from, to, level);
    });
    for (const DemoWork& work : works)
        map.addOutline(placesOf(work.ring));

    const auto& levels = m_chart.levels;
    const auto land = static_cast<int>(levels.size());
    const auto rule = [&](int band, std::uint64_t inside) {
        int kind = band == land ? landKind : band;
        for (std::size_t i = 0; i < works.size(); ++i)
            if (works[i].kind == DemoWork::Kind::Dredged && (inside >> i & 1U) != 0)
                kind = dredgedKind + static_cast<int>(i);
        for (std::size_t i = 0; i < works.size(); ++i)
            if (works[i].kind == DemoWork::Kind::Fill && (inside >> i & 1U) != 0)
                kind = landKind;
        return kind;
    };
    const auto corner = static_cast<int>(
        std::lower_bound(levels.begin(), levels.end(), terrain.cornerElevation()) - levels.begin());
    if (!map.build(corner, rule))
        return false;

    for (const auto& line : map.lines())
        m_lineSpatials.push_back(m_writer.edges(positionsOf(line.places)));
    addCoverage(map);
    addAreas(map, works);
    addLines(map, works);
    return true;
}

std::vector<S57FeatureSpatial> DemoCell::spatialsOf(const PlanarMap& map,
                                                    const PlanarMap::Ring& ring) const
{
    std::vector<S57FeatureSpatial> all;
    for (const auto& step : ring) {
        auto spatials = m_lineSpatials[step.line];
        if (step.reversed)
            spatials = reversed(std::move(spatials));
        const auto& line = map.lines()[step.line];
        const bool border = line.left == PlanarMap::exterior || line.right == PlanarMap::exterior;
        for (auto& spatial : spatials) {
            spatial.usage = border ? truncatedUsage : 1;
            spatial.mask = border ? noMask : 2;
        }
        all.insert(all.end(), spatials.begin(), spatials.end());
    }
    return all;
}

void DemoCell::addAreas(const PlanarMap& map, const std::vector<DemoWork>& works)
{
    const auto& levels = m_chart.levels;
    for (const auto& area : map.areas()) {
        std::vector<S57FeatureSpatial> spatials;
        for (std::size_t i = 0; i < area.rings.size(); ++i)
            for (auto spatial : spatialsOf(map, area.rings[i])) {
                if (i > 0)
                    spatial.usage = 2;
                spatials.push_back(spatial);
            }
        if (area.kind == landKind) {
            m_writer.addFeature("LNDARE", S57Feature::area, std::move(spatials));
        } else if (area.kind >= dredgedKind) {
            m_writer.addFeature(
                "DRGARE", S57Feature::area, std::move(spatials),
                works[static_cast<std::size_t>(area.kind - dredgedKind)].attributes);
        } else {
            const auto band = static_cast<std::size_t>(area.kind);
            const double shallow = -levels[band];
            const double deep = band == 0 ? 4 * shallow : -levels[band - 1];
            m_writer.addFeature("DEPARE", S57Feature::area, std::move(spatials),
                                {{"DRVAL1", demoNumber(shallow)}, {"DRVAL2", demoNumber(deep)}});
        }
    }
}

void DemoCell::addLines(const PlanarMap& map, const std::vector<DemoWork>& works)
{
    const auto& levels = m_chart.levels;
    const auto isLand = [&](int area) {
        return map.areas()[static_cast<std::size_t>(area)].kind == landKind;
    };
    for (std::size_t i = 0; i < map.lines().size(); ++i) {
        const auto& line = map.lines()[i];
        if (line.left == PlanarMap::exterior || line.right == PlanarMap::exterior)
            continue;
        auto spatials = m_lineSpatials[i];
        const bool coast = isLand(line.left) != isLand(line.right);
        if (line.source < 0) {
            const auto& work = works[static_cast<std::size_t>(-2 - line.source)];
            const bool isFill = work.kind == DemoWork::Kind::Fill;
            if (coast)
                m_writer.addFeature("SLCONS", S57Feature::line, std::move(spatials),
                                    isFill ? work.attributes : Attributes{{"CATSLC", "6"}});
        } else if (coast) {
            m_writer.addFeature("COALNE", S57Feature::line, std::move(spatials));
        } else {
            const double level = levels[static_cast<std::size_t>(line.source)];
            if (spatials.size() == 1)
                m_contours.push_back({level, spatials.front(), line.places});
            m_writer.addFeature("DEPCNT", S57Feature::line, std::move(spatials),
                                {{"VALDCO", demoNumber(-level)}});
        }
    }
}

void DemoCell::addCoverage(const PlanarMap& map)
{
    auto outline = spatialsOf(map, map.outside());
    // The border truncates nothing of what it bounds.
    for (auto& spatial : outline) {
        spatial.usage = 1;
        spatial.mask = noMask;
    }
    const int zone = m_chart.usageBand >= 5 ? 1
        : m_chart.usageBand >= 3            ? 6 - m_chart.usageBand
                                            : 4;
    m_writer.addFeature("M_COVR", S57Feature::area, outline, {{"CATCOV", "1"}});
    m_writer.addFeature("M_NSYS", S57Feature::area, outline, {{"MARSYS", "1"}});
    m_writer.addFeature("M_QUAL", S57Feature::area, std::move(outline),
                        {{"CATZOC", std::to_string(zone)}, {"SURSTA", "2024"}, {"SUREND", "2025"}});
}

void DemoCell::addSoundings(const std::vector<DemoWork>& works)
{
    // One sounding for each square of a lattice, the shoalest of a few places in it; every third
    // row and column is kept to smaller scales.
    const double step = m_chart.soundingSpacing;
    const Rect& area = m_chart.area;
    std::array<std::vector<S57CellWriter::Sounding>, 3> kept;
    const auto firstRow = static_cast<int>(std::floor(area.bottom / step));
    const auto firstColumn = static_cast<int>(std::floor(area.left / step));
    for (int row = firstRow; row * step < area.top; ++row)
        for (int column = firstColumn; column * step < area.right; ++column) {
            Point best;
            double bestElevation = -1e9;
            for (unsigned attempt = 0; attempt < 4; ++attempt) {
                const Point p{(column + 0.1 + 0.8 * demoRandom(column, row, 300 + attempt)) * step,
                              (row + 0.1 + 0.8 * demoRandom(column, row, 310 + attempt)) * step};
                const double elevation = m_ground.elevation(p);
                if (elevation < 2.5 && elevation > bestElevation) {
                    best = p;
                    bestElevation = elevation;
                }
            }
            const bool inside = best.x > area.left && best.x < area.right && best.y > area.bottom
                && best.y < area.top;
            if (bestElevation < -1e8 || !inside
                || std::any_of(works.begin(), works.end(),
                               [&](const auto& work) { return isInsideRing(work.ring, best); }))
                continue;
            // Rounded to the shoal side: decimetres down to 31 m, metres beyond.
            const double depth = -bestElevation;
            const double shown = depth > 31 ? std::floor(depth) : std::floor(depth * 10) / 10;
            const bool third = row % 3 == 0 && column % 3 == 0;
            const bool second = (row + column) % 2 == 0;
            kept[third ? 0 : second ? 1 : 2].push_back({DemoGround::position(best), shown});
        }
    static constexpr std::array<Reach, 3> reach{Far, Middle, Near};
    for (std::size_t i = 0; i < kept.size(); ++i)
        m_writer.addSoundings(kept[i], withReach({{"TECSOU", "3"}}, reach[i]));
}

const DemoCell::Contour* DemoCell::contourEdge(double level, std::size_t places) const
{
    const auto it = std::find_if(m_contours.begin(), m_contours.end(), [&](const Contour& contour) {
        return contour.level == level && contour.places.size() >= places;
    });
    return it == m_contours.end() ? nullptr : &*it;
}

std::vector<DemoCell::FeatureID> DemoCell::withEquipment(FeatureID structure) const
{
    std::vector<FeatureID> all{structure};
    const auto [first, last] = m_equipment.equal_range(structure);
    for (auto it = first; it != last; ++it)
        all.push_back(it->second);
    return all;
}

} // namespace kelvox
