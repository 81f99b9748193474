#include "ExchangeScene.h"
#include "GpxRules.h"

#include "exchange/ExchangeDate.h"
#include "exchange/ExchangeFile.h"
#include "exchange/GPXExport.h"
#include "navigation/WaypointIcons.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>

#include <set>

namespace kelvox {

namespace {
Date at(long long second)
{
    return Date(std::chrono::seconds(second));
}

TEST(GPXImport, ReadsWaypointsAsOtherProgramsWriteThem)
{
    ExchangeScene scene;
    scene.importGPX(
        gpx("<wpt lat=\"50.5\" lon=\" -1.25 \"><ele>3</ele>\n <name> Buoy &amp; Bell </name>"
            "<name>second</name><cmt>note</cmt><desc>text</desc><cmt>later</cmt>"
            "<sym>Buoy, White</sym></wpt>\n"
            "<wpt lat=\"1\" lon=\"200\"/>\n"
            "<wpt lat=\"2\" lon=\"3\"><cmt>only</cmt><type> Tide Station\n</type></wpt>"
            "<wpt lat=\"91\" lon=\"3\"/><wpt><trkpt lat=\"1\" lon=\"2\"/></wpt><wpt lon=\"3\"/>"));
    ASSERT_TRUE(scene.fault);
    ASSERT_EQ(scene.waypoints.count(), 3U);
    const auto& buoy = *scene.waypoints.at(0);
    EXPECT_EQ(buoy.name, "Buoy & Bell") << "the first name wins";
    EXPECT_EQ(buoy.description, "text");
    EXPECT_EQ(waypointIcon(buoy.iconIndex)->name, "BUOYWHITE");
    EXPECT_EQ(buoy.positionOnGPS(), (Position{-1.25, 50.5}));
    EXPECT_EQ(scene.waypoints.at(1)->name, "WP0001");
    EXPECT_EQ(scene.waypoints.at(1)->longitude, -160.0F);
    EXPECT_EQ(scene.waypoints.at(2)->description, "only");
    EXPECT_EQ(waypointIcon(scene.waypoints.at(2)->iconIndex)->name, "TIDESTATION");
}

TEST(GPXImport, SegmentsDifferInColourAndUndatedPointsCount)
{
    ExchangeScene scene;
    scene.options.timeZoneOffset = std::chrono::hours(2);
    scene.importGPX(gpx("<trk><name>T</name><trkseg><trkpt lat=\"1\" lon=\"2\"/>"
                        "<trkpt lat=\"1\" lon=\"3\"><course>12.5</course><speed>6</speed></trkpt>"
                        "</trkseg><trkseg><trkpt lat=\"1\" lon=\"4\">"
                        "<time>\n2026-07-04T12:00:00Z </time></trkpt></trkseg></trk>"));
    ASSERT_EQ(scene.tracks.count(), 3U);
    const auto first = scene.tracks.at(0), second = scene.tracks.at(1), third = scene.tracks.at(2);
    EXPECT_EQ(first->name, "1000");
    EXPECT_EQ(first->date, at(1001)) << "the counter after the name was taken";
    EXPECT_EQ(second->date, at(1002));
    EXPECT_EQ(second->cog, 12.5F);
    EXPECT_EQ(second->sog, 6.0F);
    EXPECT_FALSE(isKnown(first->sog));
    EXPECT_EQ(third->date, at(1783166400 + 7200)) << "the local offset is added, on purpose";
    EXPECT_FLOAT_EQ(first->color.red, 0.05F);
    EXPECT_FLOAT_EQ(third->color.blue, 0.1F);
    EXPECT_FALSE(scene.tracks.isStart(1));
    EXPECT_TRUE(scene.tracks.isStart(2));
}

TEST(GPXImport, KeepsWhatWasCompleteWhereverTheFileEnds)
{
    const std::string wpt = "<wpt lat=\"1\" lon=\"2\"><name>A</name></wpt>";
    const std::string whole = gpx(wpt + "<rte><name>R</name><rtept lat=\"3\" lon=\"4\"/></rte>");
    const auto complete = whole.find(wpt) + wpt.size();
    for (std::size_t length = 0; length < whole.find("</gpx>") + 6; ++length) {
        ExchangeRecords records;
        EXPECT_FALSE(GPXImport({}).parse(whole.substr(0, length), records)) << length;
        EXPECT_EQ(records.waypoints.size(), length >= complete ? 1U : 0U) << length;
    }
}

TEST(GPXImport, SurvivesHostileDocuments)
{
    std::string bomb = "<!DOCTYPE gpx [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 20; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            bomb += before;
        bomb += "\">";
    }
    bomb += "]><gpx><wpt lat=\"1\" lon=\"2\"><name>&a19;</name></wpt></gpx>";
    std::string chain = "<!DOCTYPE gpx [";
    for (int i = 0; i < 100'000; ++i)
        chain += "<!ENTITY e" + std::to_string(i) + " \"&e" + std::to_string(i + 1) + ";\">";
    chain += "]><gpx>&e0;</gpx>";
    std::string deep = gpx("<wpt lat=\"1\" lon=\"2\"/>");
    deep.resize(deep.find("</gpx>"));
    for (int i = 0; i < 1'000'000; ++i)
        deep += "<a>";
    const std::string longName =
        gpx("<wpt lat=\"1\" lon=\"2\"><name>" + std::string(10'000'000, 'x') + "</name></wpt>");
    const std::string longTag = gpx("<wpt lat=\"1\" lon=\"2\"/><wpt lat=\"1\" lon=\"2\" a=\""
                                    + std::string(20'000'000, 'x') + "\"/>");
    const std::string megabyte =
        gpx("<wpt a=\"" + std::string(1'000'000, 'x') + "\" lat=\"1\" lon=\"2\"/>");
    const struct {
        const char* why;
        const std::string& text;
        bool read;
        std::size_t kept;
    } rows[] = {{"bomb", bomb, false, 0},         {"chain", chain, false, 0},
                {"deep", deep, false, 1},         {"long tag", longTag, false, 1},
                {"long name", longName, true, 1}, {"megabyte attribute", megabyte, true, 1}};
    for (const auto& row : rows) {
        ExchangeRecords records;
        EXPECT_EQ(GPXImport({}).parse(row.text, records).has_value(), row.read) << row.why;
        ASSERT_EQ(records.waypoints.size(), row.kept) << row.why;
        for (const auto& waypoint : records.waypoints)
            EXPECT_LE(waypoint.name.size(), XmlLimits::longestText) << row.why;
    }
}

TEST(GPXImport, ReadsPrefixesAndEncodings)
{
    const std::string utf16 = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
                              "<gpx><wpt lat=\"1\" lon=\"2\"><name>x</name></wpt></gpx>";
    std::string wide = "\xFF\xFE";
    for (const char c : utf16)
        wide += {c, '\0'};
    const std::pair<std::string, const char*> rows[] = {
        {"<p:gpx xmlns:p=\"u\"><p:wpt lat=\"1\" "
         "lon=\"2\"><p:name>x</p:name><q:name>y</q:name></p:wpt></p:gpx>",
         "x"},
        {wide, "x"},
        {"<?xml version=\"1.0\" encoding=\"windows-1252\"?><gpx><wpt lat=\"1\" "
         "lon=\"2\"><name>\x80\xE4</name></wpt></gpx>",
         "\u20AC\u00E4"},
    };
    for (const auto& [text, name] : rows) {
        ExchangeRecords records;
        EXPECT_TRUE(GPXImport({}).parse(text, records)) << name;
        ASSERT_EQ(records.waypoints.size(), 1U) << name;
        EXPECT_EQ(records.waypoints[0].name, name);
    }
}

TEST(ModelImport, TellsNewSameAndRenamed)
{
    ExchangeScene scene;
    scene.waypoint("A", {30, 40});
    const auto file = gpx("<wpt lat=\"1\" lon=\"2\"><name>A</name></wpt>"
                          "<wpt lat=\"5\" lon=\"6\"/>"
                          "<rte><name>Trip</name><rtept lat=\"1\" lon=\"2\"><name>A</name></rtept>"
                          "<rtept lat=\"3\" lon=\"4\"><name>B</name></rtept></rte>");
    const auto first = scene.importGPX(file);
    EXPECT_EQ(first.waypoints.created, 3U);
    ASSERT_EQ(first.waypoints.renamed.size(), 1U);
    EXPECT_EQ(first.waypoints.renamed[0], (std::pair<std::string, std::string>("A", "A 2")));
    ASSERT_EQ(scene.routes.count(), 1U);
    EXPECT_EQ(ExchangeScene::through(*scene.routes.at(0)), "A 2 B");

    const auto dump = scene.dump();
    const auto second = scene.importGPX(file);
    EXPECT_EQ(second.waypoints.created, 0U);
    EXPECT_EQ(second.waypoints.same, 3U);
    EXPECT_EQ(second.routes.same, 1U);
    EXPECT_EQ(scene.dump(), dump) << "nothing doubled";
    EXPECT_EQ(second.text(),
              "3 waypoints: 0 new, 3 the same; 1 routes: 0 new, 1 the same; 0 track points");
}

TEST(ModelImport, IsOneStepAndKeepsTheLastPoints)
{
    ExchangeScene scene;
    std::string points;
    for (int i = 0; i < 50'010; ++i)
        points += "<trkpt lat=\"1\" lon=\"2\"/>";
    scene.importGPX(gpx("<trk><trkseg>" + points + "</trkseg></trk>"));
    ASSERT_EQ(scene.tracks.count(), TracksModel::mostPoints);
    EXPECT_EQ(scene.tracks.at(0)->name, "1010");
    EXPECT_TRUE(scene.tracks.isChanged());
    ASSERT_TRUE(scene.history.undo());
    EXPECT_EQ(scene.tracks.count(), 0U);
}

TEST(ModelImport, KeepsTheLastPointOfEachDateInWhateverOrder)
{
    ExchangeScene scene;
    std::string points;
    const std::pair<int, int> latitudesAndSeconds[] = {{1, 10}, {2, 30}, {3, 20}, {4, 30}, {5, 10}};
    for (const auto& [latitude, second] : latitudesAndSeconds)
        points +=
            fmt::format("<trkpt lat=\"{}\" lon=\"2\"><time>2026-05-01T10:00:{}Z</time></trkpt>",
                        latitude, second);
    EXPECT_EQ(scene.importGPX(gpx("<trk><trkseg>" + points + "</trkseg></trk>")).trackPoints, 5U);
    std::multiset<double> latitudes;
    for (const auto& point : scene.tracks.objectEnumerator())
        latitudes.insert(point->positionOnGPS().latitude);
    EXPECT_EQ(latitudes, (std::multiset<double>{3, 4, 5}));
}

TEST(GPXExport, WritesTheLinesOfTheFormat)
{
    ExchangeScene scene;
    scene.tracks.add(trackPoint(0, {-0.5, 50}), std::chrono::seconds(1));
    Track fast = trackPoint(5);
    fast.sog = 6.25F;
    fast.cog = 7;
    scene.tracks.add(fast, std::chrono::seconds(1));
    fast = trackPoint(9);
    fast.color.red = 1;
    scene.tracks.add(fast, std::chrono::seconds(1));
    ASSERT_TRUE(GPXExport().exportTracks(scene.path("Trip.gpx"), scene.tracks));
    EXPECT_EQ(scene.written("Trip.gpx"),
              R"(<?xml version="1.0" encoding="utf-8"?>
<gpx version="1.1" creator="Kelvox"
xmlns="http://www.topografix.com/GPX/1/1" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:schemaLocation="http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd">
<trk>
<name>Trip</name>
<trkseg>
<trkpt lat="50.000000" lon="-0.500000">
<time>2026-01-01T00:00:00Z</time>
</trkpt>
<trkpt lat="50.000000" lon="10.000000">
<time>2026-01-01T00:00:05Z</time>
<course>7.0</course>
<speed>6.2</speed>
</trkpt>
</trkseg>
<trkseg>
<trkpt lat="50.000000" lon="10.000000">
<time>2026-01-01T00:00:09Z</time>
</trkpt>
</trkseg>
</trk>
</gpx>
)");
    EXPECT_FALSE(GPXExport().exportTracks(scene.path("no/such/folder.gpx"), scene.tracks));
    EXPECT_FALSE(
        GPXExport().exportWaypointsFromGroup(scene.path("g.gpx"), scene.waypoints, "none"));
    EXPECT_FALSE(std::filesystem::exists(scene.path("g.gpx")));
    EXPECT_TRUE(GPXImport::isGPX(scene.path("Trip.gpx")));
    EXPECT_TRUE(GPXExport::isGPX("a/TRIP.GpX"));
}

TEST(GPXExport, RandomRecordsComeBackTheSame)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<double> unit(-1, 1);
    const std::string letters[] = {"a", "<", "&", "\"", "'", ">", "\u00E4", " b", "]]>"};
    ExchangeScene scene;
    for (int i = 0; i < 200; ++i) {
        Waypoint waypoint;
        waypoint.name = "n" + std::to_string(i);
        for (int k = 0; k < 5; ++k)
            waypoint.name += letters[random() % std::size(letters)];
        waypoint.description = i % 3 ? waypoint.name + "!" : "";
        waypoint.iconIndex = static_cast<int>(random() % waypointIcons().size());
        waypoint.setPositionOnGPS({unit(random) * 180, unit(random) * 90});
        scene.waypoints.add(waypoint);
    }
    scene.waypoints.setMatch(std::nullopt);
    ASSERT_TRUE(GPXExport().exportWaypoints(scene.path("w.gpx"), scene.waypoints));
    ExchangeRecords read;
    ASSERT_TRUE(GPXImport({}).import(scene.path("w.gpx"), read));
    ASSERT_EQ(read.waypoints.size(), scene.waypoints.count());
    for (std::size_t i = 0; i < read.waypoints.size(); ++i) {
        const auto& now = read.waypoints[i];
        const auto& was = *scene.waypoints.at(i);
        EXPECT_EQ(now.name, was.name);
        EXPECT_EQ(now.description, was.description);
        EXPECT_EQ(now.iconIndex, was.iconIndex);
        EXPECT_NEAR(now.latitude, was.latitude, 8.1e-6); // six decimals, then single precision
        EXPECT_NEAR(now.longitude, was.longitude, 8.1e-6);
        char text[32];
        std::snprintf(text, sizeof text, "lat=\"%f\"", static_cast<double>(was.latitude));
        EXPECT_NE(scene.written("w.gpx").find(text), std::string::npos) << text;
    }
}

TEST(GPXExport, KeepsTheRulesOfTheFormat)
{
    ExchangeScene scene;
    scene.waypoint("A & <B>", {-180, -90});
    scene.waypoints.edit(scene.waypoints.at(0), [](Waypoint& it) { it.description = "d"; });
    scene.waypoint("C", {179.9999, 90});
    scene.route("R", "C C");
    for (const int second : {0, 1, 5000, 5001}) { // two lines
        Track point = trackPoint(second, {0, 0});
        point.cog = 359.96F;
        point.sog = 0.04F;
        scene.tracks.add(point, std::chrono::seconds(1));
    }
    Track undated;
    undated.setPositionOnGPS({1, 1});
    scene.tracks.add(undated, std::chrono::seconds(1));
    scene.waypoints.setMatch(std::nullopt);
    const auto path = scene.path("x.gpx");
    // Course and speed stand beside the other values, as the receivers' own programs write them,
    // and not among extensions: on purpose.
    GpxRules rules({"course", "speed"});
    ASSERT_TRUE(GPXExport().exportWaypoints(path, scene.waypoints));
    EXPECT_EQ(rules.faultsOf(scene.written("x.gpx")), "");
    ASSERT_TRUE(GPXExport().exportRoute(path, *scene.routes.at(0)));
    EXPECT_EQ(rules.faultsOf(scene.written("x.gpx")), "");
    ASSERT_TRUE(GPXExport().exportTracks(path, scene.tracks));
    EXPECT_EQ(rules.faultsOf(scene.written("x.gpx")), "");
    ExchangeRecords all;
    all.waypoints = {*scene.waypoints.at(0)};
    all.routes.push_back({"R", {*scene.waypoints.at(1)}});
    all.tracks = {trackPoint(0), trackPoint(9000)};
    ASSERT_TRUE(writeExchangeFile(path, {}, all));
    EXPECT_EQ(rules.faultsOf(scene.written("x.gpx")), "");

    // The rules do find what breaks them.
    EXPECT_NE(rules.faultsOf(gpx("")), "") << "neither namespace nor creator";
    const std::string good = scene.written("x.gpx");
    const std::pair<const char*, const char*> breaks[] = {
        {"<name>A &amp; &lt;B&gt;</name>\n<desc>d</desc>", "<desc>d</desc><name>A</name>"},
        {"lat=\"-90.000000\" ", ""},
        {"lon=\"-180.000000\"", "lon=\"180\""},
        {"<rte>", "<trk></trk><rte>"},
        {"<trkseg>", "<trkseg><name>x</name>"},
        {"T00:00:00Z", " 00:00:00"},
        {"version=\"1.1\"", "version=\"1.0\""}};
    for (const auto& [from, to] : breaks) {
        std::string broken = good;
        const auto at = broken.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        broken.replace(at, std::string_view(from).size(), to);
        EXPECT_NE(rules.faultsOf(broken), "") << to;
    }
}

TEST(ExchangeDate, ReadsWhatProgramsWrite)
{
    const std::pair<const char*, long long> rows[] = {
        {"2026-07-04T12:30:05Z", 1783168205},
        {"2026-07-04T12:30:05.250+02:00", 1783161005},
        {"2026-07-04T12:30:05-0330", 1783180805},
        {"2026-07-04 12:30:05 +0000", 1783168205},
        {"2026/07/04 12:30:05", 1783168205},
        {"4 Jul 2026 12:30", 1783168200},
        {"July 4, 2026 12:30 am", 1783125000},
        {"Sat, 04 Jul 2026 12:30:05 +0200", 1783161005},
        {"Sat Jul  4 12:30:05 2026", 1783168205},
        {"07/04/2026 1:30:05 PM", 1783171805},
        {"25/07/2026", 1784937600},
        {"4.7.2026", 1783123200},
        {"20260704123005", 1783168205},
        {"20260704 123005", 1783168205},
        {"1783168205", 1783168205},
    };
    for (const auto& [text, second] : rows) {
        const auto date = parseLenientDate(text);
        ASSERT_TRUE(date) << text;
        EXPECT_EQ(std::chrono::floor<std::chrono::seconds>(*date), at(second)) << text;
    }
    for (const char* text : {"", "soon", "12:30", "2026-02-30T00:00:00Z",
                             "99999999999999999999-1-1", "9999999999", "Jul"})
        EXPECT_FALSE(parseLenientDate(text)) << text;
    EXPECT_EQ(isoDate(at(1783168205)), "2026-07-04T12:30:05Z");
}
} // namespace

} // namespace kelvox
