#include "library/CoverageSweep.h"

#include <algorithm>

namespace kelvox {

CoverageSweep::CoverageSweep(const Rect& area)
    : m_area(area)
{
    for (int i = 0; i < lineCount; ++i) {
        // Never on a round number, where the borders of charts lie.
        const double share = (i + 0.4871) / lineCount;
        m_alongX.push_back(
            {m_area.bottom + share * m_area.height(), {{m_area.left, m_area.right}}});
        m_alongY.push_back({m_area.left + share * m_area.width(), {{m_area.bottom, m_area.top}}});
    }
}

std::vector<CoverageSweep::Interval>
CoverageSweep::crossings(const std::vector<std::vector<Point>>& rings, double shift,
                         Direction direction, double at) const
{
    std::vector<double> places;
    for (const auto& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            Point a = ring[i];
            Point b = ring[(i + 1) % ring.size()];
            a.x += shift;
            b.x += shift;
            if (direction == Direction::AlongY) {
                std::swap(a.x, a.y);
                std::swap(b.x, b.y);
            }
            if ((a.y > at) != (b.y > at))
                places.push_back(a.x + (at - a.y) / (b.y - a.y) * (b.x - a.x));
        }
    }
    std::sort(places.begin(), places.end());
    std::vector<Interval> inside;
    for (std::size_t i = 0; i + 1 < places.size(); i += 2)
        inside.push_back({places[i], places[i + 1]});
    return inside;
}

bool CoverageSweep::wouldAdd(const std::vector<std::vector<Point>>& rings, double shift) const
{
    for (const auto direction : {Direction::AlongX, Direction::AlongY}) {
        const double least = side(direction) * slack;
        for (const Line& line : direction == Direction::AlongX ? m_alongX : m_alongY) {
            if (line.open.empty())
                continue;
            for (const Interval& inside : crossings(rings, shift, direction, line.at))
                for (const Interval& open : line.open)
                    if (std::min(open.to, inside.to) - std::max(open.from, inside.from) > least)
                        return true;
        }
    }
    return false;
}

void CoverageSweep::add(const std::vector<std::vector<Point>>& rings, double shift)
{
    for (const auto direction : {Direction::AlongX, Direction::AlongY}) {
        const double least = side(direction) * slack;
        for (Line& line : direction == Direction::AlongX ? m_alongX : m_alongY) {
            if (line.open.empty())
                continue;
            for (const Interval& inside : crossings(rings, shift, direction, line.at)) {
                std::vector<Interval> left;
                const auto keep = [&](double from, double to) {
                    if (to - from > least)
                        left.push_back({from, to});
                };
                for (const Interval& open : line.open) {
                    if (inside.to <= open.from || inside.from >= open.to) {
                        left.push_back(open);
                        continue;
                    }
                    keep(open.from, inside.from);
                    keep(inside.to, open.to);
                }
                line.open = std::move(left);
            }
        }
    }
}

bool CoverageSweep::isFull() const
{
    const auto isClosed = [](const Line& line) { return line.open.empty(); };
    return std::all_of(m_alongX.begin(), m_alongX.end(), isClosed)
        && std::all_of(m_alongY.begin(), m_alongY.end(), isClosed);
}

double CoverageSweep::share() const
{
    double open = 0;
    for (const Line& line : m_alongX)
        for (const Interval& interval : line.open)
            open += interval.to - interval.from;
    return 1 - open / (m_area.width() * lineCount);
}

} // namespace kelvox
