#include "weather/GribMarkers.h"

#include "weather/GribLattice.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <map>
#include <numbers>

namespace kelvox {

namespace {
constexpr double staffLength = 26;
constexpr double lineWidth = 1.4;

/// Turns what is drawn along the x axis, with y to the right of it, to a compass direction.
class Frame {
public:
    Frame(Point origin, Point east, Point north, double towardsDegrees)
        : m_origin(origin)
    {
        const double angle = towardsDegrees * std::numbers::pi / 180;
        m_along = north * std::cos(angle) + east * std::sin(angle);
        m_right = east * std::cos(angle) - north * std::sin(angle);
    }
    [[nodiscard]] Point at(double along, double right) const
    {
        return m_origin + m_along * along + m_right * right;
    }

private:
    Point m_origin;
    Point m_along;
    Point m_right;
};

Point unit(Point vector)
{
    const double length = std::hypot(vector.x, vector.y);
    return length > 0 ? vector * (1 / length) : Point{1, 0};
}

/// A place of the lattice in the view, with the directions of east and north there.
struct Place {
    Position position; ///< longitude continues beyond ±180
    Point point;
    Point east;
    Point north;

    [[nodiscard]] Frame facing(double degrees) const { return {point, east, north, degrees}; }
};

/// Calls work(points, place) where markers belong.
template <typename Work>
void forEachPlace(const GribModel& model, GribField field, const GribView& view, double size,
                  Work&& work)
{
    const double spacing = 1.7 * staffLength * size;
    GribView wider = view;
    wider.visible = view.visible.grownBy(staffLength * size, staffLength * size);
    std::vector<const GribPoints*> finer;
    for (const GribPoints* points : model.pointsAt(model.viewedDate())) {
        if (!points->has(field))
            continue;
        for (const auto& lattice :
             GribLattice::over(points->grid(), wider, spacing, GribLattice::Spacing::AtLeast))
            for (int row = 0; row < lattice.rows; ++row)
                for (int column = 0; column < lattice.columns; ++column) {
                    const Position position = lattice.positionAt(column, row);
                    const Point point = view.positionToPoint(position);
                    if (!wider.visible.contains(point) || isCovered(finer, field, position))
                        continue;
                    const double farther = row
                        + (position.latitude > 0 ? -0.5 : 0.5)
                            * (lattice.grid.latitudeIncrement > 0 ? 1 : -1);
                    const bool up =
                        lattice.positionAt(column, farther).latitude > position.latitude;
                    const Point north =
                        unit(view.positionToPoint(lattice.positionAt(column, farther)) - point);
                    const Point east =
                        unit(view.positionToPoint(lattice.positionAt(column + 0.5, row)) - point);
                    work(*points, Place{position, point, east, up ? north : north * -1});
                }
        finer.push_back(points);
    }
}

void addLine(Path& path, Point from, Point to)
{
    path.moveTo(from);
    path.lineTo(to);
}

void addRing(Path& path, Point center, double radius)
{
    constexpr int corners = 16;
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        const Point p = center + Point{std::cos(angle), std::sin(angle)} * radius;
        i == 0 ? path.moveTo(p) : path.lineTo(p);
    }
}

/// Feathers from the tip of a staff of the given length inwards. `side` is 1 for the right.
void addFeathers(Path& lines, Path& pennants, const Frame& frame, double length, double size,
                 int halves, double side)
{
    const double gap = 4 * size;
    const double reach = 11 * size * side;
    const double slant = 4 * size; // feathers lean outwards
    double at = length;
    for (; halves >= 10; halves -= 10, at -= 1.7 * gap) {
        pennants.moveTo(frame.at(at, 0));
        pennants.lineTo(frame.at(at - 0.4 * gap + slant / 2, reach));
        pennants.lineTo(frame.at(at - 1.4 * gap, 0));
    }
    if (halves == 1 && at == length)
        at -= gap; // alone it would be taken for a whole one
    for (; halves >= 2; halves -= 2, at -= gap)
        addLine(lines, frame.at(at, 0), frame.at(at + slant, reach));
    if (halves == 1)
        addLine(lines, frame.at(at, 0), frame.at(at + slant / 2, reach / 2));
}

double featherSide(const Position& position)
{
    return position.latitude >= 0 ? 1 : -1;
}

void addArrow(Path& path, const Frame& frame, double tail, double tip, double head)
{
    addLine(path, frame.at(tail, 0), frame.at(tip, 0));
    path.moveTo(frame.at(tip - head, -0.6 * head));
    path.lineTo(frame.at(tip, 0));
    path.lineTo(frame.at(tip - head, 0.6 * head));
}

GribDrawing drawing(Path lines, Path filled, const GribMarkerOptions& options)
{
    GribDrawing result;
    if (!filled.isEmpty())
        result.fills.push_back({std::move(filled), options.color});
    if (!lines.isEmpty())
        result.strokes.push_back({std::move(lines), options.color, lineWidth});
    return result;
}

GribDrawing drawBarbs(const GribModel& model, const GribView& view,
                      const GribMarkerOptions& options)
{
    const double size = options.size;
    Path lines;
    Path pennants;
    forEachPlace(model, GribField::WindU, view, size,
                 [&](const GribPoints& points, const Place& place) {
                     const auto wind = points.windAt(place.position);
                     if (!wind)
                         return;
                     const int halves = static_cast<int>(std::lround(wind->knots() / 5));
                     if (halves == 0)
                         return addRing(lines, place.point, 3 * size);
                     const Frame frame = place.facing(wind->fromDegrees());
                     addLine(lines, place.point, frame.at(staffLength * size, 0));
                     addFeathers(lines, pennants, frame, staffLength * size, size, halves,
                                 featherSide(place.position));
                 });
    return drawing(std::move(lines), std::move(pennants), options);
}

GribDrawing drawDarts(const GribModel& model, const GribView& view,
                      const GribMarkerOptions& options)
{
    const double size = options.size;
    std::map<int, Path> darts; // one fill for each force
    Path outlines;
    forEachPlace(
        model, GribField::WindU, view, size, [&](const GribPoints& points, const Place& place) {
            const auto wind = points.windAt(place.position);
            if (!wind)
                return;
            const Frame frame = place.facing(wind->towardsDegrees());
            const std::array corners = {frame.at(13 * size, 0), frame.at(-11 * size, -7.5 * size),
                                        frame.at(-6 * size, 0), frame.at(-11 * size, 7.5 * size)};
            Path& dart = darts[GribModel::beaufortIndex(wind->knots())];
            dart.moveTo(corners[0]);
            outlines.moveTo(corners[0]);
            for (const int corner : {1, 2, 3, 0}) {
                dart.lineTo(corners[static_cast<std::size_t>(corner)]);
                outlines.lineTo(corners[static_cast<std::size_t>(corner)]);
            }
        });
    GribDrawing result;
    for (auto& [force, path] : darts)
        if (force >= 0)
            result.fills.push_back(
                {std::move(path), beaufortScale()[static_cast<std::size_t>(force)].color});
    if (!outlines.isEmpty())
        result.strokes.push_back({std::move(outlines), options.color, 0.7});
    return result;
}
} // namespace

GribDrawing drawGribWind(const GribModel& model, const GribView& view,
                         const GribMarkerOptions& options)
{
    return options.style == GribMarkerOptions::Style::Barbs ? drawBarbs(model, view, options)
                                                            : drawDarts(model, view, options);
}

GribDrawing drawGribCurrent(const GribModel& model, const GribView& view,
                            const GribMarkerOptions& options)
{
    const double size = options.size;
    const double half = staffLength / 2 * size;
    Path lines;
    Path filled;
    forEachPlace(
        model, GribField::CurrentU, view, size, [&](const GribPoints& points, const Place& place) {
            const auto current = points.currentAt(place.position);
            if (!current)
                return;
            const int halves = static_cast<int>(std::lround(current->knots() * 2));
            if (halves == 0)
                return addRing(filled, place.point, 1.5 * size);
            addArrow(lines, place.facing(current->towardsDegrees()), -half, half, 7 * size);
            addFeathers(lines, filled, place.facing(current->fromDegrees()), half, size, halves,
                        featherSide(place.position));
        });
    return drawing(std::move(lines), std::move(filled), options);
}

GribDrawing drawGribWaves(const GribModel& model, const GribView& view,
                          const GribMarkerOptions& options)
{
    const double size = options.size;
    Path lines;
    std::vector<GribLabel> labels;
    forEachPlace(model, GribField::WaveDirection, view, size,
                 [&](const GribPoints& points, const Place& place) {
                     const auto from = points.valueAt(GribField::WaveDirection, place.position);
                     const auto metres = points.valueAt(GribField::WaveHeight, place.position);
                     if (!from)
                         return;
                     const double length = metres ? std::clamp(10 + 5 * *metres, 10.0, 34.0) : 18;
                     const Frame frame = place.facing(*from + 180);
                     addArrow(lines, frame, -length / 2 * size, length / 2 * size, 8 * size);
                     // Two crests across the shaft tell it from a current.
                     for (const double at : {-0.2, 0.05}) {
                         lines.moveTo(frame.at(at * length * size, -4 * size));
                         lines.lineTo(frame.at((at * length + 1.5) * size, 0));
                         lines.lineTo(frame.at(at * length * size, 4 * size));
                     }
                     if (!metres)
                         return;
                     // Beside the shaft, on the side that keeps clear of it.
                     const double clear = 11 * size;
                     labels.push_back(
                         {.text = fmt::format("{:.1f}", model.height(static_cast<float>(*metres))),
                          .center = frame.at(0, clear),
                          .height = 9 * size,
                          .color = options.color});
                 });
    GribDrawing result = drawing(std::move(lines), {}, options);
    result.labels = std::move(labels);
    return result;
}

} // namespace kelvox
