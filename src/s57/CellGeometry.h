#pragma once

#include "base/Rect.h"
#include "s57/S57ChartItems.h"

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace kelvox {

/// The line work of one cell, laid out for drawing: flat arrays that any thread may read.
///
/// Places are longitude in degrees and Mercator ordinate (S57Controller::mercatorOrdinate), both in
/// single precision, so that the step to view points is one affine transform. Each edge stands
/// once, its end nodes included, however many features share it.
///
/// Every vertex carries the detail from which on it matters: its distance from the line that is
/// left when it and all finer ones are gone (Douglas and Peucker, 1973). Simplifying an edge on its
/// own, between fixed ends, keeps neighbouring areas without gap or overlap at every scale.
class CellGeometry {
public:
    /// Keeps the cell alive; nothing in it may change any more.
    explicit CellGeometry(std::shared_ptr<const S57ChartItems> cell);
    ~CellGeometry();
    CellGeometry(const CellGeometry&) = delete;
    CellGeometry& operator=(const CellGeometry&) = delete;

    struct Vertex {
        float longitude = 0;
        float ordinate = 0;
    };
    struct Edge {
        std::uint32_t first = 0; ///< its vertices, from the start node to the end node
        std::uint32_t count = 0;
        bool hasStart = false; ///< whether the first vertex is the start node
        bool hasEnd = false;
    };
    /// One edge as a feature runs along it.
    struct Use {
        std::uint32_t edge = 0;
        bool reversed = false;
        bool startsRing = false; ///< whether a new sub-path may begin here
    };

    [[nodiscard]] const S57ChartItems& cell() const { return *m_cell; }
    [[nodiscard]] std::size_t vertexCount() const { return m_vertices.size(); }
    [[nodiscard]] std::span<const Vertex> vertices(const Edge& edge) const
    {
        return std::span(m_vertices).subspan(edge.first, edge.count);
    }
    [[nodiscard]] std::span<const std::uint8_t> details(const Edge& edge) const
    {
        return std::span(m_details).subspan(edge.first, edge.count);
    }
    [[nodiscard]] const Edge& edge(const Use& use) const { return m_edges[use.edge]; }

    /// The edges of the feature at a place of the cell's feature list. A feature that runs along
    /// more vertices than twice all that the cell has is cut short there.
    [[nodiscard]] std::span<const Use> uses(std::size_t feature) const;
    /// x longitude in degrees, y ordinate; empty for a feature without a place.
    [[nodiscard]] Rect bounds(std::size_t feature) const;
    [[nodiscard]] Rect bounds() const { return m_bounds; }
    /// Where a feature's symbol and name stand, whatever the view: the point itself, the middle of
    /// a line, a place well inside an area. x longitude, y ordinate; nothing without a place.
    [[nodiscard]] std::optional<Point> anchor(std::size_t feature) const;

    struct Sounding {
        float longitude = 0;
        float ordinate = 0;
        float depth = 0; ///< metres, negative where it dries
        /// The detail code from which on it is left out: the shoalest of each neighbourhood stays
        /// longest.
        std::uint8_t detail = 0;
    };
    /// The soundings of a feature with one isolated node that holds depths.
    [[nodiscard]] std::span<const Sounding> soundings(std::size_t feature) const;

    /// The features whose bounds meet the box, in drawing order: coverage, the skin of the earth,
    /// other areas, lines, points; within each as the cell stores them. Stored order alone would
    /// let an area hide the buoys that stand before it in the file.
    [[nodiscard]] std::vector<std::uint32_t> featuresIn(const Rect& box) const;

    /// Vertices whose detail code is at least this matter at a tolerance in ordinate units
    /// (radians at the equator). Codes grow with the tolerance, eight to each doubling.
    [[nodiscard]] static std::uint8_t detailCode(float tolerance);

private:
    class Index;
    void addEdge(const S57Vector& vector);
    [[nodiscard]] Rect boundsOfNode(std::uint64_t recordKey);
    void addFeature(const S57Feature& feature);
    void addSoundings(const S57Feature& feature);
    void thinSoundings();
    [[nodiscard]] Vertex areaAnchor(std::size_t feature) const;
    [[nodiscard]] Vertex lineAnchor(std::size_t feature) const;
    void buildDrawingOrder();

    std::shared_ptr<const S57ChartItems> m_cell;
    std::vector<Vertex> m_vertices;
    std::vector<std::uint8_t> m_details;
    std::vector<Edge> m_edges;
    // Dropped after building.
    std::unordered_map<std::uint64_t, std::uint32_t> m_edgeByKey;
    std::unordered_map<std::uint64_t, Rect> m_nodeBounds;
    std::vector<Rect> m_edgeBounds; ///< beside m_edges
    std::vector<Use> m_uses;
    struct Shape {
        std::uint32_t firstUse = 0;
        std::uint32_t useCount = 0;
        std::uint32_t firstSounding = 0;
        std::uint32_t soundingCount = 0;
        float left = 0, bottom = 0, right = -1, top = -1; ///< empty
        Vertex anchor;
    };
    std::vector<Sounding> m_soundings;
    std::vector<Shape> m_shapes; ///< beside the cell's features
    std::vector<std::uint32_t> m_drawingRank; ///< of each feature
    std::unique_ptr<Index> m_index;
    // What a hostile cell may cost: a sound one draws an edge for a few features and a node of
    // soundings for one.
    std::size_t m_anchorBudget = 0; ///< vertices still to be looked at for anchors
    std::size_t m_soundingBudget = 0;
    Rect m_bounds;
};

} // namespace kelvox
