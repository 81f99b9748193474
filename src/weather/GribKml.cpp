#include "weather/GribKml.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double pointsPerCell = 60; ///< of the sheet: more than markers of size 1 want
constexpr double tallest = 85;

double mercatorDegrees(double latitude)
{
    const double angle = std::clamp(latitude, -tallest, tallest) * std::numbers::pi / 180;
    return std::asinh(std::tan(angle)) * 180 / std::numbers::pi;
}

double fromMercator(double degrees)
{
    return std::atan(std::sinh(degrees * std::numbers::pi / 180)) * 180 / std::numbers::pi;
}

/// Alpha, blue, green, red: the order of KML.
std::string kmlColor(GribColor color)
{
    return fmt::format("{:02x}{:02x}{:02x}{:02x}", color.alpha, color.blue, color.green, color.red);
}

std::string coordinates(double longitude, double latitude)
{
    return fmt::format("{:.6f},{:.6f},0\n", longitude, latitude);
}

std::string coordinates(const GribView& view, Point point)
{
    const Position position = view.pointToPosition(point);
    return coordinates(std::remainder(position.longitude, 360), position.latitude);
}

/// A line string, or several where it crosses the date line: a viewer draws a line from 179 to -179
/// degrees all around the earth.
std::string lineStrings(const GribView& view, std::span<const Point> points)
{
    const std::string begin = "<LineString>\n<coordinates>\n";
    const std::string end = "</coordinates>\n</LineString>\n";
    const auto turnOf = [](Position p) { return std::floor((p.longitude + 180) / 360); };
    Position last = view.pointToPosition(points.front());
    double turn = turnOf(last);
    std::string text = begin + coordinates(last.longitude - 360 * turn, last.latitude);
    for (const Point point : points.subspan(1)) {
        const Position here = view.pointToPosition(point);
        if (const double turnHere = turnOf(here); turnHere != turn) {
            const double border = 360 * std::max(turn, turnHere) - 180;
            const double fraction = (border - last.longitude) / (here.longitude - last.longitude);
            const double latitude = last.latitude + (here.latitude - last.latitude) * fraction;
            text += coordinates(border - 360 * turn, latitude) + end + begin
                + coordinates(border - 360 * turnHere, latitude);
            turn = turnHere;
        }
        text += coordinates(here.longitude - 360 * turn, here.latitude);
        last = here;
    }
    return text + end;
}

/// All lines of one colour in one placemark.
std::string placemark(const GribView& view, const std::string& name, const Path& path,
                      GribColor color, double width, bool filled)
{
    std::string text = fmt::format("<Placemark>\n<name>{}</name>\n<Style>\n<LineStyle>\n"
                                   "<color>{}</color>\n<width>{:.0f}</width>\n</LineStyle>\n",
                                   name, kmlColor(color), std::max(1.0, width));
    if (filled)
        text += fmt::format("<PolyStyle>\n<color>{}</color>\n</PolyStyle>\n", kmlColor(color));
    text += "</Style>\n<MultiGeometry>\n";
    for (std::size_t i = 0; i < path.subPathCount(); ++i) {
        const auto points = path.subPath(i);
        if (points.size() < 2)
            continue;
        if (filled) {
            text += "<Polygon>\n<outerBoundaryIs>\n<LinearRing>\n<coordinates>\n";
            for (const Point point : points)
                text += coordinates(view, point);
            text += coordinates(view, points.front())
                + "</coordinates>\n</LinearRing>\n</outerBoundaryIs>\n</Polygon>\n";
            continue;
        }
        text += lineStrings(view, points);
    }
    return text + "</MultiGeometry>\n</Placemark>\n";
}

std::string pointPlacemark(const GribView& view, const GribLabel& label)
{
    std::string place = coordinates(view, label.center);
    place.pop_back(); // a single point stands on one line
    return fmt::format("<Placemark>\n<name>{}</name>\n<Style>\n<IconStyle>\n<scale>0</scale>\n"
                       "</IconStyle>\n<LabelStyle>\n<color>{}</color>\n<scale>{:.1f}</scale>\n"
                       "</LabelStyle>\n</Style>\n<Point>\n<coordinates>",
                       label.text, kmlColor(label.color), label.bold ? 1.2 : 0.7)
        + place + "</coordinates>\n</Point>\n</Placemark>\n";
}

std::string placemarks(const GribView& view, const std::string& name, const GribDrawing& drawing)
{
    std::string text;
    for (const auto& fill : drawing.fills)
        text += placemark(view, name, fill.path, fill.color, 1, true);
    for (const auto& stroke : drawing.strokes)
        text += placemark(view, name, stroke.path, stroke.color, stroke.width, false);
    for (const auto& label : drawing.labels)
        text += pointPlacemark(view, label);
    return text;
}
} // namespace

GribKml::GribKml(const GribModel& model)
    : m_model(model)
{
}

GribView GribKml::sheet() const
{
    Rect degrees;
    double cell = 10;
    for (const GribPoints* points : m_model.pointsAt(m_model.viewedDate())) {
        const GribGrid& grid = points->grid();
        const double north =
            grid.first.latitude + (grid.latitudeCount - 1) * grid.latitudeIncrement;
        const double east =
            grid.first.longitude + (grid.longitudeCount - 1) * grid.longitudeIncrement;
        degrees.include(Point{grid.first.longitude, mercatorDegrees(grid.first.latitude)});
        degrees.include(Point{east, mercatorDegrees(north)});
        if (grid.longitudeIncrement > 0)
            cell = std::min(cell, grid.longitudeIncrement);
        if (grid.latitudeIncrement != 0)
            cell = std::min(cell, std::abs(grid.latitudeIncrement));
    }
    constexpr double largest = 16000; // a fine grid around the earth is thinned out
    const double scale = std::min(pointsPerCell / cell,
                                  largest / std::max({1.0, degrees.width(), degrees.height()}));
    GribView view;
    view.positionToPoint = [scale](Position position) {
        return Point{position.longitude, mercatorDegrees(position.latitude)} * scale;
    };
    view.pointToPosition = [scale](Point point) {
        return Position{point.x / scale, fromMercator(point.y / scale)};
    };
    if (degrees.isEmpty())
        return view;
    // One turn of the earth at most: a copy of a global grid beside itself would be a second field.
    const double right = std::min(degrees.right, degrees.left + 359.999);
    view.visible = {degrees.left * scale, degrees.bottom * scale, right * scale,
                    degrees.top * scale};
    return view;
}

std::string GribKml::wind(const GribMarkerOptions& options) const
{
    const GribView view = sheet();
    return placemarks(view, "Wind", drawGribWind(m_model, view, options));
}

std::string GribKml::current(const GribMarkerOptions& options) const
{
    const GribView view = sheet();
    return placemarks(view, "Current", drawGribCurrent(m_model, view, options));
}

std::string GribKml::waves(const GribMarkerOptions& options) const
{
    const GribView view = sheet();
    return placemarks(view, "Waves", drawGribWaves(m_model, view, options));
}

std::string GribKml::contours(const GribContourOptions& options) const
{
    const GribView view = sheet();
    std::string text;
    for (const auto& line : gribContourLines(m_model, view, options)) {
        Path path;
        for (const Position position : line.positions)
            path.lineTo(view.positionToPoint(position));
        text += placemark(view, fmt::format("{:g}", line.level), path, options.color, options.width,
                          false);
    }
    return text;
}

std::string GribKml::labels(const GribContourOptions& options) const
{
    const GribView view = sheet();
    std::string text;
    for (const auto& label : drawGribContours(m_model, view, options).labels)
        text += pointPlacemark(view, label);
    return text;
}

} // namespace kelvox
