#include "demo/DemoShapes.h"

#include "demo/DemoGround.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
Point unit(Point from, Point to)
{
    const Point d = to - from;
    const double length = std::sqrt(d.x * d.x + d.y * d.y);
    return {d.x / length, d.y / length};
}

/// Unit vectors all around, by turning the first one: no trigonometry, the same everywhere.
std::vector<Point> directions(int count, double cosine, double sine)
{
    std::vector<Point> all{{1, 0}};
    for (int i = 1; i < count; ++i) {
        const Point last = all.back();
        all.push_back({last.x * cosine - last.y * sine, last.x * sine + last.y * cosine});
    }
    return all;
}

/// A side of a box: what lies beyond it, and where a line meets it.
struct Side {
    bool vertical;
    double at;
    double inward; ///< +1 where greater ordinates are inside

    [[nodiscard]] double inside(Point p) const { return ((vertical ? p.x : p.y) - at) * inward; }
    [[nodiscard]] Point meet(Point a, Point b) const
    {
        if (vertical)
            return {at, a.y + (b.y - a.y) * ((at - a.x) / (b.x - a.x))};
        return {a.x + (b.x - a.x) * ((at - a.y) / (b.y - a.y)), at};
    }
};

std::array<Side, 4> sidesOf(const Rect& box)
{
    return {
        {{true, box.left, 1}, {true, box.right, -1}, {false, box.bottom, 1}, {false, box.top, -1}}};
}
} // namespace

DemoLine beside(const DemoLine& line, double distance)
{
    DemoLine moved;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const Point before = i > 0 ? unit(line[i - 1], line[i]) : unit(line[i], line[i + 1]);
        const Point after = i + 1 < line.size() ? unit(line[i], line[i + 1]) : before;
        const double share = distance / (1 + before.x * after.x + before.y * after.y);
        moved.push_back(line[i]
                        + Point{-(before.y + after.y) * share, (before.x + after.x) * share});
    }
    return moved;
}

DemoLine ribbon(const DemoLine& line, double halfWidth)
{
    DemoLine ring = beside(line, -halfWidth);
    const DemoLine left = beside(line, halfWidth);
    ring.insert(ring.end(), left.rbegin(), left.rend());
    return ring;
}

DemoLine circle(Point center, double radius)
{
    DemoLine ring;
    for (const Point d : directions(36, 0.984807753012208, 0.17364817766693))
        ring.push_back(center + d * radius);
    return ring;
}

DemoLine blob(Point center, double radius, unsigned seed)
{
    DemoLine ring;
    int index = 0;
    // Turns of 5 degrees; radii from three rough waves that close.
    for (const Point d : directions(72, 0.996194698091746, 0.0871557427476582)) {
        double wobble = 0;
        for (const int waves : {4, 9, 24}) {
            const double at = index * waves / 72.0;
            const int left = static_cast<int>(at);
            const double t = at - left;
            const double a = demoRandom(left % waves, waves, seed);
            const double b = demoRandom((left + 1) % waves, waves, seed);
            wobble += (a + (b - a) * t * t * (3 - 2 * t) - 0.5) * 3.4 / waves;
        }
        ring.push_back(center + d * (radius * (1 + wobble)));
        ++index;
    }
    return ring;
}

DemoLine box(const Rect& rect)
{
    return {{rect.left, rect.bottom},
            {rect.right, rect.bottom},
            {rect.right, rect.top},
            {rect.left, rect.top}};
}

bool isInsideRing(const DemoLine& ring, Point p)
{
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++)
        if ((ring[i].y > p.y) != (ring[j].y > p.y)
            && p.x
                < (ring[j].x - ring[i].x) * (p.y - ring[i].y) / (ring[j].y - ring[i].y) + ring[i].x)
            inside = !inside;
    return inside;
}

std::vector<DemoLine> clippedLine(const DemoLine& line, const Rect& box)
{
    std::vector<DemoLine> pieces;
    bool open = false;
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        Point a = line[i];
        Point b = line[i + 1];
        bool visible = true;
        for (const Side& side : sidesOf(box)) {
            const bool inA = side.inside(a) >= 0;
            const bool inB = side.inside(b) >= 0;
            visible = visible && (inA || inB);
            if (visible && inA != inB)
                (inA ? b : a) = side.meet(line[i], line[i + 1]);
        }
        if (!visible || a == b) {
            open = false;
            continue;
        }
        if (!open || pieces.back().back() != a)
            pieces.push_back({a});
        pieces.back().push_back(b);
        open = b == line[i + 1];
    }
    return pieces;
}

DemoLine clippedRing(const DemoLine& ring, const Rect& box)
{
    DemoLine rest = ring;
    for (const Side& side : sidesOf(box)) {
        DemoLine next;
        for (std::size_t i = 0; i < rest.size(); ++i) {
            const Point a = rest[i];
            const Point b = rest[(i + 1) % rest.size()];
            const bool inA = side.inside(a) >= 0;
            const bool inB = side.inside(b) >= 0;
            if (inA)
                next.push_back(a);
            if (inA != inB) {
                // The same end first on both sides of a shared border.
                const bool swap = a.x > b.x || (a.x == b.x && a.y > b.y);
                next.push_back(swap ? side.meet(b, a) : side.meet(a, b));
            }
        }
        rest = std::move(next);
    }
    rest.erase(std::unique(rest.begin(), rest.end()), rest.end());
    while (rest.size() > 1 && rest.front() == rest.back())
        rest.pop_back();
    return rest.size() < 3 ? DemoLine{} : rest;
}

} // namespace kelvox
