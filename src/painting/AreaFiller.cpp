#include "painting/AreaFiller.h"

#include "painting/Pixels.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
void blend(std::uint32_t* pixels, int count, std::uint32_t source)
{
    for (int i = 0; i < count; ++i)
        pixels[i] = over(pixels[i], source);
}

/// The rows whose centre line the segment crosses, limited to the buffer.
struct Rows {
    int first;
    int end;
};

Rows rowsCrossed(Point a, Point b, double top, int height)
{
    const double limit = height;
    const double low = std::clamp(std::ceil(std::min(a.y, b.y) - top - 0.5), 0.0, limit);
    const double high = std::clamp(std::ceil(std::max(a.y, b.y) - top - 0.5), 0.0, limit);
    return {static_cast<int>(low), static_cast<int>(high)};
}

template <typename Visit> void visitSegments(const Path& rings, Visit visit)
{
    for (std::size_t i = 0; i < rings.subPathCount(); ++i) {
        const auto ring = rings.subPath(i);
        Point previous = ring.back();
        for (const Point p : ring) {
            visit(previous, p);
            previous = p;
        }
    }
}
} // namespace

void AreaFiller::fill(const PixelBuffer& buffer, const Path& rings, DisplayColor color, int top)
{
    if (rings.isEmpty() || color.alpha == 0)
        return;
    // How many crossings each row has, then where each row's begin.
    m_rowStart.assign(static_cast<std::size_t>(buffer.height) + 2, 0);
    visitSegments(rings, [&](Point a, Point b) {
        const Rows rows = rowsCrossed(a, b, top, buffer.height);
        for (int row = rows.first; row < rows.end; ++row)
            ++m_rowStart[static_cast<std::size_t>(row) + 2];
    });
    for (std::size_t row = 2; row < m_rowStart.size(); ++row)
        m_rowStart[row] += m_rowStart[row - 1];
    m_crossings.resize(m_rowStart.back());
    visitSegments(rings, [&](Point a, Point b) {
        const Rows rows = rowsCrossed(a, b, top, buffer.height);
        if (rows.first >= rows.end)
            return;
        // The same two ends give the same numbers in both directions, so that neighbours agree.
        if (b.y < a.y)
            std::swap(a, b);
        const double slope = (b.x - a.x) / (b.y - a.y);
        for (int row = rows.first; row < rows.end; ++row)
            m_crossings[m_rowStart[static_cast<std::size_t>(row) + 1]++] =
                static_cast<float>(a.x + (row + top + 0.5 - a.y) * slope);
    });

    const std::uint32_t value = premultiplied(color);
    for (int row = 0; row < buffer.height; ++row) {
        const auto begin = m_crossings.begin() + m_rowStart[static_cast<std::size_t>(row)];
        const auto end = m_crossings.begin() + m_rowStart[static_cast<std::size_t>(row) + 1];
        std::sort(begin, end);
        std::uint32_t* line = buffer.pixels + static_cast<std::ptrdiff_t>(row) * buffer.stride;
        for (auto it = begin; end - it >= 2; it += 2) {
            const auto limit = static_cast<float>(buffer.width);
            const int from = static_cast<int>(std::clamp(std::ceil(it[0] - 0.5F), 0.0F, limit));
            const int to = static_cast<int>(std::clamp(std::ceil(it[1] - 0.5F), 0.0F, limit));
            if (color.alpha == 255)
                std::fill(line + from, line + std::max(from, to), value);
            else
                blend(line + from, to - from, value);
        }
    }
}

} // namespace kelvox
