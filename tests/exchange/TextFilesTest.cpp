#include "ExchangeScene.h"
#include "ZipText.h"

#include "base/Strings.h"
#include "exchange/CSVExport.h"
#include "exchange/CSVImport.h"
#include "exchange/ExchangeFile.h"
#include "exchange/KMLExport.h"
#include "exchange/KMLImport.h"
#include "navigation/WaypointIcons.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace kelvox {

namespace {
using Lines = KMLImport::Lines;

Settings& settings()
{
    static MemorySettings made;
    made.set(KMLExport::iconBaseKey, std::string("http://host/a&b/"));
    return made;
}

std::string kml(const std::string& body)
{
    return "<kml><Document>" + body + "</Document></kml>";
}

TEST(ExchangeFile, AStopKeepsWhatStoodThereAndEndsReading)
{
    ExchangeScene scene;
    const auto path = scene.path("old.gpx");
    std::stop_source stop;
    ExchangeRecords records;
    records.waypoints.emplace_back().name = "NEW";
    ASSERT_TRUE(writeExchangeFile(path, {}, {}, {}, stop.get_token()));
    const auto before = scene.written("old.gpx");
    stop.request_stop();
    for (const char* name : {"old.gpx", "new.kml", "new.csv"}) {
        const auto written = writeExchangeFile(scene.path(name), {}, records, {}, stop.get_token());
        ASSERT_FALSE(written) << name;
        EXPECT_EQ(written.error().code, Error::Code::Cancelled) << name;
    }
    EXPECT_EQ(scene.written("old.gpx"), before);
    EXPECT_FALSE(std::filesystem::exists(scene.path("new.kml")));

    ImportOptions options;
    options.stop = stop.get_token();
    const auto read = GPXImport(options).import(path, records);
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().code, Error::Code::Cancelled);
}

TEST(ExchangeFile, KeepsLinesApartThatAPauseDivides)
{
    ExchangeScene scene;
    ExchangeRecords records;
    records.tracks = {trackPoint(0), trackPoint(10), trackPoint(5000)};
    const auto lines = [&] {
        EXPECT_TRUE(writeExchangeFile(scene.path("t.gpx"), {}, records));
        const auto text = scene.written("t.gpx");
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("<trkseg>", at)) != std::string::npos; ++at)
            ++count;
        return count;
    };
    EXPECT_EQ(lines(), 1U) << "files tell lines apart by colours alone";
    records.startTrackInterval = 900;
    EXPECT_EQ(lines(), 2U);
}

TEST(KMLExport, WritesTheLinesOfTheFormat)
{
    ExchangeScene scene;
    Track red = trackPoint(0, {1, 2});
    red.color = {1, 0, 0};
    scene.tracks.add(red, std::chrono::seconds(1));
    ASSERT_TRUE(KMLExport(settings()).exportTracks(scene.path("t.kml"), scene.tracks));
    const std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                             "<kml xmlns=\"http://earth.google.com/kml/2.0\">\n<Folder>\n";
    EXPECT_EQ(scene.written("t.kml"),
              head
                  + "<name>t</name>\n<Placemark>\n<Style>\n<LineStyle>\n<color>ff0000ff</color>\n"
                    "<width>2</width>\n</LineStyle>\n</Style>\n<LineString>\n<coordinates>\n"
                    "1.000000,2.000000,0\n</coordinates>\n</LineString>\n</Placemark>\n"
                    "</Folder>\n</kml>\n");
    scene.waypoint("A", {1, 2});
    scene.route("R", "A A");
    ASSERT_TRUE(KMLExport(settings()).exportRoute(scene.path("r.kml"), *scene.routes.at(0)));
    const std::string placemark =
        "<Placemark>\n<name>A</name>\n<description></description>\n<Style>\n<IconStyle>\n"
        "<scale>0.5</scale>\n<Icon>\n<href>http://host/a&amp;b/WAYPOINT.png</href>\n</Icon>\n"
        "</IconStyle>\n</Style>\n<Point>\n<coordinates>1.000000,2.000000,0</coordinates>\n"
        "</Point>\n</Placemark>\n";
    EXPECT_EQ(scene.written("r.kml"),
              head + "<name>r</name>\n" + placemark + placemark
                  + "<Placemark>\n<name>R</name>\n<Style>\n<LineStyle>\n<color>FFFF7F00</color>\n"
                    "<width>3</width>\n</LineStyle>\n</Style>\n<LineString>\n<coordinates>\n"
                    "1.000000,2.000000,0\n1.000000,2.000000,0\n</coordinates>\n</LineString>\n"
                    "</Placemark>\n</Folder>\n</kml>\n");
}

TEST(KMLImport, ReadsPointsLinesAndColours)
{
    const auto text =
        kml("<Placemark><name>A &lt;1&gt;</name><description>d</description><Style>"
            "<IconStyle><Icon><href>http://h/x/ANC%48OR.png</href></Icon></IconStyle>"
            "</Style><Point><coordinates> 10.5, 50.25 ,0 </coordinates></Point></Placemark>"
            "<Placemark><name>L</name><Style><LineStyle><color>ff0080FF</color></LineStyle></Style>"
            "<LineString><coordinates>1,2,0 3,4\n 5, 6 ,0\n10.5,50.25,0</coordinates>"
            "</LineString></Placemark>");
    ExchangeRecords tracks;
    ASSERT_TRUE(KMLImport({.key = 70, .timeZoneOffset = {}, .trackColor = {}}, Lines::AsTracks)
                    .parse(text, tracks));
    ASSERT_EQ(tracks.waypoints.size(), 1U);
    EXPECT_EQ(tracks.waypoints[0].name, "A <1>");
    EXPECT_EQ(waypointIcon(tracks.waypoints[0].iconIndex)->name, "ANCHOR");
    EXPECT_EQ(tracks.waypoints[0].positionOnGPS(), (Position{10.5, 50.25}));
    ASSERT_EQ(tracks.tracks.size(), 4U);
    EXPECT_EQ(tracks.tracks[2].positionOnGPS(), (Position{5, 6}));
    EXPECT_EQ(tracks.tracks[0].name, "70");
    EXPECT_EQ(tracks.tracks[0].date, Date(std::chrono::seconds(71)));
    EXPECT_EQ(tracks.tracks[0].color, (TrackColor{1, 128 / 255.0F, 0}));

    ExchangeRecords timed;
    ASSERT_TRUE(KMLImport({}, Lines::AsTracks)
                    .parse(kml("<Placemark><gx:Track><when>2026-07-04T12:30:05Z</when>"
                               "<gx:coord>7 8 9</gx:coord></gx:Track></Placemark>"),
                           timed));
    ASSERT_EQ(timed.tracks.size(), 1U);
    EXPECT_EQ(timed.tracks[0].positionOnGPS(), (Position{7, 8}));
    EXPECT_EQ(timed.tracks[0].date, Date(std::chrono::seconds(1783168205)));

    ExchangeScene scene;
    ModelImport target(scene.waypoints, scene.routes, scene.tracks);
    ASSERT_TRUE(KMLImport({}, Lines::AsRoutes).parse(text, target));
    ASSERT_EQ(scene.routes.count(), 1U);
    EXPECT_EQ(scene.routes.at(0)->name, "L");
    EXPECT_EQ(ExchangeScene::through(*scene.routes.at(0)), "WP0001 WP0002 WP0003 A <1>");
    EXPECT_EQ(target.finish().waypoints.created, 4U);
}

const std::string oneWaypoint = "<kml><Placemark><name>In</name><Point><coordinates>1,2"
                                "</coordinates></Point></Placemark></kml>";

/// A folder with room around it for what climbs out, and temporary files beside it.
struct KmzScene : TemporaryFolder {
    KmzScene()
    {
        std::filesystem::create_directories(path() / "a/tmp/b");
        ::setenv("TMPDIR", (path() / "a/tmp/b").c_str(), 1);
    }
    KmzScene(const KmzScene&) = delete;
    KmzScene& operator=(const KmzScene&) = delete;
    ~KmzScene() { ::unsetenv("TMPDIR"); }

    /// Imports bytes as an archive of that name. @return the names of the waypoints
    [[nodiscard]] std::string import(const std::string& bytes, const std::string& name = "x.kmz")
    {
        EXPECT_TRUE(writeFileAtomically(path() / name, bytes));
        ExchangeRecords records;
        (void)KMLImport({}, Lines::AsTracks).import(path() / name, records);
        std::filesystem::remove(path() / name);
        std::string names;
        for (const auto& waypoint : records.waypoints)
            names += waypoint.name + " ";
        return names;
    }
    /// Everything there is, the folder's own content aside.
    [[nodiscard]] std::string left() const
    {
        std::string names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path()))
            if (!entry.is_directory() || entry.path().filename().string().starts_with("kelvox"))
                names += entry.path().string() + " ";
        return names;
    }
};

TEST(KMLImport, UnpacksWhateverTheFileIsCalled)
{
    KmzScene scene;
    const auto archive = zipText({{"doc.kml", oneWaypoint}});
    for (const char* name : {"plain.kmz", "a\"b '$HOME;`x` [z]*.KMZ", "-d.kmz"})
        EXPECT_EQ(scene.import(archive, name), "In ") << name;
    EXPECT_EQ(scene.import("no archive"), "");
    EXPECT_EQ(scene.left(), "");
}

TEST(KMLImport, ArchivesThatClimbOutWriteNothingOutside)
{
    KmzScene scene;
    const auto secret = (scene.path() / "secret.kml").string();
    const struct {
        const char* why;
        std::vector<ZipMember> members;
        const char* read;
    } rows[] = {
        {"upwards",
         {{"../evil.kml", "x"}, {"../../evil.kml", "x"}, {"doc.kml", oneWaypoint}},
         "In "},
        {"upwards by the right name", {{"../doc.kml", oneWaypoint}}, ""},
        {"absolute", {{scene.path().string() + "/evil.kml", "x"}, {"doc.kml", oneWaypoint}}, "In "},
        {"through a link", {{"d", "../../..", true}, {"d/evil.kml", "x"}}, ""},
        {"the document is a link", {{"doc.kml", secret, true}}, ""},
        {"a link, then through it", {{"doc.kml", secret, true}, {"doc.kml", oneWaypoint}}, nullptr},
        {"a folder of that name", {{"doc.kml/", ""}, {"doc.kml/x", oneWaypoint}}, ""},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(writeFileAtomically(secret, "<kml/>"));
        const auto read = scene.import(zipText(row.members));
        if (row.read) {
            EXPECT_EQ(read, row.read) << row.why;
        }
        EXPECT_EQ(readFile(secret).value_or(""), "<kml/>") << row.why;
        std::filesystem::remove(secret);
        EXPECT_EQ(scene.left(), "") << row.why;
    }
}

TEST(KMLImport, DamagedArchivesLeaveNothing)
{
    KmzScene scene;
    const auto whole = zipText({{"../../evil.kml", "x"}, {"doc.kml", oneWaypoint}});
    std::mt19937 random(31);
    for (int i = 0; i < 60; ++i) {
        std::string damaged = whole;
        for (unsigned k = 0; k <= random() % 4; ++k)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        if (i % 5 == 0)
            damaged.resize(random() % damaged.size());
        (void)scene.import(damaged);
        ASSERT_EQ(scene.left(), "") << i;
    }
}

TEST(CSV, WritesAndReadsBackInEachFormat)
{
    ExchangeScene scene;
    const auto made = scene.waypoint("Rock, big", {-10.5, 59.25});
    scene.waypoints.edit(made, [](Waypoint& it) { it.description = "drying, 2 m"; });
    scene.waypoints.setMatch(std::nullopt);
    UnitsModel units;
    for (int format = 0; format < 4; ++format) {
        units.positionFormatUnits = format;
        ASSERT_TRUE(CSVExport(englishStrings(), units)
                        .exportWaypoints(scene.path("w.csv"), scene.waypoints));
        ExchangeRecords read;
        EXPECT_EQ(CSVImport({}, englishStrings(), units).importWaypoints(scene.path("w.csv"), read),
                  "");
        ASSERT_EQ(read.waypoints.size(), 1U) << scene.written("w.csv");
        EXPECT_EQ(read.waypoints[0].name, "Rock  big");
        EXPECT_EQ(read.waypoints[0].description, "drying, 2 m");
        EXPECT_EQ(read.waypoints[0].positionOnGPS(), (Position{-10.5, 59.25})) << format;
    }
}

TEST(CSV, LeavesUnknownTrackValuesEmpty)
{
    ExchangeScene scene;
    Track point = trackPoint(0, {-0.5, 50});
    point.sog = 6.25F;
    point.depth = 12;
    point.heading = 7;
    point.description = "x,y";
    scene.tracks.add(point, std::chrono::seconds(1));
    const UnitsModel units;
    ASSERT_TRUE(CSVExport(englishStrings(), units).exportTracks(scene.path("t.csv"), scene.tracks));
    const auto text = scene.written("t.csv");
    EXPECT_EQ(text, "2026-01-01 00:00:00 +0000,50.000000,-0.500000,,6.2,007,,12.0,,,x,y\n");
    EXPECT_TRUE(CSVImport::isTrack(text));
    ExchangeRecords read;
    EXPECT_EQ(CSVImport({}, englishStrings(), units).readTracks(text, read), "");
    ASSERT_EQ(read.tracks.size(), 1U);
    EXPECT_EQ(read.tracks[0].date, point.date);
    EXPECT_FALSE(isKnown(read.tracks[0].cog));
    EXPECT_EQ(read.tracks[0].depth, 12.0F);
    EXPECT_EQ(read.tracks[0].description, "x,y");
}

TEST(CSV, ReadsWhatOtherProgramsWrite)
{
    const struct {
        const char* why;
        const char* text;
        const char* found; ///< name@longitude,latitude
        int faults;
    } rows[] = {
        {"carriage returns", "A,10*30.0'N,020*00.0'E,d\rB,10*30.0'S,020*00.0'W,",
         "A@20,10.5 B@-20,-10.5 ", 0},
        {"one line", "A,10*30.0'N,020*00.0'E,d\n", "A@20,10.5 ", 0},
        {"fault", "A,x,020*00.0'E\nB,10*30.0'N,020*00.0'E\n", "B@20,10.5 ", 1},
        {"table", "\xEF\xBB\xBFNo,Latitude,Longitude,Name\n1,1.5,-2.5,\"a, \"\"b\"\"\"\n",
         "a, \"b\"@-2.5,1.5 ", 0},
        {"marks", "lat;lon\n1\u00B030\u203230\u2033S;W2\u00B0\n", "@-2,-1.50833 ", 0},
        {"degrees first", "40.5,-104.25,myroute\n", "myroute@-104.25,40.5 ", 0},
        {"signed marks", "lat,lon\n-1\u00B0 30\u2032,-2\u00B0\n", "@-2,-1.5 ", 0},
        {"no positions we know", "No,Zone,Ch,East\n1,44,R,413954\n", "", 2},
        {"out of range", "A,95,20\n", "", 1},
    };
    for (const auto& row : rows) {
        ExchangeRecords read;
        const UnitsModel units;
        const auto faults = CSVImport({}, englishStrings(), units).readWaypoints(row.text, read);
        std::ostringstream found;
        for (const auto& waypoint : read.waypoints)
            found << waypoint.name << "@" << waypoint.longitude << "," << waypoint.latitude << " ";
        EXPECT_EQ(found.str(), row.found) << row.why;
        EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), row.faults) << row.why;
    }
}

TEST(ExchangeFile, RandomTracksComeBackTheSameInEachFormat)
{
    std::mt19937 random(9);
    std::uniform_real_distribution<double> unit(-1, 1);
    ExchangeRecords written;
    for (int i = 0; i < 300; ++i) {
        Track point = trackPoint(i * 7, {unit(random) * 180, unit(random) * 90});
        if (i % 3)
            point.sog = static_cast<float>(i) / 2;
        point.color.red = i < 100 ? 0.2F : 0.6F;
        written.tracks.push_back(point);
    }
    const TemporaryFolder folder;
    for (const std::string name : {"t.gpx", "t.kml", "t.csv"}) {
        const auto path = folder.path() / name;
        ASSERT_TRUE(writeExchangeFile(path, {}, written)) << name;
        ExchangeRecords read;
        ASSERT_TRUE(readExchangeFile(path, {}, read)) << name;
        ASSERT_EQ(read.tracks.size(), written.tracks.size()) << name;
        for (std::size_t i = 0; i < read.tracks.size(); ++i) {
            const auto &was = written.tracks[i], &now = read.tracks[i];
            EXPECT_NEAR(now.latitude, was.latitude, 8.1e-6) << name;
            EXPECT_NEAR(now.longitude, was.longitude, 8.1e-6) << name;
            if (name != "t.kml") { // which has neither dates nor speeds
                EXPECT_EQ(now.date, was.date) << name;
                EXPECT_EQ(now.sog, was.sog) << name;
            }
            if (name != "t.csv" && i > 0) { // which has no lines
                EXPECT_EQ(now.color != read.tracks[i - 1].color, i == 100) << name << i;
            }
        }
    }
}

TEST(ExchangeFile, AnotherProgramReadsWhatIsWritten)
{
    if (std::system("command -v gpsbabel > /dev/null") != 0)
        GTEST_SKIP() << "gpsbabel is not installed";
    ExchangeRecords records;
    Waypoint waypoint;
    waypoint.setPositionOnGPS({-1.5, 50});
    waypoint.name = "<A> & \"B\"";
    records.waypoints.push_back(waypoint);
    waypoint.name = "C";
    records.routes.push_back({"R", {waypoint, waypoint}});
    records.tracks = {trackPoint(0), trackPoint(1), trackPoint(2)};
    const TemporaryFolder folder;
    for (const auto& [name, format] : {std::pair("a.gpx", "gpx"), std::pair("a.kml", "kml")}) {
        const auto path = (folder.path() / name).string();
        const auto out = path + ".out.gpx";
        ASSERT_TRUE(writeExchangeFile(path, {}, records));
        const std::string command = std::string("gpsbabel -t -r -w -i ") + format + " -f " + path
            + " -o gpx -F " + out + " 2>/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << name;
        ExchangeRecords read;
        ASSERT_TRUE(readExchangeFile(out, {}, read)) << name;
        ASSERT_FALSE(read.waypoints.empty()) << name;
        EXPECT_EQ(read.waypoints[0].name, "<A> & \"B\"") << name;
        EXPECT_GE(read.tracks.size(), 3U) << name;
    }
}

TEST(ExchangeFile, ReadsEveryRealFile)
{
    const auto folder = realData("exchange");
    if (!folder)
        GTEST_SKIP() << "needs KELVOX_DATA";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(*folder)) {
        if (!entry.is_regular_file() || entry.path().extension() == ".txt")
            continue;
        ExchangeRecords records;
        const auto read = readExchangeFile(entry.path(), {}, records);
        EXPECT_TRUE(read || read.error().code == Error::Code::BadSyntax) << entry.path();
    }
}
} // namespace

} // namespace kelvox
