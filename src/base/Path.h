#pragma once

#include "base/Rect.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvox {

enum class FillRule { EvenOdd, NonZero };

/// A flat path of straight lines: one array of points and the index at which each sub-path starts.
///
/// 16 bytes a vertex. Arcs are flattened by whoever builds the path. Any plane, any unit.
class Path {
public:
    /// Begins a new sub-path at p. Two moves in a row leave the last one only.
    void moveTo(Point p);
    /// Continues the sub-path; on an empty path it begins one.
    void lineTo(Point p);
    /// Adds the points as a sub-path of its own; fewer than three are none.
    void appendRing(std::span<const Point> ring);
    void clear();
    void reserve(std::size_t points) { m_points.reserve(points); }

    [[nodiscard]] bool isEmpty() const { return m_points.empty(); }
    [[nodiscard]] std::size_t pointCount() const { return m_points.size(); }
    [[nodiscard]] std::size_t subPathCount() const { return m_starts.size(); }
    [[nodiscard]] std::span<const Point> points() const { return m_points; }
    [[nodiscard]] std::span<const Point> subPath(std::size_t index) const;
    /// The last point added; the origin for an empty path.
    [[nodiscard]] Point currentPoint() const { return isEmpty() ? Point{} : m_points.back(); }

    [[nodiscard]] Rect bounds() const; ///< empty for an empty path
    [[nodiscard]] Path scaled(double factor) const; ///< about the origin
    [[nodiscard]] Path translated(Point offset) const;

    /// Crossing test over all sub-paths, each closed by its chord. Points on an edge may fall
    /// either side, but two areas that share an edge never both hold such a point nor both miss it.
    [[nodiscard]] bool contains(Point p, FillRule rule = FillRule::EvenOdd) const;
    /// Smallest distance from p to any segment (sub-paths are not closed); infinity when empty.
    [[nodiscard]] double distanceTo(Point p) const;

    friend bool operator==(const Path&, const Path&) = default;

private:
    std::vector<Point> m_points;
    std::vector<std::uint32_t> m_starts;
};

} // namespace kelvox
