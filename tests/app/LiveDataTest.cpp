#include "app/LiveScene.h"
#include "support/AISWriter.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {

namespace {
using State = ConnectionStatus::State;

TEST(LiveData, APositionComesFromThePortThroughTheThreadToTheMainThread)
{
    LiveScene scene;
    PseudoTerminal terminal;
    scene.settings.set("serialPort", terminal.path());
    scene.settings.set("connectGPSAtStartup", true);
    scene.start();
    EXPECT_TRUE(scene.live->isConnected());
    int moves = 0;
    QObject::connect(scene.live.get(), &LiveData::vesselMoved, [&] { ++moves; });
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Open; }));
    terminal.write(LiveScene::rmc("5954.000"));
    ASSERT_TRUE(runUntil([&] { return moves == 1; }));
    EXPECT_NEAR(scene.live->gps().position().latitude, 59.9, 1e-4);
    EXPECT_FALSE(scene.live->gps().positionIsStale());
    // The companion hears of it in the same breath.
    ASSERT_EQ(scene.bus.posted.size(), 1U);
    EXPECT_TRUE(scene.bus.posted.front().starts_with("gpsPosition 10.5"));
}

TEST(LiveData, TheSimulationRunsThroughTheReaderWithInstrumentsOnTheSamePort)
{
    LiveScene scene;
    scene.settings.set("instruments.useGPSPort", true);
    scene.start();
    EXPECT_FALSE(scene.live->isConnected());
    scene.live->simulator().setPosition({.longitude = 10.5, .latitude = 59.9});
    scene.live->setSimulating(true);
    ASSERT_TRUE(runUntil([&] { return scene.live->gps().position().isKnown(); }));
    ASSERT_TRUE(runUntil([&] { return !scene.live->depths().empty(); }));
    EXPECT_FALSE(scene.live->connection(ConsumerRole::GPS).monitor().lines("RMC").empty());
}

TEST(LiveData, OpeningAPortStopsTheSimulation)
{
    LiveScene scene;
    PseudoTerminal terminal;
    scene.settings.set("serialPort", terminal.path());
    scene.start();
    scene.live->simulator().setPosition({.longitude = -27.4, .latitude = 47.5});
    scene.live->setSimulating(true);
    ASSERT_TRUE(runUntil([&] { return scene.live->gps().position().isKnown(); }));
    scene.live->open(ConsumerRole::GPS);
    EXPECT_FALSE(scene.live->isSimulated());
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Open; }));
    terminal.write(LiveScene::rmc("5954.000"));
    EXPECT_TRUE(runUntil([&] { return scene.live->gps().position().latitude > 59; }));
}

TEST(LiveData, AnotherPortInTheSettingsIsOpenedAndAClosedConnectionStaysClosed)
{
    LiveScene scene;
    PseudoTerminal first;
    PseudoTerminal second;
    scene.settings.set("serialPort", first.path());
    scene.start();
    scene.live->open(ConsumerRole::GPS);
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Open; }));
    scene.set("serialPort", second.path());
    ASSERT_TRUE(runUntil([&] {
        const auto status = scene.live->status(ConsumerRole::GPS);
        return status.state == State::Open && status.target.starts_with(second.path());
    }));
    scene.live->close(ConsumerRole::GPS);
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Closed; }));
    scene.set("serialPort", first.path());
    bool later = false;
    QTimer::singleShot(700, [&] { later = true; });
    ASSERT_TRUE(runUntil([&] { return later; }));
    EXPECT_EQ(scene.live->status(ConsumerRole::GPS).state, State::Closed);
}

TEST(LiveData, AFailureIsToldOnceHoweverOftenItIsTriedAgain)
{
    LiveScene scene;
    scene.settings.set("serialPort", std::string("/nonexistent/port"));
    scene.start();
    int told = 0;
    QObject::connect(scene.live.get(), &LiveData::connectionFailed, [&] { ++told; });
    scene.live->open(ConsumerRole::GPS);
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Waiting; }));
    EXPECT_FALSE(scene.live->status(ConsumerRole::GPS).reason.empty());
    scene.live->connection(ConsumerRole::GPS).reader().retryNow();
    int lines = 0;
    QTimer::singleShot(300, [&] { lines = 1; });
    ASSERT_TRUE(runUntil([&] { return lines == 1; }));
    EXPECT_EQ(told, 1);
}

TEST(LiveData, ARecordingIsReplayedFasterAndEndsByItself)
{
    const TemporaryFolder folder;
    const auto log = folder.path() / "passage.nmea";
    {
        std::ofstream file(log);
        for (int minute = 0; minute < 10;
             ++minute) // four seconds apart: 40 s at the log's own pace
            file << "\\c:" << 1'700'000'000 + 4 * minute << "\\"
                 << LiveScene::rmc(("590" + std::to_string(minute) + ".000").c_str());
    }
    LiveScene scene;
    scene.start();
    ASSERT_TRUE(scene.live->replay(ConsumerRole::GPS, log));
    scene.live->setReplaySpeed(ConsumerRole::GPS, 60);
    EXPECT_TRUE(scene.live->isReplaying(ConsumerRole::GPS));
    ASSERT_TRUE(runUntil([&] { return !scene.live->isReplaying(ConsumerRole::GPS); }));
    EXPECT_NEAR(scene.live->gps().position().latitude, 59.15, 1e-4);
    EXPECT_FALSE(scene.live->replay(ConsumerRole::GPS, folder.path() / "missing"));
}

TEST(LiveData, TheAutopilotHearsWhereToSteerAndThenThatThereIsNothing)
{
    LiveScene scene;
    PseudoTerminal terminal;
    scene.settings.set("serialPort", terminal.path());
    scene.settings.set("repeat", true);
    scene.settings.set("repeatSerialPort", terminal.path()); // out on the port it comes in on
    scene.start();
    scene.live->open(ConsumerRole::GPS);
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Open; }));
    scene.live->setSteering(SteeringTarget{.name = "BUOY4",
                                           .position = {.longitude = 10.6, .latitude = 59.9},
                                           .legStart = {.longitude = 10.4, .latitude = 59.9}});
    std::string heard;
    ASSERT_TRUE(runUntil([&] {
        terminal.write(LiveScene::rmc("5954.000"));
        heard += terminal.readAvailable();
        return heard.find("$GPAPB") != std::string::npos;
    }));
    EXPECT_NE(heard.find("BUOY4"), std::string::npos);
    EXPECT_TRUE(scene.live->gps().gotoActive());
    scene.live->setSteering(std::nullopt);
    EXPECT_TRUE(scene.live->gps().gotoActive()) << "or the autopilot would keep its stale target";
}

TEST(LiveData, EndsAtOnceWhileAReaderWaitsForTheMainThread)
{
    LiveScene scene;
    PseudoTerminal terminal;
    scene.settings.set("serialPort", terminal.path());
    scene.start();
    scene.live->open(ConsumerRole::GPS);
    ASSERT_TRUE(
        runUntil([&] { return scene.live->status(ConsumerRole::GPS).state == State::Open; }));
    // Its hand-over is posted, and the main thread never comes to it.
    terminal.write(LiveScene::rmc("5954.000"));
    auto& monitor = scene.live->connection(ConsumerRole::GPS).monitor();
    while (monitor.lines("RMC").empty()) { }
    scene.live.reset();
    QCoreApplication::processEvents(); // what was posted finds nobody, and harms nobody
}

TEST(LiveData, ManyTargetsAreToldOfAtMostTenTimesASecond)
{
    LiveScene scene;
    scene.start();
    int told = 0;
    QObject::connect(scene.live.get(), &LiveData::targetsChanged, [&] { ++told; });
    for (int i = 0; i < 200; ++i) {
        const RawReport report{.mmsi = 211'000'000U + static_cast<unsigned>(i),
                               .longitude = RawReport::raw(10.5),
                               .latitude = RawReport::raw(59.9),
                               .speed = 100};
        scene.live->gps().processRawSentence(report.classA().sentence());
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(runUntil([&] { return told > 0; }));
    EXPECT_LT(told, 50);
    EXPECT_EQ(scene.live->ais().model().count(), 200U);
}

TEST(LiveData, TheSwingTrackIsThatOfTheWatchAndStaysBounded)
{
    LiveScene scene;
    scene.settings.set("anchorDragDistance", 50.0);
    scene.start();
    auto& gps = scene.live->gps();
    const auto at = [](int step) {
        return GPSController::PositionFields{.time = {},
                                             .latitude = step % 2 == 0 ? "5954.000" : "5954.010",
                                             .northSouth = "N",
                                             .longitude = "01030.000",
                                             .eastWest = "E"};
    };
    gps.setPosition(at(0));
    EXPECT_TRUE(scene.live->swing().empty());
    gps.setAnchorAlarm(true);
    for (int step = 0; step < 10'000; ++step)
        gps.setPosition(at(step));
    EXPECT_GT(scene.live->swing().size(), 2000U);
    EXPECT_LE(scene.live->swing().size(), 4096U);
    gps.setAnchorAlarm(false);
    gps.setAnchorAlarm(true);
    EXPECT_EQ(scene.live->swing().size(), 1U);
}
} // namespace
} // namespace kelvox
