#include "painting/LineFiller.h"

#include "painting/Pixels.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace kelvox {

namespace {
/// A half-plane: its distance is above zero on the side that is kept.
struct Divide {
    float x = 0;
    float y = 0;
    float offset = 0;

    [[nodiscard]] float at(float px, float py) const { return x * px + y * py + offset; }
};

Divide through(Point p, Point direction)
{
    return {static_cast<float>(direction.x), static_cast<float>(direction.y),
            static_cast<float>(-direction.x * p.x - direction.y * p.y)};
}

struct Segment {
    Point a;
    Point b;
    Point along; ///< unit vector from a to b
    float length = 0;
    Divide from; ///< where it begins, and whether that is the line's end or a corner
    Divide to;
    bool opens = false;
    bool closes = false;
};

Point direction(Point a, Point b)
{
    const Point step = b - a;
    return step * (1 / std::sqrt(step.x * step.x + step.y * step.y));
}

/// Where two segments divide the pixels of their corner: at the bisector, or square to the second
/// where the line turns back on itself.
Point divideOf(Point before, Point after)
{
    const Point middle = before + after;
    return middle.x * middle.x + middle.y * middle.y < 1e-6 ? after : middle;
}

/// The segment that ends at a point of a line without points on top of each other.
Segment segmentOf(std::span<const Point> line, std::size_t end, Point origin)
{
    Segment s;
    s.a = line[end - 1] - origin;
    s.b = line[end] - origin;
    s.along = direction(s.a, s.b);
    const Point step = s.b - s.a;
    s.length = static_cast<float>(std::sqrt(step.x * step.x + step.y * step.y));
    s.opens = end == 1;
    s.closes = end + 1 == line.size();
    s.from = through(
        s.a, s.opens ? s.along : divideOf(direction(line[end - 2], line[end - 1]), s.along));
    s.to = through(
        s.b, (s.closes ? s.along : divideOf(s.along, direction(line[end], line[end + 1]))) * -1);
    return s;
}

/// The first pixel whose middle is not before a place, limited to a row or column of pixels.
int middleAt(double place, int limit)
{
    const double wanted = std::clamp(place - 0.5, 0.0, static_cast<double>(limit));
    const int whole = static_cast<int>(wanted);
    return whole + (wanted > whole ? 1 : 0);
}

/// A line of one pixel: in each column (or row, of a steep one) whose middle it crosses, two pixels
/// share it. Each column belongs to one segment of a line, so that corners are not drawn twice.
class Hairline {
public:
    Hairline(const PixelBuffer& buffer, DisplayColor color)
        : m_buffer(buffer)
        , m_source(premultiplied(color))
    {
    }

    void draw(Point a, Point b) const
    {
        const bool isSteep = std::abs(b.y - a.y) > std::abs(b.x - a.x);
        // From here on u runs along the line's greater extent and v across it.
        const double u0 = isSteep ? a.y : a.x;
        const double v0 = isSteep ? a.x : a.y;
        const double u1 = isSteep ? b.y : b.x;
        const double v1 = isSteep ? b.x : b.y;
        if (u0 == u1)
            return;
        const int uLimit = isSteep ? m_buffer.height : m_buffer.width;
        const int vLimit = isSteep ? m_buffer.width : m_buffer.height;
        const double slope = (v1 - v0) / (u1 - u0);
        int from = middleAt(std::min(u0, u1), uLimit);
        int to = middleAt(std::max(u0, u1), uLimit);
        if (from >= to)
            return;
        // Only where one of the two pixels lies in the buffer.
        if (slope != 0 && (std::min(v0, v1) < 0 || std::max(v0, v1) > vLimit)) {
            const double enters = u0 + ((slope > 0 ? -0.5 : vLimit + 0.5) - v0) / slope;
            const double leaves = u0 + ((slope > 0 ? vLimit + 0.5 : -0.5) - v0) / slope;
            from = std::max(from, middleAt(enters, uLimit));
            to = std::min(to, middleAt(leaves, uLimit));
        }
        if (from >= to)
            return;
        // Counted from the segment's own start, in whole numbers, so that bands agree.
        constexpr double one = 0x1p32;
        const double start = std::ceil(std::min(u0, u1) - 0.5);
        const auto step = static_cast<std::int64_t>(slope * one);
        const auto begin =
            static_cast<std::int64_t>(std::floor((v0 + (start + 0.5 - u0) * slope - 0.5) * one));
        auto v = begin + step * (from - static_cast<std::int64_t>(start));
        const std::ptrdiff_t along = isSteep ? m_buffer.stride : 1;
        const std::ptrdiff_t across = isSteep ? 1 : m_buffer.stride;
        std::uint32_t* at = m_buffer.pixels + from * along;
        if (m_source >> 24U == 255U)
            walk(from, to, v, step, vLimit, at, along, across, mixed);
        else
            walk(from, to, v, step, vLimit, at, along, across,
                 [](std::uint32_t below, std::uint32_t source, unsigned share) {
                     return over(below, source, share);
                 });
    }

private:
    template <typename Blend>
    void walk(int from, int to, std::int64_t v, std::int64_t step, int vLimit, std::uint32_t* at,
              std::ptrdiff_t along, std::ptrdiff_t across, Blend blend) const
    {
        for (int u = from; u < to; ++u, at += along, v += step) {
            const auto first = static_cast<std::ptrdiff_t>(v >> 32);
            const auto second = static_cast<unsigned>(v >> 24 & 0xFF);
            std::uint32_t* pixel = at + first * across;
            if (first >= 0 && first < vLimit)
                *pixel = blend(*pixel, m_source, 256U - second);
            if (second != 0 && first >= -1 && first + 1 < vLimit)
                pixel[across] = blend(pixel[across], m_source, second);
        }
    }

    PixelBuffer m_buffer;
    std::uint32_t m_source;
};

class Pen {
public:
    Pen(const PixelBuffer& buffer, double width, DisplayColor color)
        : m_buffer(buffer)
        , m_source(premultiplied(color))
        , m_reach(static_cast<float>(std::max(width, 1.0) / 2 + 0.5))
    {
    }

    void draw(const Segment& s) const
    {
        const double reach = m_reach;
        const double height = m_buffer.height;
        const int first = static_cast<int>(
            std::clamp(std::ceil(std::min(s.a.y, s.b.y) - reach - 0.5), 0.0, height));
        const int end = static_cast<int>(
            std::clamp(std::floor(std::max(s.a.y, s.b.y) + reach - 0.5) + 1, 0.0, height));
        const double left = std::min(s.a.x, s.b.x) - reach;
        const double right = std::max(s.a.x, s.b.x) + reach;
        const bool isFlat = std::abs(s.along.y) < 1e-6;
        const double across = isFlat ? 0 : reach / std::abs(s.along.y);
        const double slope = isFlat ? 0 : s.along.x / s.along.y;
        for (int row = first; row < end; ++row) {
            double x0 = left;
            double x1 = right;
            if (!isFlat) {
                const double middle = s.a.x + (row + 0.5 - s.a.y) * slope;
                x0 = std::max(x0, middle - across);
                x1 = std::min(x1, middle + across);
            }
            const double width = m_buffer.width;
            const int from = static_cast<int>(std::clamp(std::ceil(x0 - 0.5), 0.0, width));
            const int to = static_cast<int>(std::clamp(std::floor(x1 - 0.5) + 1, 0.0, width));
            if (from < to)
                drawRow(s, row, from, to);
        }
    }

private:
    void drawRow(const Segment& s, int row, int from, int to) const
    {
        std::uint32_t* pixels =
            m_buffer.pixels + static_cast<std::ptrdiff_t>(row) * m_buffer.stride;
        const float py = static_cast<float>(row) + 0.5F;
        const auto ux = static_cast<float>(s.along.x);
        const auto uy = static_cast<float>(s.along.y);
        const auto dy = static_cast<float>(row + 0.5 - s.a.y);
        for (int x = from; x < to; ++x) {
            const float px = static_cast<float>(x) + 0.5F;
            const float begins = s.from.at(px, py);
            const float ends = s.to.at(px, py);
            const auto dx = static_cast<float>(x + 0.5 - s.a.x);
            const float t = dx * ux + dy * uy;
            float away = std::abs(dx * uy - dy * ux);
            float coverage = 1;
            if (s.opens)
                coverage = std::min(begins + 0.5F, 1.0F);
            else if (begins < 0)
                continue;
            else if (t < 0)
                away = std::sqrt(away * away + t * t);
            if (s.closes)
                coverage = std::min({coverage, ends + 0.5F, coverage + ends - 0.5F});
            else if (ends <= 0)
                continue;
            else if (t > s.length)
                away = std::sqrt(away * away + (t - s.length) * (t - s.length));
            coverage = std::min(coverage, 1.0F) * std::min(m_reach - away, 1.0F);
            if (away < m_reach && coverage > 0)
                pixels[x] = over(pixels[x], m_source, static_cast<unsigned>(coverage * 256.0F));
        }
    }

    PixelBuffer m_buffer;
    std::uint32_t m_source;
    float m_reach;
};
} // namespace

void LineFiller::stroke(const PixelBuffer& buffer, const Path& lines, double width,
                        DisplayColor color, int top)
{
    const double reach = std::max(width, 1.0) / 2 + 0.5;
    const double low = top - reach;
    const double high = top + buffer.height + reach;
    const Point origin{0, static_cast<double>(top)};
    const auto isInRows = [&](Point a, Point b) {
        return std::max(a.y, b.y) >= low && std::min(a.y, b.y) <= high;
    };
    if (width <= 1) {
        const Hairline hairline(buffer, color);
        for (std::size_t i = 0; i < lines.subPathCount(); ++i) {
            const auto line = lines.subPath(i);
            for (std::size_t k = 1; k < line.size(); ++k)
                if (isInRows(line[k - 1], line[k]))
                    hairline.draw(line[k - 1] - origin, line[k] - origin);
        }
        return;
    }
    const Pen pen(buffer, width, color);
    std::vector<Point> points;
    for (std::size_t i = 0; i < lines.subPathCount(); ++i) {
        // Points on top of each other have no direction.
        points.clear();
        for (const Point p : lines.subPath(i)) {
            const Point step = points.empty() ? Point{1, 1} : p - points.back();
            if (step.x * step.x + step.y * step.y > 1e-6)
                points.push_back(p);
        }
        for (std::size_t k = 1; k < points.size(); ++k)
            if (isInRows(points[k - 1], points[k]))
                pen.draw(segmentOf(points, k, origin));
    }
}

} // namespace kelvox
