#include "preslib/Outline.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox::preslib {

namespace {
double length(Point p)
{
    return std::hypot(p.x, p.y);
}

Point unit(Point p)
{
    const double size = length(p);
    return size > 0 ? p * (1 / size) : Point{};
}

double lengthOf(const Polyline& line)
{
    double sum = 0;
    for (std::size_t i = 1; i < line.size(); ++i)
        sum += length(line[i] - line[i - 1]);
    return sum;
}

/// The part of a line between two distances from its start.
Polyline between(const Polyline& line, double from, double to)
{
    Polyline result;
    double passed = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const double step = length(line[i] - line[i - 1]);
        const auto at = [&](double distance) {
            return line[i - 1] + (line[i] - line[i - 1]) * ((distance - passed) / step);
        };
        if (step > 0 && passed + step > from && passed < to) {
            if (result.empty())
                result.push_back(at(std::max(from, passed)));
            result.push_back(at(std::min(to, passed + step)));
        }
        passed += step;
    }
    return result;
}

/// The Bezier handle that leaves a knot towards its neighbour; a corner leans on the other handle.
struct Handles {
    Point first;
    Point second;
};

Handles handles(const Knot& before, const Knot& a, const Knot& b, const Knot& after)
{
    const double third = length(b.point - a.point) / 3;
    Handles result;
    if (a.smooth)
        result.first = a.point + unit(b.point - before.point) * third;
    if (b.smooth)
        result.second = b.point - unit(after.point - a.point) * third;
    if (!a.smooth)
        result.first = (a.point + result.second) * 0.5;
    if (!b.smooth)
        result.second = (b.point + result.first) * 0.5;
    return result;
}
} // namespace

Polyline outline(const std::vector<Knot>& knots, bool closed)
{
    constexpr int pieces = 8;
    Polyline result;
    const std::size_t count = knots.size();
    if (count == 0)
        return result;
    const auto knot = [&](std::size_t index, int step) -> const Knot& {
        if (closed)
            return knots[(index + count + step) % count];
        const auto moved = static_cast<std::ptrdiff_t>(index) + step;
        return knots[std::clamp<std::ptrdiff_t>(moved, 0, static_cast<std::ptrdiff_t>(count) - 1)];
    };
    result.push_back(knots[0].point);
    for (std::size_t i = 0; i + (closed ? 0 : 1) < count; ++i) {
        const Knot& a = knots[i];
        const Knot& b = knot(i, 1);
        if (a.smooth || b.smooth) {
            const Handles h = handles(knot(i, -1), a, b, knot(i, 2));
            for (int k = 1; k < pieces; ++k) {
                const double t = static_cast<double>(k) / pieces;
                const double u = 1 - t;
                result.push_back(a.point * (u * u * u) + h.first * (3 * u * u * t)
                                 + h.second * (3 * u * t * t) + b.point * (t * t * t));
            }
        }
        result.push_back(b.point);
    }
    return result;
}

Polyline arc(Point center, double radiusX, double radiusY, double from, double to)
{
    const double degree = std::numbers::pi / 180;
    const int pieces = std::max(2, static_cast<int>(std::ceil(std::fabs(to - from) / 12)));
    Polyline result;
    for (int i = 0; i <= pieces; ++i) {
        const double angle = (from + (to - from) * i / pieces) * degree;
        result.push_back(center + Point{radiusX * std::sin(angle), -radiusY * std::cos(angle)});
    }
    return result;
}

Polyline ellipse(Point center, double radiusX, double radiusY)
{
    return arc(center, radiusX, radiusY, 0, 360);
}

Polyline band(const Polyline& line, double width)
{
    if (line.size() < 2)
        return {};
    Polyline left;
    Polyline right;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const Point in = unit(line[i] - line[i == 0 ? 0 : i - 1]);
        const Point out = unit(line[i + 1 == line.size() ? i : i + 1] - line[i]);
        const Point along = unit(in + out);
        const Point across{-along.y, along.x};
        const Point either = length(in) > 0 ? in : out;
        // A sharp corner is not drawn out further than twice the half width.
        const double stretch =
            1 / std::max(0.5, std::fabs(along.x * either.x + along.y * either.y));
        left.push_back(line[i] + across * (width / 2 * stretch));
        right.push_back(line[i] - across * (width / 2 * stretch));
    }
    left.insert(left.end(), right.rbegin(), right.rend());
    left.push_back(left.front());
    return left;
}

std::vector<Polyline> dots(const Polyline& line, double spacing, double radius)
{
    std::vector<Polyline> result;
    if (line.size() < 2)
        return result;
    const double whole = lengthOf(line);
    const bool closed = length(line.front() - line.back()) < 1;
    const int gaps = std::max(1, static_cast<int>(std::lround(whole / spacing)));
    for (int i = 0; i < gaps + (closed ? 0 : 1); ++i) {
        const double distance = whole * i / gaps;
        const Polyline here = between(line, distance, std::min(distance + 1e-6, whole));
        const Point center = here.empty() ? line.back() : here.front();
        Polyline dot;
        for (int side = 0; side <= 8; ++side) {
            const double angle = (side % 8) * std::numbers::pi / 4;
            dot.push_back(center + Point{std::cos(angle), std::sin(angle)} * radius);
        }
        result.push_back(std::move(dot));
    }
    return result;
}

std::vector<Polyline> dashes(const Polyline& line, double on, double off)
{
    std::vector<Polyline> result;
    if (line.size() < 2)
        return result;
    const double whole = lengthOf(line);
    const bool closed = length(line.front() - line.back()) < 1;
    const double tail = closed ? 0 : off; // an open line ends without its last gap
    const int count = std::max(1, static_cast<int>(std::lround((whole + tail) / (on + off))));
    const double step = (whole + tail) / count;
    for (int i = 0; i < count; ++i) {
        Polyline piece = between(line, i * step, std::min(whole, i * step + on));
        if (piece.size() >= 2)
            result.push_back(std::move(piece));
    }
    return result;
}

double signedArea(const Polyline& ring)
{
    double sum = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point a = ring[i];
        const Point b = ring[(i + 1) % ring.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum;
}

} // namespace kelvox::preslib
