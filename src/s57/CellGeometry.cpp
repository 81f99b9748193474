#include "s57/CellGeometry.h"

#include "chartview/S57Controller.h"
#include "s57/LineDetail.h"
#include "s57/S57Object.h"

#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_set>

namespace kelvox {

namespace bg = boost::geometry;

namespace {
constexpr float radiansPerDegree = 0.017453292F;

using TreePoint = bg::model::point<float, 2, bg::cs::cartesian>;
using TreeBox = bg::model::box<TreePoint>;
using TreeEntry = std::pair<TreeBox, std::uint32_t>;
using Tree = bg::index::rtree<TreeEntry, bg::index::linear<16>>;

/// Nonsense of a damaged cell, far off the sheet, is left out.
bool isFinite(CellGeometry::Vertex v)
{
    return std::abs(v.longitude) <= 1080 && std::abs(v.ordinate) <= 20;
}

CellGeometry::Vertex vertexOf(S57Coordinate place)
{
    return {place.longitude, S57Controller::mercatorOrdinate(place.latitude)};
}

/// Low layers are drawn first.
unsigned layerOf(const S57Feature& feature)
{
    using namespace s57class;
    constexpr int canal = 23, river = 114;
    const int code = feature.objectCode();
    if (code == M_COVR)
        return 0;
    switch (feature.geometry()) {
    case S57Feature::area:
        if (code == DEPARE || code == DRGARE || code == UNSARE)
            return 1;
        if (code == LNDARE)
            return 2;
        return code == LAKARE || code == river || code == canal ? 3 : 4;
    case S57Feature::line:
        return 5;
    default:
        return code == SOUNDG ? 6 : 7;
    }
}
} // namespace

class CellGeometry::Index {
public:
    explicit Index(const std::vector<TreeEntry>& entries)
        : tree(entries)
    {
    }
    Tree tree;
};

CellGeometry::~CellGeometry() = default;

CellGeometry::CellGeometry(std::shared_ptr<const S57ChartItems> cell)
    : m_cell(std::move(cell))
{
    std::size_t vertices = 0;
    for (const auto& vector : m_cell->s57Vectors()) {
        if (vector.recordName() == s57RecordName::edge)
            vertices += vector.s57Coordinates().size() + 2;
        if (vector.hasDepth())
            m_soundingBudget += 2 * vector.s57Coordinates().size();
    }
    m_anchorBudget = 8 * vertices;
    m_vertices.reserve(vertices);
    for (const auto& vector : m_cell->s57Vectors())
        if (vector.recordName() == s57RecordName::edge)
            addEdge(vector);
    m_details.resize(m_vertices.size());
    for (const Edge& edge : m_edges)
        measureDetail(this->vertices(edge), std::span(m_details).subspan(edge.first, edge.count));

    const auto& features = m_cell->s57Features();
    m_shapes.reserve(features.size());
    for (const auto& feature : features)
        addFeature(*feature);
    m_edgeByKey = {};
    m_nodeBounds = {};
    m_edgeBounds = {};
    thinSoundings();

    std::vector<TreeEntry> entries;
    for (std::uint32_t i = 0; i < m_shapes.size(); ++i) {
        const Shape& s = m_shapes[i];
        if (s.left > s.right)
            continue;
        entries.emplace_back(TreeBox({s.left, s.bottom}, {s.right, s.top}), i);
        m_bounds.include(Rect{s.left, s.bottom, s.right, s.top});
    }
    m_index = std::make_unique<Index>(entries);
    buildDrawingOrder();
}

void CellGeometry::addEdge(const S57Vector& vector)
{
    // The stored direction: from the node of the first pointer to that of the second.
    S57FeatureSpatial forward;
    forward.recordName = s57RecordName::edge;
    forward.recordID = vector.recordID();
    const auto nodes = forward.edgeConnectedNodes(*m_cell);

    Edge edge;
    edge.first = static_cast<std::uint32_t>(m_vertices.size());
    const auto append = [&](S57Coordinate place) {
        const Vertex v = vertexOf(place);
        if (isFinite(v))
            m_vertices.push_back(v);
        return isFinite(v);
    };
    edge.hasStart = nodes.start && append(nodes.start->s57Coordinates().front());
    for (const auto& place : vector.s57Coordinates())
        append(place);
    edge.hasEnd = nodes.end && append(nodes.end->s57Coordinates().front());
    edge.count = static_cast<std::uint32_t>(m_vertices.size()) - edge.first;
    m_edgeByKey.emplace(vector.recordKey(), static_cast<std::uint32_t>(m_edges.size()));
    m_edges.push_back(edge);
    Rect& box = m_edgeBounds.emplace_back();
    for (const Vertex v : vertices(edge))
        box.include(Point{v.longitude, v.ordinate});
}

Rect CellGeometry::boundsOfNode(std::uint64_t recordKey)
{
    const auto [place, isNew] = m_nodeBounds.try_emplace(recordKey);
    const S57Vector* node = isNew ? m_cell->s57VectorForKey(recordKey) : nullptr;
    if (node)
        for (const auto& coordinate : node->s57Coordinates())
            if (const Vertex v = vertexOf(coordinate); isFinite(v))
                place->second.include(Point{v.longitude, v.ordinate});
    return place->second;
}

void CellGeometry::addFeature(const S57Feature& feature)
{
    Shape shape;
    shape.firstUse = static_cast<std::uint32_t>(m_uses.size());
    Rect box;
    // No sound outline runs along an edge more than twice; a hostile one must not have its path
    // grow without bounds.
    std::size_t budget = 2 * m_vertices.size();
    // The rings close as in S57Feature::buildEdgePath().
    const S57Vector* ringStart = nullptr;
    bool start = true;
    for (const auto& spatial : feature.s57FeatureSpatials()) {
        const auto found = m_edgeByKey.find(spatial.recordKey());
        if (found != m_edgeByKey.end()) {
            const std::size_t count = m_edges[found->second].count;
            if (count > budget)
                break;
            budget -= count;
            const bool reversed = spatial.orient == S57FeatureSpatial::reverse;
            m_uses.push_back({found->second, reversed, start});
            box.include(m_edgeBounds[found->second]);
        } else {
            box.include(boundsOfNode(spatial.recordKey()));
        }
        if (feature.geometry() == S57Feature::area) {
            const auto nodes = spatial.edgeConnectedNodes(*m_cell);
            const S57Vector* first = ringStart ? ringStart : nodes.start;
            start = first == nodes.end;
            ringStart = start ? nullptr : first;
        }
    }
    shape.useCount = static_cast<std::uint32_t>(m_uses.size()) - shape.firstUse;
    shape.firstSounding = static_cast<std::uint32_t>(m_soundings.size());
    addSoundings(feature);
    shape.soundingCount = static_cast<std::uint32_t>(m_soundings.size()) - shape.firstSounding;
    if (!box.isEmpty()) {
        shape.left = static_cast<float>(box.left);
        shape.bottom = static_cast<float>(box.bottom);
        shape.right = static_cast<float>(box.right);
        shape.top = static_cast<float>(box.top);
    }
    m_shapes.push_back(shape);
    if (box.isEmpty())
        return;
    Vertex& anchor = m_shapes.back().anchor;
    const std::size_t work = 2 * m_vertices.size() - budget; // vertices of this feature
    const bool affordable = work <= m_anchorBudget;
    m_anchorBudget -= affordable ? work : 0;
    if (affordable && feature.geometry() == S57Feature::area)
        anchor = areaAnchor(m_shapes.size() - 1);
    else if (affordable && feature.geometry() == S57Feature::line)
        anchor = lineAnchor(m_shapes.size() - 1);
    else
        anchor = {static_cast<float>(box.center().x), static_cast<float>(box.center().y)};
}

void CellGeometry::addSoundings(const S57Feature& feature)
{
    const auto spatials = feature.s57FeatureSpatials();
    if (feature.objectCode() != s57class::SOUNDG || spatials.size() != 1
        || spatials.front().recordName != s57RecordName::isolatedNode)
        return;
    const S57Vector* node = m_cell->s57VectorForKey(spatials.front().recordKey());
    if (!node || !node->hasDepth() || node->s57Coordinates().size() > m_soundingBudget)
        return;
    m_soundingBudget -= node->s57Coordinates().size();
    for (std::size_t i = 0; i < node->s57Coordinates().size(); ++i) {
        const S57Depth sounding = node->s57Depth(i);
        if (const Vertex v = vertexOf(sounding); isFinite(v) && std::isfinite(sounding.depth))
            m_soundings.push_back({v.longitude, v.ordinate, sounding.depth, 0});
    }
}

void CellGeometry::thinSoundings()
{
    // Squares fixed on the earth, each grid twice as coarse as the one before: in each square only
    // the shoalest goes on to the next grid. So what is shown never depends on where the view lies.
    constexpr float finest = 0x1p-24F; // 0.4 m
    constexpr int grids = 22;
    std::vector<std::uint32_t> left(m_soundings.size());
    std::iota(left.begin(), left.end(), 0U);
    std::ranges::sort(left, {}, [&](std::uint32_t i) { return m_soundings[i].depth; });
    float square = finest;
    for (int grid = 0; grid < grids && !left.empty(); ++grid, square *= 2) {
        std::unordered_set<std::uint64_t> taken;
        std::vector<std::uint32_t> stay;
        for (const std::uint32_t i : left) {
            Sounding& sounding = m_soundings[i];
            const auto column = static_cast<std::int32_t>(
                std::floor(sounding.longitude * radiansPerDegree / square));
            const auto row = static_cast<std::int32_t>(std::floor(sounding.ordinate / square));
            const auto key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(column)) << 32U
                | static_cast<std::uint32_t>(row);
            if (taken.insert(key).second) {
                stay.push_back(i);
                sounding.detail = detailCode(square);
            }
        }
        left = std::move(stay);
    }
}

CellGeometry::Vertex CellGeometry::lineAnchor(std::size_t feature) const
{
    double length = 0;
    const auto walk = [&](auto step) {
        for (const Use& use : uses(feature)) {
            const auto line = vertices(edge(use));
            for (std::size_t i = 1; i < line.size(); ++i) {
                const Vertex a = use.reversed ? line[line.size() - i] : line[i - 1];
                const Vertex b = use.reversed ? line[line.size() - i - 1] : line[i];
                if (step(a, b,
                         std::hypot((b.longitude - a.longitude) * radiansPerDegree,
                                    b.ordinate - a.ordinate)))
                    return;
            }
        }
    };
    walk([&](Vertex, Vertex, float step) {
        length += step;
        return false;
    });
    const Rect box = bounds(feature);
    Vertex middle{static_cast<float>(box.center().x), static_cast<float>(box.center().y)};
    double left = length / 2;
    walk([&](Vertex a, Vertex b, float step) {
        if (left > step) {
            left -= step;
            return false;
        }
        const float t = step > 0 ? static_cast<float>(left / step) : 0.0F;
        middle = {a.longitude + (b.longitude - a.longitude) * t,
                  a.ordinate + (b.ordinate - a.ordinate) * t};
        return true;
    });
    return middle;
}

CellGeometry::Vertex CellGeometry::areaAnchor(std::size_t feature) const
{
    // The middle of the widest stretch inside, on the best of a few parallels.
    constexpr int parallels = 9;
    const Rect box = bounds(feature);
    Point best = box.center();
    double bestWorth = -1;
    std::vector<double> crossings;
    for (int i = 1; i <= parallels; ++i) {
        const double share = static_cast<double>(i) / (parallels + 1);
        const double y = box.bottom + box.height() * share;
        crossings.clear();
        for (const Use& use : uses(feature)) {
            const auto line = vertices(edge(use));
            for (std::size_t k = 1; k < line.size(); ++k) {
                const Vertex a = line[k - 1];
                const Vertex b = line[k];
                if ((a.ordinate <= y) == (b.ordinate <= y))
                    continue;
                const double t = (y - a.ordinate) / (static_cast<double>(b.ordinate) - a.ordinate);
                crossings.push_back(a.longitude + t * (b.longitude - a.longitude));
            }
        }
        std::ranges::sort(crossings);
        for (std::size_t k = 0; k + 1 < crossings.size(); k += 2) {
            // The middle of the height counts for more than a slightly wider place near its end.
            const double worth = (crossings[k + 1] - crossings[k]) * (1 - std::abs(share - 0.5));
            if (worth > bestWorth) {
                bestWorth = worth;
                best = {(crossings[k] + crossings[k + 1]) / 2, y};
            }
        }
    }
    return {static_cast<float>(best.x), static_cast<float>(best.y)};
}

std::optional<Point> CellGeometry::anchor(std::size_t feature) const
{
    const Shape& s = m_shapes[feature];
    if (s.left > s.right)
        return std::nullopt;
    return Point{s.anchor.longitude, s.anchor.ordinate};
}

std::span<const CellGeometry::Sounding> CellGeometry::soundings(std::size_t feature) const
{
    const Shape& shape = m_shapes[feature];
    return std::span(m_soundings).subspan(shape.firstSounding, shape.soundingCount);
}

void CellGeometry::buildDrawingOrder()
{
    const auto& features = m_cell->s57Features();
    std::vector<std::uint32_t> order(features.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return layerOf(*features[i]); });
    m_drawingRank.resize(order.size());
    for (std::uint32_t rank = 0; rank < order.size(); ++rank)
        m_drawingRank[order[rank]] = rank;
}

std::span<const CellGeometry::Use> CellGeometry::uses(std::size_t feature) const
{
    const Shape& shape = m_shapes[feature];
    return std::span(m_uses).subspan(shape.firstUse, shape.useCount);
}

Rect CellGeometry::bounds(std::size_t feature) const
{
    const Shape& s = m_shapes[feature];
    return s.left > s.right ? Rect() : Rect{s.left, s.bottom, s.right, s.top};
}

std::vector<std::uint32_t> CellGeometry::featuresIn(const Rect& box) const
{
    std::vector<std::uint32_t> found;
    const TreeBox wanted({static_cast<float>(box.left), static_cast<float>(box.bottom)},
                         {static_cast<float>(box.right), static_cast<float>(box.top)});
    m_index->tree.query(bg::index::intersects(wanted),
                        boost::make_function_output_iterator(
                            [&](const TreeEntry& entry) { found.push_back(entry.second); }));
    std::ranges::sort(found, {}, [&](std::uint32_t i) { return m_drawingRank[i]; });
    return found;
}

} // namespace kelvox
