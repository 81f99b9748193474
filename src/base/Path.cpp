#include "base/Path.h"

#include <cmath>

namespace kelvox {

namespace {
/// Above zero when p lies to the left of the line from a to b.
double sideOf(Point a, Point b, Point p)
{
    return (b.x - a.x) * (p.y - a.y) - (p.x - a.x) * (b.y - a.y);
}

double segmentDistance(Point a, Point b, Point p)
{
    const Point along = b - a;
    const double lengthSquared = along.x * along.x + along.y * along.y;
    double t = 0;
    if (lengthSquared > 0)
        t = std::clamp(((p.x - a.x) * along.x + (p.y - a.y) * along.y) / lengthSquared, 0.0, 1.0);
    return std::hypot(p.x - a.x - t * along.x, p.y - a.y - t * along.y);
}
} // namespace

void Path::moveTo(Point p)
{
    if (!m_starts.empty() && m_starts.back() + 1 == m_points.size()) {
        m_points.back() = p;
        return;
    }
    m_starts.push_back(static_cast<std::uint32_t>(m_points.size()));
    m_points.push_back(p);
}

void Path::lineTo(Point p)
{
    if (m_points.empty())
        m_starts.push_back(0);
    m_points.push_back(p);
}

void Path::appendRing(std::span<const Point> ring)
{
    if (ring.size() < 3)
        return;
    moveTo(ring.front());
    m_points.insert(m_points.end(), ring.begin() + 1, ring.end());
}

void Path::clear()
{
    m_points.clear();
    m_starts.clear();
}

std::span<const Point> Path::subPath(std::size_t index) const
{
    const std::size_t begin = m_starts[index];
    const std::size_t end = index + 1 < m_starts.size() ? m_starts[index + 1] : m_points.size();
    return std::span(m_points).subspan(begin, end - begin);
}

Rect Path::bounds() const
{
    Rect box;
    for (const Point p : m_points)
        box.include(p);
    return box;
}

Path Path::scaled(double factor) const
{
    Path result = *this;
    for (Point& p : result.m_points)
        p = p * factor;
    return result;
}

Path Path::translated(Point offset) const
{
    Path result = *this;
    for (Point& p : result.m_points)
        p = p + offset;
    return result;
}

bool Path::contains(Point p, FillRule rule) const
{
    int winding = 0;
    int crossings = 0;
    for (std::size_t i = 0; i < subPathCount(); ++i) {
        const auto ring = subPath(i);
        Point a = ring.back();
        for (const Point b : ring) {
            // Half-open in y, so that a vertex on the ray counts for one of its two edges only.
            if (a.y <= p.y && b.y > p.y && sideOf(a, b, p) > 0) {
                ++winding;
                ++crossings;
            } else if (b.y <= p.y && a.y > p.y && sideOf(a, b, p) < 0) {
                --winding;
                ++crossings;
            }
            a = b;
        }
    }
    return rule == FillRule::NonZero ? winding != 0 : crossings % 2 != 0;
}

double Path::distanceTo(Point p) const
{
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < subPathCount(); ++i) {
        const auto line = subPath(i);
        Point a = line.front();
        for (const Point b : line) {
            best = std::min(best, segmentDistance(a, b, p));
            a = b;
        }
    }
    return best;
}

} // namespace kelvox
