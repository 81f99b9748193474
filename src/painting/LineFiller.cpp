#include "painting/LineFiller.h"

#include "painting/Pixels.h"

#include <algorithm>
#include <cmath>

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
        std::uint32_t* pixels = m_buffer.pixels + static_cast<std::ptrdiff_t>(row) * m_buffer.stride;
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
                away = std::hypot(away, t);
            if (s.closes)
                coverage = std::min({coverage, ends + 0.5F, coverage + ends - 0.5F});
            else if (ends <= 0)
                continue;
            else if (t > s.length)
                away = std::hypot(away, t - s.length);
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
    const Pen pen(buffer, width, color);
    for (std::size_t i = 0; i < lines.subPathCount(); ++i) {
        const auto line = lines.subPath(i);
        Segment now;
        bool begun = false;
        Point last = line.front() - Point{0, static_cast<double>(top)};
        for (const Point next : line.subspan(1)) {
            const Point b = next - Point{0, static_cast<double>(top)};
            const double length = std::hypot(b.x - last.x, b.y - last.y);
            if (length < 1e-3)
                continue;
            Segment following;
            following.a = last;
            following.b = b;
            following.along = (b - last) * (1 / length);
            following.length = static_cast<float>(length);
            if (begun) {
                // The bisector; where the line turns back on itself, square to it.
                Point middle = now.along + following.along;
                if (std::hypot(middle.x, middle.y) < 1e-3)
                    middle = following.along;
                following.from = through(last, middle);
                now.to = through(last, middle * -1);
                pen.draw(now);
            } else {
                following.opens = true;
                following.from = through(last, following.along);
            }
            now = following;
            begun = true;
            last = b;
        }
        if (begun) {
            now.closes = true;
            now.to = through(now.b, now.along * -1);
            pen.draw(now);
        }
    }
}

} // namespace kelvox
