#pragma once

#include "library/ChartRecord.h"

#include <vector>

namespace kelvox {

/// Which parts of a rectangle are covered so far.
///
/// The rectangle is crossed by lines in both directions; on each line the covered intervals are
/// exact. What is overlooked is smaller than the gap between lines both ways, and charts that share
/// a border leave no hole between them.
class CoverageSweep {
public:
    /// @param area degrees; right may be above 180
    explicit CoverageSweep(const Rect& area);

    /// Whether the rings cover anything that is still open.
    /// @param shift degrees of longitude by which the rings are moved, e.g. 360
    [[nodiscard]] bool wouldAdd(const std::vector<std::vector<Point>>& rings, double shift) const;
    void add(const std::vector<std::vector<Point>>& rings, double shift);
    [[nodiscard]] bool isFull() const;
    /// Share of the rectangle that is covered, 0 to 1.
    [[nodiscard]] double share() const;

private:
    struct Interval {
        double from = 0;
        double to = 0;
    };
    /// One line: its open intervals, in order.
    struct Line {
        double at = 0;
        std::vector<Interval> open;
    };
    enum class Direction { AlongX, AlongY };
    static constexpr int lineCount = 48; ///< each way
    /// Openings narrower than this share of the side are none: outlines are simplified.
    static constexpr double slack = 1.0 / 500;

    [[nodiscard]] std::vector<Interval> crossings(const std::vector<std::vector<Point>>& rings,
                                                  double shift, Direction direction,
                                                  double at) const;
    [[nodiscard]] double side(Direction direction) const
    {
        return direction == Direction::AlongX ? m_area.width() : m_area.height();
    }

    Rect m_area;
    std::vector<Line> m_alongX; ///< of one latitude each
    std::vector<Line> m_alongY;
};

} // namespace kelvox
