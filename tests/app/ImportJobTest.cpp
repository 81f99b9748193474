#include "app/NavScene.h"

#include "app/FileOpener.h"
#include "app/nav/ExportJob.h"
#include "app/nav/ImportJob.h"

#include <QPushButton>

#include <fstream>

namespace kelvox {
namespace {

class ImportJobTest : public NavScene {
protected:
    std::filesystem::path write(const char* name, const std::string& content)
    {
        const auto file = folder.path() / name;
        std::ofstream(file) << content;
        return file;
    }
    void import(const std::vector<std::filesystem::path>& files)
    {
        // Shared: on a machine so slow that the wait gives up, the job ends after this function.
        const auto finished = std::make_shared<bool>(false);
        auto* job = ImportJob::start(actions(), files);
        QObject::connect(job, &ImportJob::finished, &window, [finished] { *finished = true; });
        waitFor([&] { return *finished; });
    }
    static std::string waypointText(const char* name, double latitude)
    {
        return "<wpt lat=\"" + std::to_string(latitude) + "\" lon=\"10\"><name>" + name
            + "</name></wpt>";
    }
};

TEST_F(ImportJobTest, WhatIsExportedComesBackAsOneStep)
{
    const auto a = waypoint("A", {300, 300});
    route("Trip", {a, waypoint("B", {500, 300})});
    for (int i = 0; i < 300; ++i) {
        Track point;
        point.set({10 + i / 1e4, 55}, Date(std::chrono::seconds(1'000'000 + 60 * i)), 90, 5, 0, 0,
                  0, 0, 0, 0, {}, {});
        program.tracks().add(std::move(point), std::chrono::seconds(1));
    }
    const auto file = folder.path() / "all.gpx";
    ASSERT_TRUE(ExportWork::of(program, {}).write(file));
    program.tracks().removeAll();
    program.routes().removeAll();
    program.waypoints().removeAll();

    import({file});
    EXPECT_EQ(program.waypoints().count(), 2U);
    ASSERT_EQ(program.routes().count(), 1U);
    EXPECT_EQ(through(program.routes().route(0)), "A B");
    EXPECT_EQ(program.tracks().count(), 300U);
    program.undo();
    EXPECT_EQ(program.waypoints().count() + program.routes().count() + program.tracks().count(),
              0U);
}

TEST_F(ImportJobTest, ACancelledImportLeavesNothing)
{
    std::string content = "<gpx>";
    for (int i = 0; i < 20'000; ++i)
        content += waypointText(("W" + std::to_string(i)).c_str(), 50 + i / 1e4);
    bool finished = false;
    auto* job = ImportJob::start(actions(), {write("many.gpx", content + "</gpx>")});
    QObject::connect(job, &ImportJob::finished, &window, [&] { finished = true; });
    while (program.waypoints().count() == 0 && !finished)
        QApplication::processEvents(); // one turn at a time
    ASSERT_FALSE(finished) << "too quick to be cancelled";
    job->cancel();
    EXPECT_EQ(program.waypoints().count(), 0U);
    EXPECT_FALSE(sharedEditHistory().canUndo());
}

TEST_F(ImportJobTest, ABrokenFileKeepsWhatWasCompleteAndOthersFollow)
{
    import({write("broken.gpx", "<gpx>" + waypointText("WHOLE", 50) + "<wpt lat=\"51\""),
            write("second.csv",
                  "NEXT,55\xC2\xB0"
                  "30.000'N,010\xC2\xB0"
                  "00.000'E,Behind it\n"),
            folder.path() / "missing.kml"});
    EXPECT_EQ(program.waypoints().count(), 2U);
    const auto next = program.waypoints().waypointFromName("NEXT");
    ASSERT_TRUE(next);
    EXPECT_NEAR(next->latitude, 55.5, 1e-5);
}

TEST_F(ImportJobTest, TheCardTakesTheImportBackOnlyWhileItIsTheLastStep)
{
    import({write("one.gpx", "<gpx>" + waypointText("ONE", 50) + "</gpx>")});
    const auto undoButton = [&]() -> QPushButton* {
        for (auto* button : window.findChildren<QPushButton*>())
            if (button->isVisible() && button->text() == QStringLiteral("Undo"))
                return button;
        return nullptr;
    };
    ASSERT_TRUE(undoButton());
    waypoint("MINE", {300, 300});
    undoButton()->click();
    EXPECT_EQ(program.waypoints().count(), 2U) << "what the user made since is not taken back";
    program.undo();
    import({write("two.gpx", "<gpx>" + waypointText("TWO", 51) + "</gpx>")});
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(undoButton());
    undoButton()->click();
    EXPECT_EQ(program.waypoints().count(), 1U);
}

TEST_F(ImportJobTest, LinesOfKmlBecomeTracksWhereTheUserWantsThem)
{
    import({write("line.kml",
                  "<kml><Placemark><LineString><coordinates>10,55 10.1,55 10.2,55"
                  "</coordinates></LineString></Placemark></kml>")});
    EXPECT_EQ(program.routes().count(), 1U);
    EXPECT_EQ(program.tracks().count(), 0U);
    QPushButton* asTracks = nullptr;
    for (auto* button : window.findChildren<QPushButton*>())
        if (button->isVisible() && button->text() == QStringLiteral("Lines as tracks"))
            asTracks = button;
    ASSERT_TRUE(asTracks);
    asTracks->click();
    waitFor([&] { return program.tracks().count() == 3; });
    EXPECT_EQ(program.routes().count() + program.waypoints().count(), 0U);
}

TEST_F(ImportJobTest, AnExportIsWrittenInTheBackgroundAndCanBeGivenUp)
{
    waypoint("A", {300, 300});
    const auto file = folder.path() / "out.gpx";
    const auto run = [&](bool cancelled) {
        const auto written = std::make_shared<std::optional<bool>>();
        auto* job = ExportJob::start(actions(), {}, file);
        QObject::connect(job, &ExportJob::finished, &window,
                         [written](bool done) { *written = done; });
        if (cancelled)
            job->cancel();
        waitFor([&] { return written->has_value(); });
        return written->value_or(false);
    };
    EXPECT_TRUE(run(false));
    const auto size = std::filesystem::file_size(file);
    waypoint("B", {400, 300});
    if (!run(true)) {
        EXPECT_EQ(std::filesystem::file_size(file), size) << "what stood there stays";
    }
    EXPECT_TRUE(run(false));
    EXPECT_GT(std::filesystem::file_size(file), size);
}

TEST(FileOpener, HandsEachKindToThePartThatKnowsIt)
{
    FileOpener opener;
    FileOpener::Files records;
    FileOpener::Files rest;
    opener.add(&ImportJob::canRead, [&](const FileOpener::Files& files) { records = files; });
    opener.setFallback([&](const FileOpener::Files& files) { rest = files; });
    opener.open({"/a/Trip.GPX", "/a/US5.000", "/a/trip.kmz", "/a/table.csv", "/a/chart.kap"});
    EXPECT_EQ(records, (FileOpener::Files{"/a/Trip.GPX", "/a/trip.kmz", "/a/table.csv"}));
    EXPECT_EQ(rest, (FileOpener::Files{"/a/US5.000", "/a/chart.kap"}));
}

} // namespace
} // namespace kelvox
