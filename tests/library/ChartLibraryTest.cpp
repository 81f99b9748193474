#include "library/ChartLibrary.h"

#include "raster/KapWriter.h"
#include "s57/S57CellWriter.h"
#include "support/MainLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>

namespace kelvox {
namespace {

namespace fs = std::filesystem;

/// A cell of 0.1 by 0.1 degrees with its lower left corner at a place.
S57CellWriter squareCell(const std::string& name, double west, double south,
                         std::uint32_t scale = 12'000)
{
    S57CellWriter cell({.name = name, .compiledScale = scale});
    const double east = west + 0.1;
    const double north = south + 0.1;
    cell.addArea("M_COVR", {{west, south}, {east, south}, {east, north}, {west, north}},
                 {{"CATCOV", "1"}});
    cell.addPoint("BOYCAR", {west + 0.05, south + 0.05}, {{"BOYSHP", "5"}});
    return cell;
}

KapDescription smallRaster(double west, double north)
{
    KapDescription chart;
    chart.name = "HARBOUR";
    chart.number = "7";
    chart.width = chart.height = 100;
    chart.colors = {{}, {255, 255, 255}};
    for (const auto& [x, y] : {std::pair{0, 0}, {99, 0}, {99, 99}, {0, 99}})
        chart.referencePoints.push_back({x * 1.0, y * 1.0, north - y / 1000.0, west + x / 1000.0});
    return chart;
}

class ChartLibraryTest : public testing::Test {
protected:
    ChartLibraryTest()
    {
        for (const auto& [name, west] : {std::pair{"KV5TESTA", 10.0}, {"KV5TESTB", 10.1}})
            EXPECT_TRUE(squareCell(name, west, 59).save(charts()));
        EXPECT_TRUE(squareCell("KV3TESTC", 10.2, 59, 180'000).save(charts() / "below" / "deeper"));
    }
    [[nodiscard]] fs::path charts() const { return m_folder.path() / "charts"; }
    [[nodiscard]] fs::path index() const { return m_folder.path() / "cache" / "charts.sqlite"; }

    std::unique_ptr<ChartLibrary> make(std::size_t budget = std::size_t{100} << 20)
    {
        ChartLibrary::Options options;
        options.index = index();
        options.shelf.budget = budget;
        options.shelf.threads = 2;
        options.shelf.shared = m_shared;
        options.shelf.prepare = [this](const CellGeometry&) { ++m_prepared; };
        ChartLibrary::Events events;
        events.scanned = [this](const ScanReport& report) {
            m_report = report;
            ++m_scans;
        };
        events.shownChanged = [this] { ++m_pictures; };
        events.failed = [this](const Error& error) { m_failures.push_back(error.message); };
        return std::make_unique<ChartLibrary>(m_main, options, events);
    }
    /// Waits for one more report.
    ScanReport report()
    {
        const int before = m_scans;
        EXPECT_TRUE(m_main.runUntil([&] { return m_scans > before; }));
        return m_report;
    }
    void waitForCharts(const ChartLibrary& library)
    {
        EXPECT_TRUE(m_main.runUntil([&] { return library.missing() == 0; }));
    }
    static std::string shown(const ChartLibrary& library)
    {
        std::string names;
        for (const auto& geometry : library.shown().cells)
            names += geometry->cell().s57CatalogRecord()->path.stem().string() + " ";
        for (const auto& raster : library.shown().rasters)
            names += raster->shortName() + " ";
        return names;
    }
    static ChartArea around(double longitude, double latitude, double scale = 12'000)
    {
        return {{longitude - 0.01, latitude - 0.01, longitude + 0.01, latitude + 0.01}, scale};
    }

    TemporaryFolder m_folder;
    MainLoop m_main;
    std::shared_ptr<SharedCharts> m_shared; ///< by the libraries made after it was set
    ScanReport m_report;
    int m_scans = 0;
    int m_pictures = 0;
    std::atomic<int> m_prepared = 0;
    std::vector<std::string> m_failures;
};

TEST_F(ChartLibraryTest, ReadsOnlyWhatIsNewOrChanged)
{
    {
        const auto library = make();
        library->setPlaces({charts()});
        ScanReport scan = report();
        EXPECT_EQ(scan.found, 3U);
        EXPECT_EQ(scan.read, 3U);
        library->rescan();
        EXPECT_EQ(report().read, 0U);
    }
    // The next start of the program.
    const auto library = make();
    library->setPlaces({charts()});
    EXPECT_EQ(report().read, 0U);
    ASSERT_EQ(library->charts().size(), 3U);
    EXPECT_NEAR(library->bounds().left, 10.0, 1e-6);
    EXPECT_NEAR(library->bounds().right, 10.3, 1e-6);

    // An update beside a cell, a new cell, one that goes.
    auto update = squareCell("KV5TESTA", 10.0, 59).update("20260301");
    update.addPoint("BOYCAR", {10.02, 59.02}, {{"BOYSHP", "5"}});
    ASSERT_TRUE(update.save(charts()));
    ASSERT_TRUE(squareCell("KV5TESTD", 10.3, 59).save(charts()));
    fs::remove(charts() / "KV5TESTB.000");
    library->rescan();
    const ScanReport scan = report();
    EXPECT_EQ(scan.found, 3U);
    EXPECT_EQ(scan.read, 2U);
    EXPECT_EQ(scan.removed, 1U);
    const auto& known = library->charts();
    const auto a = std::find_if(known.begin(), known.end(),
                                [](const auto& chart) { return chart->name == "KV5TESTA"; });
    ASSERT_NE(a, known.end());
    EXPECT_EQ((*a)->update, 1);
    EXPECT_TRUE(m_failures.empty());
}

TEST_F(ChartLibraryTest, ADamagedIndexIsMadeAnew)
{
    const auto scanWithIndex = [&] {
        const auto library = make();
        library->setPlaces({charts()});
        return report().read;
    };
    EXPECT_EQ(scanWithIndex(), 3U);
    EXPECT_EQ(scanWithIndex(), 0U);

    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(index().c_str(), &database), SQLITE_OK);
    sqlite3_exec(database, "PRAGMA user_version=999", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    EXPECT_EQ(scanWithIndex(), 3U) << "of another version";

    ASSERT_EQ(sqlite3_open(index().c_str(), &database), SQLITE_OK);
    sqlite3_exec(database,
                 "UPDATE chart SET coverage=x'FFFFFFFF', west='far' WHERE name='KV5TESTB'", nullptr,
                 nullptr, nullptr);
    sqlite3_close(database);
    EXPECT_EQ(scanWithIndex(), 1U) << "one row makes no sense";

    fs::remove(index().string() + "-wal");
    std::ofstream(index(), std::ios::binary | std::ios::trunc) << "no database at all";
    EXPECT_EQ(scanWithIndex(), 3U) << "overwritten";
    fs::resize_file(index(), fs::file_size(index()) / 2);
    EXPECT_EQ(scanWithIndex(), 3U) << "cut short";
    fs::remove_all(index().parent_path());
    std::ofstream(index().parent_path()) << "a file where the folder should be";
    EXPECT_EQ(scanWithIndex(), 3U) << "cannot be written";
}

TEST_F(ChartLibraryTest, LoadsWhatTheViewNeedsAndKeepsTheOldPictureMeanwhile)
{
    const auto library = make();
    library->setPlaces({charts()});
    report();
    EXPECT_EQ(shown(*library), "");
    library->setView(around(10.05, 59.05));
    waitForCharts(*library);
    EXPECT_EQ(shown(*library), "KV5TESTA ");
    EXPECT_EQ(m_prepared, 1);

    library->setView(around(10.25, 59.05, 180'000));
    EXPECT_EQ(shown(*library), "KV5TESTA ") << "until the other chart is there";
    waitForCharts(*library);
    EXPECT_EQ(shown(*library), "KV3TESTC ");

    const int pictures = m_pictures;
    library->setView(around(10.251, 59.05, 180'000));
    EXPECT_EQ(m_pictures, pictures) << "nothing else to show";
    library->setPlaces({});
    report();
    EXPECT_EQ(shown(*library), "");
}

TEST_F(ChartLibraryTest, ShowsTheNewContentOfAChangedFile)
{
    const auto library = make();
    library->setPlaces({charts()});
    report();
    library->setView(around(10.05, 59.05));
    waitForCharts(*library);
    const auto before = library->shown().cells.front();

    auto changed = squareCell("KV5TESTA", 10.0, 59);
    changed.addPoint("BOYCAR", {10.01, 59.01}, {{"BOYSHP", "4"}});
    ASSERT_TRUE(changed.save(charts()));
    library->rescan();
    EXPECT_EQ(report().read, 1U);
    waitForCharts(*library);
    const auto after = library->shown().cells.front();
    EXPECT_NE(before, after);
    EXPECT_EQ(after->cell().s57Features().size(), before->cell().s57Features().size() + 1);
}

TEST_F(ChartLibraryTest, ASecondWindowTakesItsChartsFromTheFirst)
{
    m_shared = std::make_shared<SharedCharts>();
    const auto show = [this](ChartLibrary& library) {
        library.setPlaces({charts()});
        report();
        library.setView(around(10.05, 59.05));
        waitForCharts(library);
        return library.shown().cells.front();
    };
    auto first = make();
    const auto second = make();
    const auto cell = show(*first);
    EXPECT_EQ(show(*second), cell);
    EXPECT_EQ(m_prepared, 2) << "each window sees to the symbols it shows";
    first.reset();
    EXPECT_EQ(second->shown().cells.front(), cell);

    ASSERT_TRUE(squareCell("KV5TESTA", 10.0, 59, 9'000).save(charts()));
    const auto third = make();
    EXPECT_NE(show(*third), cell) << "the file has changed since";
}

TEST_F(ChartLibraryTest, GivesBackTheMemoryOfWhatWasNotUsedForLongest)
{
    const auto library = make(1); // room for nothing but what is wanted
    library->setPlaces({charts()});
    report();
    library->setView(around(10.05, 59.05));
    waitForCharts(*library);
    library->setView(around(10.25, 59.05, 180'000));
    waitForCharts(*library);
    EXPECT_EQ(library->shelf().count(), 1U);
    EXPECT_EQ(m_prepared, 2);
    library->setView(around(10.05, 59.05));
    waitForCharts(*library);
    EXPECT_EQ(m_prepared, 3) << "read again";
}

TEST_F(ChartLibraryTest, TellsOnceWhatCannotBeReadAndGoesOn)
{
    std::ofstream(charts() / "KV5BROKE.000") << "this is no chart";
    const auto library = make();
    library->setPlaces({charts(), charts() / "gone"});
    EXPECT_EQ(report().found, 4U);
    ASSERT_EQ(m_failures.size(), 2U);
    EXPECT_NE((m_failures[0] + m_failures[1]).find("KV5BROKE.000"), std::string::npos);
    EXPECT_NE((m_failures[0] + m_failures[1]).find("gone: is not there"), std::string::npos);
    library->setPlaces({charts()});
    EXPECT_EQ(report().read, 0U);
    EXPECT_EQ(m_failures.size(), 2U);
    library->setView(around(10.05, 59.05));
    waitForCharts(*library);
    EXPECT_EQ(shown(*library), "KV5TESTA ");
}

TEST_F(ChartLibraryTest, RastersAreIndexedAndShownToo)
{
    const auto plain = [](int, std::span<std::uint8_t> row) {
        std::fill(row.begin(), row.end(), std::uint8_t{1});
    };
    auto older = smallRaster(30, 60);
    older.scrambled = true;
    const auto folder = charts() / "maps";
    ASSERT_TRUE(
        writeFileAtomically(folder / "HARBOUR_1.KAP", writeKap(smallRaster(20, 60), plain)));
    ASSERT_TRUE(writeFileAtomically(folder / "harbour_2.no1", writeKap(older, plain)));
    const auto library = make();
    library->setPlaces({charts()});
    EXPECT_EQ(report().read, 5U);
    for (const auto& [longitude, chart] :
         {std::pair{20.05, "HARBOUR_1 "}, std::pair{30.05, "harbour_2 "}}) {
        library->setView(around(longitude, 59.95, 50'000));
        waitForCharts(*library);
        EXPECT_EQ(shown(*library), chart);
    }
    library->setChoice(ChartChoice::Cells);
    EXPECT_EQ(shown(*library), "");
}

TEST_F(ChartLibraryTest, ARasterWithoutAPlaceIsToldAndDisturbsNoOther)
{
    const auto white = [](int, std::span<std::uint8_t> row) {
        std::fill(row.begin(), row.end(), std::uint8_t{1});
    };
    KapDescription lost = smallRaster(20, 60);
    lost.referencePoints.clear();
    ASSERT_TRUE(writeFileAtomically(charts() / "LOST.KAP", writeKap(lost, white)));
    ASSERT_TRUE(writeFileAtomically(charts() / "HERE.KAP", writeKap(smallRaster(20, 60), white)));
    const auto library = make();
    library->setPlaces({charts()});
    EXPECT_EQ(report().found, 5U);
    ASSERT_EQ(m_failures.size(), 1U);
    EXPECT_NE(m_failures[0].find("LOST.KAP"), std::string::npos);
    EXPECT_NE(m_failures[0].find("does not tell its place"), std::string::npos);
    library->setView(around(20.05, 59.95, 50'000));
    waitForCharts(*library);
    EXPECT_EQ(shown(*library), "HERE ");
    const Rect all = library->bounds();
    EXPECT_NEAR(all.left, 10, 1e-6) << "not at zero, where a chart without a place would lie";
    EXPECT_NEAR(all.bottom, 59, 1e-6);
}

TEST_F(ChartLibraryTest, MayGoAwayAtAnyMoment)
{
    for (int steps = 0; steps < 12; ++steps) {
        auto library = make();
        library->setPlaces({charts()});
        library->setView(around(10.05, 59.05));
        int left = steps;
        m_main.runUntil([&] { return left-- <= 0; });
        library.reset();
    }
    SUCCEED();
}

} // namespace
} // namespace kelvox
