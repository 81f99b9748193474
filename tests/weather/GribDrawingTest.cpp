#include "support/GribWriter.h"
#include "weather/GribContours.h"
#include "weather/GribKml.h"
#include "weather/GribMarkers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {
namespace {
/// A flat chart of `scale` points a degree, y northwards, 400 x 400 points around a place.
GribView flatView(Position center, double scale)
{
    return {
        .positionToPoint =
            [=](Position p) {
                return Point{p.longitude - center.longitude, p.latitude - center.latitude} * scale;
            },
        .pointToPosition =
            [=](Point p) {
                return Position{center.longitude + p.x / scale, center.latitude + p.y / scale};
            },
        .visible = {-200, -200, 200, 200}};
}

/// 11 x 11 points, a degree apart, around a place.
GribSpec square(int longitude, int latitude, int parameter)
{
    return {.parameter = parameter,
            .columns = 11,
            .rows = 11,
            .latitude = (latitude + 5) * 1000,
            .longitude = (longitude - 5) * 1000,
            .lastLatitude = (latitude - 5) * 1000,
            .lastLongitude = (longitude + 5) * 1000,
            .columnStep = 1000,
            .rowStep = 1000,
            .bits = 16,
            .values = std::vector<std::optional<double>>(121, 0.0)};
}

std::string uniformWind(int longitude, int latitude, double u, double v)
{
    GribSpec east = square(longitude, latitude, 33);
    GribSpec north = square(longitude, latitude, 34);
    east.values.assign(121, u);
    north.values.assign(121, v);
    return GribWriter::message(east) + GribWriter::message(north);
}

/// A round low: the value grows with the square of the distance, 4 hPa at one degree.
std::string roundLow(int longitude, int latitude)
{
    GribSpec spec = square(longitude, latitude, 2);
    spec.decimalScale = 0;
    for (int row = 0; row < 11; ++row)
        for (int column = 0; column < 11; ++column)
            spec.values[static_cast<std::size_t>(row * 11 + column)] =
                98000 + 100 * ((row - 5) * (row - 5) + (column - 5) * (column - 5));
    return GribWriter::message(spec);
}

class GribDrawingTest : public ::testing::Test {
protected:
    void load(const std::string& bytes) { ASSERT_TRUE(model.loadBytes(bytes, "test")); }
    UnitsModel units;
    GribModel model{units};
};

/// The mean of all points of a marker's strokes relative to its foot, the staff left out.
Point featherSide(const GribDrawing& drawing, Point foot)
{
    Point sum;
    for (std::size_t i = 0; i < drawing.strokes[0].path.subPathCount(); ++i) {
        const auto line = drawing.strokes[0].path.subPath(i);
        if (std::hypot(line[0].x - foot.x, line[0].y - foot.y) > 30 || line[0] == foot)
            continue;
        sum = sum + (line[1] - line[0]);
    }
    return sum;
}
} // namespace

TEST_F(GribDrawingTest, BarbsPointUpwindWithFeathersTowardsLowPressure)
{
    struct Row {
        int latitude;
        double u, v;
        Point tip; ///< of the staff from its foot
        int feathersX; ///< side of the feathers
    };
    const Row rows[] = {
        {40, 0, -12.86, {0, 26}, 1}, // 25 knots from north: feathers in the east
        {-40, 0, -12.86, {0, 26}, -1}, // in the west on the southern half
        {40, 0, 12.86, {0, -26}, -1},
    };
    for (const auto& row : rows) {
        load(uniformWind(20, row.latitude, row.u, row.v));
        const auto drawing =
            drawGribWind(model, flatView({20, static_cast<double>(row.latitude)}, 100), {});
        ASSERT_EQ(drawing.strokes.size(), 1U);
        const Path& path = drawing.strokes[0].path;
        bool found = false;
        for (std::size_t i = 0; i < path.subPathCount(); ++i)
            found = found
                || (std::hypot(path.subPath(i)[0].x, path.subPath(i)[0].y) < 1e-6
                    && std::hypot(path.subPath(i)[1].x - row.tip.x,
                                  path.subPath(i)[1].y - row.tip.y)
                        < 1e-6);
        EXPECT_TRUE(found) << "staff at " << row.latitude;
        EXPECT_GT(featherSide(drawing, {0, 0}).x * row.feathersX, 0) << row.latitude;
        EXPECT_EQ(path.subPathCount() % 4, 0U); // a staff, two feathers, a half one
    }
}

TEST_F(GribDrawingTest, CurrentPointsToWhereItSets)
{
    GribSpec east = square(20, 40, 49);
    GribSpec north = square(20, 40, 50);
    east.values.assign(121, 1.0);
    load(GribWriter::message(east) + GribWriter::message(north));
    const auto drawing = drawGribCurrent(model, flatView({20, 40}, 100), {});
    bool found = false;
    const Path& path = drawing.strokes.at(0).path;
    for (std::size_t i = 0; i < path.subPathCount(); ++i)
        found =
            found || (path.subPath(i).size() == 3 && std::abs(path.subPath(i)[1].x - 13) < 1e-6);
    EXPECT_TRUE(found) << "no arrow head in the east";
}

TEST_F(GribDrawingTest, DensityFollowsTheZoomAndTheDateLineIsNoBorder)
{
    load(uniformWind(180, 40, 10, 0));
    for (const double scale : {10.0, 20.0, 40.0, 100.0, 1000.0})
        for (const double longitude : {180.0, -180.0}) {
            const auto view = flatView({longitude, 40}, scale);
            const auto drawing = drawGribWind(model, view, {});
            std::vector<Point> feet;
            for (std::size_t i = 0; i < drawing.strokes.at(0).path.subPathCount(); i += 3)
                feet.push_back(drawing.strokes[0].path.subPath(i)[0]);
            // Half to twice the wanted distance of 44 points, over the visible part of the grid.
            const double side = std::min(10 * scale, 400.0);
            EXPECT_GE(feet.size(), side * side / (88 * 88)) << scale;
            EXPECT_LE(feet.size(), (side / 44 + 2) * (side / 44 + 2)) << scale;
            EXPECT_TRUE(std::any_of(feet.begin(), feet.end(), [](Point p) { return p.x < -1; }));
            EXPECT_TRUE(std::any_of(feet.begin(), feet.end(), [](Point p) { return p.x > 1; }));
        }
}

TEST_F(GribDrawingTest, ContoursOfARoundLowAreCircles)
{
    load(roundLow(179, 40));
    const auto view = flatView({179, 40}, 30);
    const auto lines = gribContourLines(model, view, {.interval = 4});
    ASSERT_GE(lines.size(), 6U); // 980 is a point; 984 ... 1004 are closed, the corners are not
    int closed = 0;
    for (const auto& line : lines) {
        for (const Position p : line.positions)
            EXPECT_NEAR(std::hypot(p.longitude - 179, p.latitude - 40), std::sqrt(line.level - 980),
                        line.level < 1000 ? 0.01 : 0.05) // less sure in the outermost cells
                << line.level;
        if (line.positions.front() == line.positions.back())
            ++closed;
    }
    EXPECT_EQ(closed, 6);

    const auto centres = gribCentres(model, GribField::Pressure);
    ASSERT_EQ(centres.size(), 1U);
    EXPECT_FALSE(centres[0].high);
    EXPECT_NEAR(centres[0].position.longitude, 179, 1e-6);
    EXPECT_EQ(centres[0].value, 980);
}

TEST_F(GribDrawingTest, LabelsFollowTheirLinesAndKeepApart)
{
    load(roundLow(20, 40));
    const auto drawing = drawGribContours(model, flatView({20, 40}, 30), {.interval = 4});
    ASSERT_GT(drawing.labels.size(), 4U);
    for (const auto& label : drawing.labels) {
        EXPECT_LE(std::abs(label.angle), 1.5708);
        EXPECT_TRUE((Rect{-200, -200, 200, 200}).contains(label.center));
        for (const auto& other : drawing.labels)
            EXPECT_TRUE(
                &other == &label
                || std::hypot(other.center.x - label.center.x, other.center.y - label.center.y)
                    > 11);
        if (label.bold || label.text == "980")
            continue;
        // A tangent of the circle: at right angles to the way from the centre.
        const double radius = std::hypot(label.center.x, label.center.y);
        const double along =
            label.center.x * std::cos(label.angle) + label.center.y * std::sin(label.angle);
        EXPECT_NEAR(along / radius, 0, 0.1) << label.text;
        EXPECT_GT(drawing.strokes[0].path.distanceTo(label.center), 5) << "line under its label";
    }
}

TEST_F(GribDrawingTest, LinesEndWhereValuesAreMissing)
{
    GribSpec spec = square(20, 40, 100);
    for (int i = 0; i < 121; ++i)
        spec.values[static_cast<std::size_t>(i)] =
            i % 11 < 6 ? std::optional<double>(i / 11) : std::nullopt;
    load(GribWriter::message(spec));
    units.surfaceDistanceUnits = UnitsModel::Kilometres;
    const auto lines = gribContourLines(model, flatView({20, 40}, 30),
                                        {.field = GribField::WaveHeight, .interval = 1});
    ASSERT_FALSE(lines.empty());
    for (const auto& line : lines)
        for (const Position p : line.positions) {
            EXPECT_LE(p.longitude, 20 + 1e-6); // the last column with values
            EXPECT_NEAR(p.latitude, 45 - line.level, 1e-3);
        }
}

TEST_F(GribDrawingTest, KmlHoldsLinesInGeographicPositions)
{
    load(uniformWind(20, 40, 0, -12.86) + roundLow(20, 40));
    const GribKml kml(model);
    const std::string wind = kml.wind({.color = {255, 0, 0}});
    EXPECT_EQ(wind.rfind("<Placemark>\n<name>Wind</name>\n<Style>\n<LineStyle>\n"
                         "<color>ff0000ff</color>\n<width>1</width>\n",
                         0),
              0U);
    EXPECT_NE(wind.find("<LineString>\n<coordinates>\n20.000000,40.000000,0\n20.000000,40."),
              std::string::npos);
    const std::string contours = kml.contours({.interval = 4});
    EXPECT_NE(contours.find("<name>984</name>"), std::string::npos);
    EXPECT_NE(kml.labels({.interval = 4}).find("<name>L</name>"), std::string::npos);

    load(roundLow(180, 40)); // no line runs back around the earth
    const std::string across = GribKml(model).contours({.interval = 4});
    double last = 0;
    for (std::size_t at = 0; (at = across.find('\n', at)) != std::string::npos; ++at) {
        char* end = nullptr;
        const double longitude = std::strtod(&across[at + 1], &end);
        if (end == &across[at + 1] || *end != ',')
            last = 0;
        else if (std::exchange(last, longitude) * longitude < 0)
            ADD_FAILURE() << "from " << last << " to " << longitude;
    }
}

} // namespace kelvox
