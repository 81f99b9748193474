#include "chartview/Clipping.h"

#include <algorithm>
#include <array>

namespace kelvox {

namespace {
struct HalfPlane {
    bool alongX;
    double limit;
    bool keepAbove;

    [[nodiscard]] bool keeps(Point p) const
    {
        const double value = alongX ? p.x : p.y;
        return keepAbove ? value >= limit : value <= limit;
    }
    [[nodiscard]] Point crossing(Point a, Point b) const
    {
        const double t = alongX ? (limit - a.x) / (b.x - a.x) : (limit - a.y) / (b.y - a.y);
        return alongX ? Point{limit, a.y + t * (b.y - a.y)} : Point{a.x + t * (b.x - a.x), limit};
    }
};

std::array<HalfPlane, 4> sidesOf(const Rect& box)
{
    return {HalfPlane{true, box.left, true}, HalfPlane{true, box.right, false},
            HalfPlane{false, box.bottom, true}, HalfPlane{false, box.top, false}};
}
} // namespace

bool clipSegment(const Rect& box, Point& a, Point& b)
{
    double enter = 0;
    double leave = 1;
    const Point d = b - a;
    const auto cut = [&](double step, double room) {
        if (step == 0)
            return room >= 0;
        const double t = room / step;
        if (step < 0)
            enter = std::max(enter, t);
        else
            leave = std::min(leave, t);
        return enter <= leave;
    };
    if (!cut(-d.x, a.x - box.left) || !cut(d.x, box.right - a.x) || !cut(-d.y, a.y - box.bottom)
        || !cut(d.y, box.top - a.y))
        return false;
    const Point start = a;
    if (leave < 1)
        b = start + d * leave;
    if (enter > 0)
        a = start + d * enter;
    return true;
}

void clipRing(const Rect& box, std::vector<Point>& ring, std::vector<Point>& scratch)
{
    for (const HalfPlane& side : sidesOf(box)) {
        scratch.clear();
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Point a = ring[i == 0 ? ring.size() - 1 : i - 1];
            const Point b = ring[i];
            if (side.keeps(a) != side.keeps(b))
                scratch.push_back(side.crossing(a, b));
            if (side.keeps(b))
                scratch.push_back(b);
        }
        ring.swap(scratch);
    }
}

} // namespace kelvox
