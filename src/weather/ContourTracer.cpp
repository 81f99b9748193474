#include "weather/ContourTracer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_map>

namespace kelvox {

namespace {
/// An edge of the lattice: that to the right of a sample is twice its index, that below one more.
using Edge = std::uint32_t;
struct Segment {
    Edge from;
    Edge to;
};
constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

class Tracer {
public:
    Tracer(std::span<const float> samples, int columns)
        : m_samples(samples)
        , m_columns(static_cast<std::uint32_t>(columns))
        , m_rows(static_cast<std::uint32_t>(samples.size() / m_columns))
    {
    }

    std::vector<ContourLine> trace(std::span<const double> levels)
    {
        std::vector<std::vector<Segment>> segments(levels.size());
        for (std::uint32_t row = 0; row + 1 < m_rows; ++row)
            for (std::uint32_t column = 0; column + 1 < m_columns; ++column)
                cutCell(row * m_columns + column, levels, segments);
        std::vector<ContourLine> lines;
        for (std::size_t i = 0; i < levels.size(); ++i)
            chain(levels[i], segments[i], lines);
        return lines;
    }

private:
    void cutCell(std::uint32_t sample, std::span<const double> levels,
                 std::vector<std::vector<Segment>>& segments) const
    {
        // clockwise from the first sample; edge i runs from corner i to the next
        const std::array<double, 4> corner = {m_samples[sample], m_samples[sample + 1],
                                              m_samples[sample + m_columns + 1],
                                              m_samples[sample + m_columns]};
        const std::array<Edge, 4> edge = {2 * sample, 2 * (sample + 1) + 1,
                                          2 * (sample + m_columns), 2 * sample + 1};
        const auto [least, most] = std::minmax_element(corner.begin(), corner.end());
        if (std::isnan(corner[0] + corner[1] + corner[2] + corner[3]))
            return;
        auto level = std::upper_bound(levels.begin(), levels.end(), *least);
        for (; level != levels.end() && *level <= *most; ++level) {
            auto& list = segments[static_cast<std::size_t>(level - levels.begin())];
            std::array<Edge, 4> cuts{};
            std::size_t count = 0;
            for (std::size_t i = 0; i < 4; ++i)
                if ((corner[i] < *level) != (corner[(i + 1) % 4] < *level))
                    cuts[count++] = edge[i];
            if (count == 2)
                list.push_back({cuts[0], cuts[1]});
            if (count != 4)
                continue;
            const double mean = (corner[0] + corner[1] + corner[2] + corner[3]) / 4;
            const bool withFirst = (mean < *level) == (corner[0] < *level);
            if (withFirst) { // the first corner is joined to the opposite one: cut off the others
                list.push_back({cuts[0], cuts[1]});
                list.push_back({cuts[2], cuts[3]});
            } else {
                list.push_back({cuts[3], cuts[0]});
                list.push_back({cuts[1], cuts[2]});
            }
        }
    }

    [[nodiscard]] Point cutOf(Edge edge, double level) const
    {
        const std::uint32_t sample = edge / 2;
        const bool downwards = edge % 2;
        const double a = m_samples[sample];
        const double b = m_samples[sample + (downwards ? m_columns : 1)];
        const double t = (level - a) / (b - a);
        const Point start{static_cast<double>(sample % m_columns),
                          static_cast<double>(sample / m_columns)};
        return start + (downwards ? Point{0, t} : Point{t, 0});
    }

    /// Joins segments at the edges that they share.
    void chain(double level, const std::vector<Segment>& segments,
               std::vector<ContourLine>& lines) const
    {
        std::unordered_map<Edge, std::array<std::uint32_t, 2>> atEdge;
        atEdge.reserve(segments.size() * 2);
        for (std::uint32_t i = 0; i < segments.size(); ++i)
            for (const Edge edge : {segments[i].from, segments[i].to}) {
                auto& pair = atEdge.try_emplace(edge, std::array{none, none}).first->second;
                (pair[0] == none ? pair[0] : pair[1]) = i;
            }
        std::vector<bool> used(segments.size());
        const auto follow = [&](std::uint32_t segment, Edge edge) {
            ContourLine line{.level = level, .points = {}};
            line.points.push_back(cutOf(edge, level));
            while (segment != none && !used[segment]) {
                used[segment] = true;
                edge =
                    segments[segment].from == edge ? segments[segment].to : segments[segment].from;
                line.points.push_back(cutOf(edge, level));
                const auto& pair = atEdge.at(edge);
                segment = pair[0] == segment ? pair[1] : pair[0];
            }
            line.closed = segment != none;
            lines.push_back(std::move(line));
        };
        for (std::uint32_t i = 0; i < segments.size(); ++i) // lines with ends first
            for (const Edge edge : {segments[i].from, segments[i].to})
                if (!used[i] && atEdge.at(edge)[1] == none)
                    follow(i, edge);
        for (std::uint32_t i = 0; i < segments.size(); ++i)
            if (!used[i])
                follow(i, segments[i].from);
    }

    std::span<const float> m_samples;
    std::uint32_t m_columns;
    std::uint32_t m_rows;
};
} // namespace

std::vector<ContourLine> traceContours(std::span<const float> samples, int columns,
                                       std::span<const double> levels)
{
    if (columns < 2 || samples.size() < 2 * static_cast<std::size_t>(columns)
        || samples.size() > none / 4)
        return {};
    return Tracer(samples, columns).trace(levels);
}

} // namespace kelvox
