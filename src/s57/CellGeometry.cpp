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

namespace kelvox {

namespace bg = boost::geometry;

namespace {
using TreePoint = bg::model::point<float, 2, bg::cs::cartesian>;
using TreeBox = bg::model::box<TreePoint>;
using TreeEntry = std::pair<TreeBox, std::uint32_t>;
using Tree = bg::index::rtree<TreeEntry, bg::index::linear<16>>;

bool isFinite(CellGeometry::Vertex v)
{
    return std::isfinite(v.longitude) && std::isfinite(v.ordinate);
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
    for (const auto& vector : m_cell->s57Vectors())
        if (vector.recordName() == s57RecordName::edge)
            vertices += vector.s57Coordinates().size() + 2;
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
    if (!box.isEmpty()) {
        shape.left = static_cast<float>(box.left);
        shape.bottom = static_cast<float>(box.bottom);
        shape.right = static_cast<float>(box.right);
        shape.top = static_cast<float>(box.top);
    }
    m_shapes.push_back(shape);
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
