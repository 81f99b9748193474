#include "connections/ReaderThread.h"
#include "connections/HandOver.h"

#include "support/MainLoop.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"
#include "support/ThreadClock.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {
namespace {

using State = ConnectionStatus::State;

/// A reader with a consumer that hands every line to the main thread, as the real ones do.
class Reading : public ReaderThread::Owner {
public:
    explicit Reading(bool connects = false)
        : atStart(connects)
    {
        reader.start();
    }
    ~Reading() override
    {
        main.close();
        reader.stop();
    }
    [[nodiscard]] bool connectsAtStart() override { return atStart; }
    [[nodiscard]] PortPlan portPlan() override { return plan; }
    void connectionClosed() override { ++closed; }
    void openPortFail(const std::string& port, const std::string& reason) override
    {
        failures.push_back(port + ": " + reason);
    }
    void logFileEnded() override { ended = true; }
    void showInMonitor(std::string_view shown) override
    {
        main.performAndWait([&] { monitor.emplace_back(shown); });
    }
    void takeLines(std::span<const std::string_view> taken) override
    {
        main.performAndWait([&] { lines.insert(lines.end(), taken.begin(), taken.end()); });
    }
    bool opens()
    {
        reader.request(ReaderThread::Command::Open);
        return loop.runUntil([this] { return reader.isOpen(); });
    }
    bool comesToBe(State state)
    {
        return loop.runUntil([&] { return reader.status().state == state; });
    }

    MainLoop loop;
    HandOver main{loop};
    ThreadClock clock;
    PseudoTerminal line;
    PortPlan plan{.port = line.path(), .rate = "4800"};
    bool atStart;
    bool ended = false;
    int closed = 0;
    std::vector<std::string> failures, monitor, lines;
    ReaderThread reader{*this, main, clock, {.start = 0, .idle = 0.01, .simulator = 0}};
};

TEST(ReaderThread, LinesAreCutAndDelivered)
{
    Reading reading;
    ASSERT_TRUE(reading.opens());
    reading.line.write("half a line\n\x01noise$GPGLL,1\r\n\n!AIVDM,2\r\n");
    ASSERT_TRUE(reading.loop.runUntil([&] { return reading.lines.size() == 2; }));
    EXPECT_EQ(reading.lines, (std::vector<std::string>{"$GPGLL,1\r\n", "!AIVDM,2\r\n"}));
    EXPECT_EQ(reading.monitor.front(), "#### Open " + reading.line.path() + " at 4800");
    EXPECT_EQ(reading.monitor.size(), 5U) << "every line shows there";
    EXPECT_TRUE(reading.reader.writePort("$X\r\n"));
    EXPECT_EQ(reading.line.read(4), "$X\r\n");

    reading.reader.request(ReaderThread::Command::Close);
    ASSERT_TRUE(reading.comesToBe(State::Closed));
    ASSERT_TRUE(reading.loop.runUntil([&] { return reading.closed == 1; }));
    reading.clock.advance(1000);
    reading.reader.retryNow();
    reading.reader.request(ReaderThread::Command::Clear);
    EXPECT_FALSE(reading.reader.isOpen()) << "the user's choice stands";
}

TEST(ReaderThread, ConnectsAtStartWhenTheSettingSaysSo)
{
    Reading reading(true);
    EXPECT_TRUE(reading.comesToBe(State::Open));
}

TEST(ReaderThread, RefusedPortIsTriedAgainEverLater)
{
    Reading reading;
    reading.plan.port = "/dev/tty.kelvox-nothing";
    reading.reader.request(ReaderThread::Command::Open);
    double retryAt = 0;
    for (const double pause : {1, 2, 4, 8, 16, 30, 30}) {
        ASSERT_TRUE(reading.loop.runUntil([&] {
            const auto status = reading.reader.status();
            return status.state == State::Waiting && status.retryAt > retryAt;
        }));
        retryAt = reading.reader.status().retryAt;
        EXPECT_DOUBLE_EQ(retryAt - reading.clock.monotonicSeconds(), pause);
        reading.clock.advance(pause);
    }
    EXPECT_NE(reading.reader.status().reason.find("no such device"), std::string::npos);
    reading.plan.port = reading.line.path(); // it is plugged in
    reading.clock.advance(30);
    EXPECT_TRUE(reading.comesToBe(State::Open));
    EXPECT_TRUE(reading.failures.front().starts_with("/dev/tty.kelvox-nothing: Cannot open"));
}

TEST(ReaderThread, UnpluggedDeviceComesBack)
{
    Reading reading;
    ASSERT_TRUE(reading.opens());
    reading.line.unplug();
    ASSERT_TRUE(reading.comesToBe(State::Waiting));
    EXPECT_NE(reading.reader.status().reason.find("Plug it in again"), std::string::npos);
    PseudoTerminal again;
    reading.plan.port = again.path();
    reading.clock.advance(1);
    ASSERT_TRUE(reading.comesToBe(State::Open));
    again.write("$BACK\n");
    EXPECT_TRUE(reading.loop.runUntil([&] { return reading.lines.size() == 1; }));
}

TEST(ReaderThread, RepeatsToAPortOfItsOwnOrToTheSame)
{
    Reading reading;
    PseudoTerminal repeat;
    reading.plan.repeat = PortPlan::Repeat::OwnPort;
    reading.plan.repeatPort = repeat.path();
    reading.plan.repeatRate = "9600";
    ASSERT_TRUE(reading.opens());
    EXPECT_TRUE(reading.reader.writeRepeat("$R\r\n"));
    EXPECT_EQ(repeat.read(4), "$R\r\n");
    reading.plan.repeat = PortPlan::Repeat::SamePort;
    reading.reader.request(ReaderThread::Command::Open);
    ASSERT_TRUE(reading.loop.runUntil([&] { return reading.closed == 1; }));
    ASSERT_TRUE(reading.loop.runUntil([&] { return reading.reader.writeRepeat("$S\r\n"); }));
    EXPECT_EQ(reading.line.read(4), "$S\r\n");
}

TEST(ReaderThread, SimulatorAndLogFileStandInForThePort)
{
    Reading reading;
    reading.reader.setSimulator([] { return std::vector<std::string>{"$SIM\r\n", "!AIS\r\n"}; });
    ASSERT_TRUE(reading.loop.runUntil([&] { return reading.lines.size() >= 4; }));
    EXPECT_EQ(reading.lines[2], "$SIM\r\n");
    reading.reader.setSimulator({});

    TemporaryFolder folder;
    std::ofstream(folder.path() / "log") << "$LOG,1\r\njunk\n$LOG,2";
    auto replay = Replay::open(folder.path() / "log", reading.clock);
    ASSERT_TRUE(replay);
    reading.reader.setLogFile(std::move(*replay));
    ASSERT_TRUE(reading.loop.runUntil([&] {
        reading.clock.advance(0.05);
        reading.reader.retryNow();
        return reading.ended;
    }));
    ASSERT_GE(reading.lines.size(), 2U);
    EXPECT_EQ(reading.lines[reading.lines.size() - 2], "$LOG,1\r\n");
    EXPECT_EQ(reading.lines.back(), "$LOG,2");
}

TEST(ReaderThread, NothingIsLostOrReorderedUnderLoadAndHostileBytes)
{
    Reading reading;
    ASSERT_TRUE(reading.opens());
    constexpr int count = 20000;
    std::thread sender([&reading] {
        reading.line.write(std::string(1 << 20, '\0')); // no line end, no start character
        reading.line.write(std::string(1000, '\n'));
        for (int i = 0; i < count; ++i)
            reading.line.write("$GPXXX," + std::to_string(i) + "\r\n");
    });
    std::size_t next = 0;
    const bool all = reading.loop.runUntil([&] {
        for (; next < reading.lines.size(); ++next)
            EXPECT_EQ(reading.lines[next], "$GPXXX," + std::to_string(next) + "\r\n");
        reading.monitor.clear();
        return next == count;
    });
    sender.join();
    EXPECT_TRUE(all) << next;
}

TEST(HandOver, ClosingReleasesWhoWaits)
{
    MainLoop loop;
    HandOver main(loop);
    bool ran = false;
    std::thread reader([&] { main.performAndWait([&] { ran = true; }); });
    main.close();
    reader.join(); // would never end otherwise
    EXPECT_FALSE(ran);
    main.performAndWait([&] { ran = true; });
    EXPECT_TRUE(ran) << "the main thread does its own work at once";
}

} // namespace
} // namespace kelvox
