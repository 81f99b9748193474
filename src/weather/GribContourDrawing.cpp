// Lines, labels and centres in view points.

#include "weather/GribContours.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <unordered_map>

namespace kelvox {

namespace {
constexpr double pi = std::numbers::pi;

/// Remembers where labels stand. A label is a row of circles along its text.
class LabelSpace {
public:
    explicit LabelSpace(Rect view)
        : m_view(view)
    {
    }
    /// Takes the room when it is free and within the view.
    bool take(const GribLabel& label)
    {
        const double radius = 0.6 * label.height;
        const double half = std::max(0.0, labelWidth(label) / 2 - radius / 2);
        const Point along{std::cos(label.angle), std::sin(label.angle)};
        const int parts = std::max(1, static_cast<int>(std::ceil(2 * half / radius)));
        std::vector<Circle> circles;
        for (int i = 0; i <= parts; ++i)
            circles.push_back({label.center + along * (half * (2.0 * i / parts - 1)), radius});
        const Rect inside = m_view.grownBy(-radius, -radius);
        for (const auto& circle : circles)
            if (!inside.contains(circle.center) || isTaken(circle))
                return false;
        for (const auto& circle : circles)
            m_cells[cellOf(circle.center)].push_back(circle);
        return true;
    }

private:
    struct Circle {
        Point center;
        double radius;
    };
    static constexpr double cell = 40; ///< wider than two circles
    static std::int64_t key(int x, int y)
    {
        return static_cast<std::int64_t>(x) << 32 ^ (y & 0xFFFFFFFF);
    }
    static std::int64_t cellOf(Point p)
    {
        return key(static_cast<int>(std::floor(p.x / cell)),
                   static_cast<int>(std::floor(p.y / cell)));
    }
    [[nodiscard]] bool isTaken(const Circle& circle) const
    {
        for (const int dx : {-1, 0, 1})
            for (const int dy : {-1, 0, 1}) {
                const auto found =
                    m_cells.find(cellOf(circle.center + Point{dx * cell, dy * cell}));
                if (found == m_cells.end())
                    continue;
                for (const auto& other : found->second)
                    if (std::hypot(other.center.x - circle.center.x,
                                   other.center.y - circle.center.y)
                        < other.radius + circle.radius)
                        return true;
            }
        return false;
    }

    Rect m_view;
    std::unordered_map<std::int64_t, std::vector<Circle>> m_cells;
};

/// A line in the view with the way along it to each point.
class MeasuredLine {
public:
    explicit MeasuredLine(std::vector<Point> points)
        : m_points(std::move(points))
    {
        m_way.reserve(m_points.size());
        for (std::size_t i = 0; i < m_points.size(); ++i)
            m_way.push_back(i == 0 ? 0
                                   : m_way.back()
                                    + std::hypot(m_points[i].x - m_points[i - 1].x,
                                                 m_points[i].y - m_points[i - 1].y));
    }
    [[nodiscard]] double length() const { return m_way.empty() ? 0 : m_way.back(); }
    [[nodiscard]] Point at(double way) const
    {
        const std::size_t i = std::clamp<std::size_t>(
            static_cast<std::size_t>(std::upper_bound(m_way.begin(), m_way.end(), way)
                                     - m_way.begin()),
            1, m_points.size() - 1);
        const double step = m_way[i] - m_way[i - 1];
        const double t = step > 0 ? (way - m_way[i - 1]) / step : 0;
        return m_points[i - 1] + (m_points[i] - m_points[i - 1]) * t;
    }
    /// Adds the part between two ways to a path.
    void addPart(double from, double to, Path& path) const
    {
        if (to <= from)
            return;
        path.moveTo(at(from));
        auto i = static_cast<std::size_t>(std::upper_bound(m_way.begin(), m_way.end(), from)
                                          - m_way.begin());
        for (; i < m_points.size() && m_way[i] < to; ++i)
            path.lineTo(m_points[i]);
        path.lineTo(at(to));
    }

private:
    std::vector<Point> m_points;
    std::vector<double> m_way;
};

/// How much a stretch of line around a way bends: its length over that of its chord.
double bend(const MeasuredLine& line, double way, double half)
{
    const Point chord = line.at(way + half) - line.at(way - half);
    return 2 * half / std::max(1e-9, std::hypot(chord.x, chord.y));
}

std::string labelText(double level)
{
    const double rounded = std::round(level * 100) / 100;
    return fmt::format("{:g}", rounded == 0 ? 0 : rounded); // no "-0"
}

/// Labels a line about every 350 view points, each time at the straightest free place.
std::vector<std::pair<double, double>> placeLabels(const MeasuredLine& line, double level,
                                                   const GribContourOptions& options,
                                                   LabelSpace& space,
                                                   std::vector<GribLabel>& labels)
{
    constexpr double between = 350;
    constexpr double step = 12;
    constexpr double straightEnough = 1.06;
    std::vector<std::pair<double, double>> gaps;
    GribLabel label{.text = labelText(level),
                    .center = {},
                    .height = options.labelHeight,
                    .color = options.color};
    const double half = labelWidth(label) / 2 + 2;
    if (line.length() < 6 * half)
        return gaps;
    const int count = std::max(1, static_cast<int>(line.length() / between));
    const double share = line.length() / count;
    for (int i = 0; i < count; ++i) {
        std::vector<std::pair<double, double>> places; // bend, way
        const double end = std::min((i + 1) * share, line.length()) - half;
        for (double way = i * share + half; way <= end; way += step)
            if (const double b = bend(line, way, half); b < straightEnough)
                places.emplace_back(b + 0.0002 * std::abs(way - (i + 0.5) * share) / share, way);
        std::sort(places.begin(), places.end());
        for (const auto& [ignored, way] : places) {
            const Point chord = line.at(way + half) - line.at(way - half);
            label.center = (line.at(way + half) + line.at(way - half)) * 0.5;
            label.angle = std::atan2(chord.y, chord.x);
            if (label.angle > pi / 2)
                label.angle -= pi;
            else if (label.angle <= -pi / 2)
                label.angle += pi;
            if (!gaps.empty() && way - half < gaps.back().second + between / 3)
                continue;
            if (space.take(label)) {
                labels.push_back(label);
                gaps.emplace_back(way - half, way + half);
                break;
            }
        }
    }
    return gaps;
}

void drawCentres(const GribModel& model, const GribView& view, const GribContourOptions& options,
                 LabelSpace& space, GribDrawing& drawing)
{
    const Point up =
        view.positionToPoint({view.pointToPosition(view.visible.center()).longitude, 1})
        - view.positionToPoint({view.pointToPosition(view.visible.center()).longitude, 0});
    for (const auto& centre : gribCentres(model, options.field)) {
        for (const double shift : {-360.0, 0.0, 360.0}) {
            const Position position{centre.position.longitude + shift, centre.position.latitude};
            GribLabel letter{.text = centre.high ? "H" : "L",
                             .center = view.positionToPoint(position),
                             .height = 1.9 * options.labelHeight,
                             .color = centre.high ? GribColor{20, 60, 190} : GribColor{190, 30, 30},
                             .bold = true};
            GribLabel number{.text = fmt::format("{:.0f}", centre.value),
                             .center = letter.center,
                             .height = options.labelHeight,
                             .color = letter.color};
            // The number stands below the letter on the screen, whichever way y runs: below is
            // against north on an unturned chart.
            number.center.y -= std::copysign(1.85 * options.labelHeight, up.y);
            if (space.take(letter)) {
                drawing.labels.push_back(letter);
                if (space.take(number))
                    drawing.labels.push_back(number);
            }
        }
    }
}
} // namespace

GribDrawing drawGribContours(const GribModel& model, const GribView& view,
                             const GribContourOptions& options)
{
    GribDrawing drawing;
    LabelSpace space(view.visible);
    const bool labelled = options.labelHeight > 0;
    if (labelled
        && (options.field == GribField::Pressure || options.field == GribField::GeopotentialHeight))
        drawCentres(model, view, options, space, drawing);
    Path path;
    for (const auto& traced : gribContourLines(model, view, options)) {
        std::vector<Point> points;
        points.reserve(traced.positions.size());
        for (const Position position : traced.positions)
            points.push_back(view.positionToPoint(position));
        const MeasuredLine line(std::move(points));
        double drawn = 0;
        if (labelled)
            for (const auto& [from, to] :
                 placeLabels(line, traced.level, options, space, drawing.labels)) {
                line.addPart(drawn, from, path);
                drawn = to;
            }
        line.addPart(drawn, line.length(), path);
    }
    if (!path.isEmpty())
        drawing.strokes.push_back({std::move(path), options.color, options.width});
    return drawing;
}

} // namespace kelvox
