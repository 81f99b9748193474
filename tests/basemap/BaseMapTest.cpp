#include "basemap/BaseMapRender.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <netcdf.h>

#include <fstream>

namespace kelvox {
namespace {

enum Side { South, East, North, West, None };

/// A shoreline file in the making: bins of 90°, columns from Greenwich eastward, rows from north.
class Shoreline {
public:
    struct Corner {
        int x; ///< degrees from the bin's south-west corner
        int y;
    };
    /// A line in a bin with land on its left.
    Shoreline& line(int row, int column, int level, Side entry, Side exit,
                    const std::vector<Corner>& points)
    {
        auto& bin = m_bins.at(binIndex(row, column));
        bin.segments.push_back({level, entry, exit, points});
        return *this;
    }
    /// All corners of a bin lie on land.
    Shoreline& land(int row, int column)
    {
        m_bins.at(binIndex(row, column)).corners = 0b001'001'001'001;
        return *this;
    }
    [[nodiscard]] ShorelineTables tables() const
    {
        ShorelineTables t;
        t.columns = 4;
        t.rows = 2;
        for (const Bin& bin : m_bins) {
            t.firstSegment.push_back(static_cast<std::int32_t>(t.segment.size()));
            t.segmentCount.push_back(static_cast<std::int16_t>(bin.segments.size()));
            t.cornerLevels.push_back(bin.corners);
            for (const Segment& segment : bin.segments) {
                t.firstPoint.push_back(static_cast<std::int32_t>(t.x.size()));
                t.segment.push_back(static_cast<std::int32_t>(segment.points.size() << 9)
                                    | segment.level << 6 | segment.entry << 3 | segment.exit);
                for (const Corner p : segment.points) {
                    t.x.push_back(static_cast<std::uint16_t>(p.x * 65535 / 90));
                    t.y.push_back(static_cast<std::uint16_t>(p.y * 65535 / 90));
                }
            }
        }
        return t;
    }
    [[nodiscard]] BaseMap map() const
    {
        auto map = BaseMap::from(tables());
        EXPECT_TRUE(map) << map.error().message;
        return map ? *std::move(map) : BaseMap();
    }

private:
    static std::size_t binIndex(int row, int column)
    {
        return static_cast<std::size_t>(row) * 4 + static_cast<std::size_t>(column);
    }
    struct Segment {
        int level;
        Side entry;
        Side exit;
        std::vector<Corner> points;
    };
    struct Bin {
        std::vector<Segment> segments;
        std::int16_t corners = 0;
    };
    std::array<Bin, 8> m_bins;
};

bool landAt(const BaseMap& map, double longitude, double latitude)
{
    return map.isLand({.longitude = longitude, .latitude = latitude});
}

/// A continent around the south pole up to 60° S, drawn from east to west: land on its left.
Shoreline antarctica()
{
    Shoreline shore;
    for (int column = 0; column < 4; ++column)
        shore.line(1, column, 1, East, West, {{90, 30}, {45, 33}, {0, 30}});
    return shore;
}

TEST(BaseMap, LandLiesOnTheLeftAllTheWayAcrossTheBins)
{
    const BaseMap map = antarctica().map();
    for (const double longitude :
         {-180.0, -179.9, -90.0, -0.1, 0.0, 60.0, 90.0, 179.9, 180.0, 300.0}) {
        EXPECT_TRUE(landAt(map, longitude, -61)) << longitude;
        EXPECT_TRUE(landAt(map, longitude, -89.99)) << longitude;
        EXPECT_FALSE(landAt(map, longitude, -56)) << longitude;
        EXPECT_FALSE(landAt(map, longitude, 61)) << longitude;
    }
    EXPECT_TRUE(landAt(map, 45, -58)) << "the middle of each bin reaches farther north";
    EXPECT_FALSE(landAt(map, 1, -58));
}

TEST(BaseMap, LakesHaveIslandsAndGroundingLinesDoNotCount)
{
    const auto map =
        Shoreline()
            .land(0, 1)
            .line(0, 1, 2, None, None, {{10, 10}, {10, 50}, {50, 50}, {50, 10}, {10, 10}})
            .line(0, 1, 3, None, None, {{20, 20}, {30, 20}, {30, 30}, {20, 30}, {20, 20}})
            .line(0, 1, 6, None, None, {{60, 60}, {80, 60}, {80, 80}, {60, 60}})
            .map();
    EXPECT_TRUE(landAt(map, 95, 5));
    EXPECT_FALSE(landAt(map, 105, 15)) << "in the lake";
    EXPECT_TRUE(landAt(map, 115, 25)) << "on the island in it";
    EXPECT_TRUE(landAt(map, 165, 65)) << "land whatever lies under the ice";
    EXPECT_FALSE(landAt(map, 5, 5)) << "the bin beside it";
}

TEST(BaseMap, TwoShoresInOneBinMakeAStraitOrABridge)
{
    // In by the west and out by the south: land is the north-east; and the other way round.
    const std::vector<Shoreline::Corner> southWest{{0, 30}, {30, 30}, {30, 0}};
    const std::vector<Shoreline::Corner> northEast{{60, 90}, {60, 60}, {90, 60}};
    auto reversed = [](std::vector<Shoreline::Corner> line) {
        std::ranges::reverse(line);
        return line;
    };
    const auto strait = Shoreline()
                            .line(0, 0, 1, South, West, reversed(southWest))
                            .line(0, 0, 1, North, East, northEast)
                            .map();
    const auto bridge = Shoreline()
                            .line(0, 0, 1, West, South, southWest)
                            .line(0, 0, 1, East, North, reversed(northEast))
                            .map();
    const struct {
        double longitude;
        double latitude;
        bool inCorners;
    } places[] = {{5, 5, true}, {85, 85, true}, {45, 45, false}, {5, 85, false}, {85, 5, false}};
    for (const auto& place : places) {
        EXPECT_EQ(landAt(strait, place.longitude, place.latitude), place.inCorners)
            << place.longitude << ' ' << place.latitude;
        EXPECT_EQ(landAt(bridge, place.longitude, place.latitude), !place.inCorners)
            << place.longitude << ' ' << place.latitude;
    }
}

TEST(BaseMap, RefusesTablesThatLeadOutside)
{
    const auto whole = antarctica().tables();
    ASSERT_TRUE(BaseMap::from(whole));
    using Damage = void (*)(ShorelineTables&);
    const std::pair<const char*, Damage> damages[] = {
        {"no bins", [](ShorelineTables& t) { t.columns = t.rows = 0; }},
        {"not square",
         [](ShorelineTables& t) {
             t.columns = 8;
             t.rows = 1;
         }},
        {"seven around the Earth",
         [](ShorelineTables& t) {
             t.columns = 14;
             t.rows = 7;
         }},
        {"a bin less", [](ShorelineTables& t) { t.cornerLevels.pop_back(); }},
        {"segment before", [](ShorelineTables& t) { t.firstSegment[5] = -1; }},
        {"segment behind", [](ShorelineTables& t) { t.firstSegment[5] = 4; }},
        {"shared segments", [](ShorelineTables& t) { t.segmentCount[4] = t.segmentCount[5] = 3; }},
        {"point before", [](ShorelineTables& t) { t.firstPoint[0] = -1; }},
        {"point behind", [](ShorelineTables& t) { t.firstPoint[0] = 10; }},
        {"shared points", [](ShorelineTables& t) { t.segment[0] += 1 << 9; }},
        {"uneven", [](ShorelineTables& t) { t.y.pop_back(); }},
    };
    for (const auto& [why, damage] : damages) {
        auto tables = whole;
        damage(tables);
        EXPECT_FALSE(BaseMap::from(tables)) << why;
    }
}

/// Writes tables as a file of the kind the package has.
void writeFile(const std::filesystem::path& path, const ShorelineTables& t,
               const char* leaveOut = "")
{
    int file = 0;
    ASSERT_EQ(nc_create(path.c_str(), NC_NETCDF4 | NC_CLOBBER, &file), NC_NOERR);
    const auto put = [&](const char* name, nc_type type, const auto& values, auto write) {
        if (name == std::string(leaveOut))
            return;
        int dimension = 0;
        int variable = 0;
        ASSERT_EQ(nc_def_dim(file, (std::string("of_") + name).c_str(), values.size(), &dimension),
                  NC_NOERR);
        ASSERT_EQ(nc_def_var(file, name, type, 1, &dimension, &variable), NC_NOERR);
        ASSERT_EQ(write(file, variable, values.data()), NC_NOERR);
    };
    const auto putBits = [](int id, int variable, const std::uint16_t* values) {
        return nc_put_var_short(id, variable, reinterpret_cast<const short*>(values));
    };
    put("N_bins_in_360_longitude_range", NC_INT, std::vector{t.columns}, nc_put_var_int);
    put("N_bins_in_180_degree_latitude_range", NC_INT, std::vector{t.rows}, nc_put_var_int);
    put("Id_of_first_segment_in_a_bin", NC_INT, t.firstSegment, nc_put_var_int);
    put("N_segments_in_a_bin", NC_SHORT, t.segmentCount, nc_put_var_short);
    put("Embedded_node_levels_in_a_bin", NC_SHORT, t.cornerLevels, nc_put_var_short);
    put("Embedded_npts_levels_exit_entry_for_a_segment", NC_INT, t.segment, nc_put_var_int);
    put("Id_of_first_point_in_a_segment", NC_INT, t.firstPoint, nc_put_var_int);
    put("Relative_longitude_from_SW_corner_of_bin", NC_SHORT, t.x, putBits);
    put("Relative_latitude_from_SW_corner_of_bin", NC_SHORT, t.y, putBits);
    ASSERT_EQ(nc_close(file), NC_NOERR);
}

TEST(BaseMap, LoadsTheFinestFileOfAFolder)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "binned_GSHHS_l.nc", Shoreline().tables());
    writeFile(folder.path() / "binned_GSHHS_i.nc", antarctica().tables());
    const auto map = BaseMap::load(folder.path());
    ASSERT_TRUE(map) << map.error().message;
    EXPECT_TRUE(landAt(*map, 100, -85)) << "from the finer one";
    EXPECT_EQ(map->coarsestGoodScale(), 2'000'000);
}

TEST(BaseMap, SaysWhatIsWrongWithAFile)
{
    const TemporaryFolder folder;
    const auto missing = BaseMap::load(folder.path());
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.error().message.find("gmt-gshhg-low"), std::string::npos);

    const auto path = folder.path() / "binned_GSHHS_i.nc";
    const auto problem = [&] {
        const auto map = BaseMap::load(folder.path());
        return map ? std::string() : map.error().message;
    };
    for (const char* name : {"N_segments_in_a_bin", "Relative_latitude_from_SW_corner_of_bin"}) {
        writeFile(path, antarctica().tables(), name);
        EXPECT_NE(problem().find(name), std::string::npos) << problem();
    }
    writeFile(path, antarctica().tables());
    ASSERT_EQ(problem(), "");
    const auto size = std::filesystem::file_size(path);
    for (const auto length : {size / 2, size / 4, std::uintmax_t{4}, std::uintmax_t{0}}) {
        std::filesystem::resize_file(path, length);
        EXPECT_NE(problem().find(path.string()), std::string::npos) << length;
    }
    std::ofstream(path) << "no such format";
    EXPECT_NE(problem(), "");
}

/// Keeps the paths that are drawn.
class PathCanvas final : public Canvas {
public:
    void fillArea(const Path& rings, DisplayColor /*color*/) override { areas.push_back(rings); }
    void strokeLine(const Path& drawn, const Stroke& /*stroke*/) override
    {
        lines.push_back(drawn);
    }
    void placeSymbol(const SymbolDrawing& /*symbol*/, Point /*at*/, float /*degrees*/) override { }
    void placeText(const TextFigure& /*figure*/, Point /*at*/) override { }

    /// How many areas hold a pixel.
    [[nodiscard]] int areasAt(Point pixel) const
    {
        int count = 0;
        for (const Path& area : areas)
            count += area.contains(pixel) ? 1 : 0;
        return count;
    }
    std::vector<Path> areas;
    std::vector<Path> lines;
};

ViewFrame frameAt(double longitude, double latitude, int scale, float rotation)
{
    return ViewFrame::at(Position{longitude, latitude}, scale, rotation, 400, 300, 1, 66);
}

TEST(BaseMapRender, DrawsEveryPlaceOnceAlsoOverTheDateLineAndTurned)
{
    const BaseMap map = antarctica().land(0, 1).land(0, 2).map();
    for (const float rotation : {0.0F, 30.0F, 200.0F})
        for (const Position center : {Position{180, -60}, Position{-179, -60}, Position{90, 0},
                                      Position{0, -75}, Position{180, 10}}) {
            const ViewFrame frame =
                frameAt(center.longitude, center.latitude, 50'000'000, rotation);
            PathCanvas canvas;
            drawBaseMap(map, frame, {}, canvas);
            for (int x = 5; x < 400; x += 13)
                for (int y = 5; y < 300; y += 13) {
                    const Point pixel{x + 0.25, y + 0.25};
                    const Position place = frame.positionOf(pixel);
                    const bool nearShore =
                        std::abs(place.latitude) < 1 || std::abs(place.latitude + 58.5) < 3;
                    if (nearShore || std::abs(place.latitude) > 84)
                        continue;
                    EXPECT_EQ(canvas.areasAt(pixel), map.isLand(place) ? 1 : 0)
                        << place.longitude << ' ' << place.latitude << " turned " << rotation;
                }
        }
}

TEST(BaseMapRender, ShoresAreLinesAndTheEdgesOfBinsAreNot)
{
    PathCanvas canvas;
    drawBaseMap(antarctica().map(), frameAt(90, -70, 60'000'000, 0), {}, canvas);
    const double pole = frameAt(90, -70, 60'000'000, 0).pixelOf(SheetPlace{0.5, 0.05}).y;
    std::size_t points = 0;
    for (const Path& line : canvas.lines)
        for (const Point p : line.points()) {
            EXPECT_LT(p.y, pole) << "no line along the pole or between bins";
            ++points;
        }
    EXPECT_EQ(points, 4U) << "two pieces of shore that meet in the middle of the picture";
}

TEST(BaseMapRender, LeavesOutLakesTooSmallToSeeButNoIsland)
{
    const auto map =
        Shoreline()
            .land(0, 1)
            .line(0, 1, 2, None, None, {{10, 30}, {10, 31}, {11, 31}, {11, 30}, {10, 30}})
            .line(0, 0, 1, None, None, {{80, 30}, {81, 30}, {81, 31}, {80, 31}, {80, 30}})
            .map();
    const auto rings = [&](int scale) {
        PathCanvas canvas;
        drawBaseMap(map, frameAt(90, 30, scale, 0), {}, canvas);
        std::size_t count = 0;
        for (const Path& area : canvas.areas)
            count += area.subPathCount();
        return count;
    };
    EXPECT_EQ(rings(100'000'000), 2U) << "the continent and the island";
    EXPECT_EQ(rings(20'000'000), 3U) << "and the lake";
}

TEST(BaseMapRender, CutsToThePictureAndHatchesWhatIsTooFine)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "binned_GSHHS_i.nc", antarctica().tables());
    const auto map = BaseMap::load(folder.path());
    ASSERT_TRUE(map);
    PathCanvas harbour;
    drawBaseMap(*map, frameAt(90, -60, 5'000, 45), {}, harbour);
    ASSERT_FALSE(harbour.areas.empty());
    for (const auto* paths : {&harbour.areas, &harbour.lines})
        for (const Path& path : *paths)
            for (const Point p : path.points())
                EXPECT_TRUE((Rect{-17, -17, 417, 317}).contains(p)) << p.x << ' ' << p.y;
    const auto isHatched = [&](int scale) {
        PathCanvas canvas;
        drawBaseMap(*map, frameAt(90, 60, scale, 0), {}, canvas); // far from any shore
        return std::ranges::any_of(canvas.lines, [](const Path& path) { return !path.isEmpty(); });
    };
    EXPECT_TRUE(isHatched(1'000'000));
    EXPECT_FALSE(isHatched(3'000'000));
}

TEST(BaseMap, TheInstalledShorelinesKnowTheWorld)
{
    if (!std::filesystem::exists(BaseMap::systemFolder()))
        GTEST_SKIP() << "gmt-gshhg-low is not installed";
    const auto map = BaseMap::load();
    ASSERT_TRUE(map) << map.error().message;
    const struct {
        double latitude;
        double longitude;
        bool land;
        const char* what;
    } places[] = {
        {55.75, 37.6, true, "Moscow"},
        {23, 10, true, "Sahara"},
        {38.5, -98, true, "Kansas"},
        {-23.7, 133.9, true, "Alice Springs"},
        {72, -40, true, "Greenland's ice"},
        {-16.6, 179.2, true, "Vanua Levu, by the date line"},
        {67, -179, true, "Chukotka beyond it"},
        {71.2, -179.5, true, "Wrangel Island on it"},
        {-89.9, 0, true, "south pole"},
        {-75, 100, true, "East Antarctica"},
        {-80, -175, true, "Ross Ice Shelf"},
        {48.0, -88.9, true, "Isle Royale in its lake"},
        {47.7, -87.5, false, "Lake Superior"},
        {41.5, 50.5, false, "Caspian Sea"},
        {0, 180, false, "the Pacific"},
        {0.5, 0.5, false, "Gulf of Guinea"},
        {30, -40, false, "the Atlantic"},
        {89.9, 100, false, "north pole"},
        {57, 19, false, "the Baltic"},
        {-70, -170, false, "Ross Sea"},
    };
    for (const auto& place : places)
        EXPECT_EQ(landAt(*map, place.longitude, place.latitude), place.land) << place.what;
}

} // namespace
} // namespace kelvox
