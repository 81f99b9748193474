#include "connections/Recording.h"
#include "connections/MonitorLog.h"

#include "base/File.h"
#include "support/TemporaryFolder.h"
#include "support/ThreadClock.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {
namespace {

TEST(Recording, ReplaysAtTheRecordedDistancesTimesTheSpeed)
{
    TemporaryFolder folder;
    const auto path = folder.path() / "trip.nmea";
    ThreadClock clock;
    Recorder recorder(clock);
    ASSERT_TRUE(recorder.start(path));
    recorder.record("$A\r\n");
    clock.advance(6);
    recorder.record("$B");
    clock.advance(12);
    recorder.record("!C\r\n");
    ASSERT_TRUE(recorder.stop());
    EXPECT_EQ(readFile(path)->substr(0, 23), "\\c:1700000100000*6E\\$A\r");

    auto opened = Replay::open(path, clock);
    ASSERT_TRUE(opened);
    auto& replay = **opened;
    EXPECT_EQ(replay.next(), "$A\r\n");
    EXPECT_NEAR(replay.wait(), 6, 1e-3);
    clock.advance(3);
    replay.setSpeed(60);
    EXPECT_NEAR(replay.wait(), 0.05, 1e-3) << "half of it is over already";
    clock.advance(0.051);
    EXPECT_EQ(replay.next(), "$B\r\n");
    replay.setSpeed(1000);
    EXPECT_NEAR(replay.wait(), 0.2, 1e-3) << "60 is the fastest";
    EXPECT_EQ(replay.next(), std::nullopt);
    clock.advance(0.201);
    EXPECT_FALSE(replay.atEnd());
    EXPECT_EQ(replay.next(), "!C\r\n");
    EXPECT_TRUE(replay.atEnd());
}

TEST(Recording, PlainLogsAndSecondsAndLongGaps)
{
    TemporaryFolder folder;
    std::ofstream(folder.path() / "log") << "# comment\n$A\n$B\n\\s:x,c:5000*00\\$C\n$D";
    ThreadClock clock;
    auto opened = Replay::open(folder.path() / "log", clock);
    ASSERT_TRUE(opened);
    auto& replay = **opened;
    EXPECT_EQ(replay.next(), "$A\n");
    EXPECT_NEAR(replay.wait(), 0.15, 1e-6);
    clock.advance(0.16);
    EXPECT_EQ(replay.next(), "$B\n");
    EXPECT_NEAR(replay.wait(), 60, 1e-6) << "hours without data are shortened";
    clock.advance(61);
    EXPECT_EQ(replay.next(), "$C\n");
    EXPECT_NEAR(replay.wait(), 0.15, 1e-6);
    EXPECT_FALSE(Replay::open(folder.path() / "nothing", clock));
    Recorder recorder(clock);
    EXPECT_FALSE(recorder.start(folder.path() / "no/folder"));
}

TEST(Recording, AFileWithoutSentencesIsReadInPieces)
{
    TemporaryFolder folder;
    std::ofstream file(folder.path() / "log");
    for (int i = 0; i < 200'000; ++i)
        file << "this is no sentence\n";
    file << "$A\n";
    file.close();
    ThreadClock clock;
    auto opened = Replay::open(folder.path() / "log", clock);
    ASSERT_TRUE(opened);
    auto& replay = **opened;
    EXPECT_FALSE(replay.atEnd());
    EXPECT_EQ(replay.next(), std::nullopt) << "whoever stops it does not wait for all of the file";
    std::optional<std::string> line;
    while (!line && !replay.atEnd())
        line = replay.next();
    EXPECT_EQ(line, "$A\n");
}

TEST(MonitorLog, BoundedPausableFilterable)
{
    using Texts = std::vector<std::string>;
    MonitorLog log(3);
    for (const auto* line : {"$GPRMC,1\r\n", "$IIDBT,2\r\n", "$GPRMC,3\r\n", "\x01\xff!\n"})
        log.append(line);
    EXPECT_EQ(log.lines(), (Texts{"$IIDBT,2", "$GPRMC,3", "..!"}));
    const std::string half(5'000'000, 'x');
    log.append(half + half);
    EXPECT_EQ(log.lines().back().size(), 256U);
    EXPECT_EQ(log.lines("RMC"), (Texts{"$GPRMC,3"}));
    log.setPaused(true);
    log.append("$LATE");
    EXPECT_EQ(log.missed(), 1U);
    EXPECT_EQ(log.lines("LATE"), Texts());
    TemporaryFolder folder;
    ASSERT_TRUE(log.save(folder.path() / "saved.txt", "RMC"));
    EXPECT_EQ(readFile(folder.path() / "saved.txt"), "$GPRMC,3\n");
}

} // namespace
} // namespace kelvox
