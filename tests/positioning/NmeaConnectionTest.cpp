#include "positioning/NmeaConnection.h"
#include "connections/HandOver.h"
#include "connections/SirfSetup.h"
#include "positioning/OwnVessel.h"

#include "support/MainLoop.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"
#include "support/ThreadClock.h"

#include "base/File.h"

#include <gtest/gtest.h>

#include <poll.h>

#include <set>

namespace kelvox {
namespace {

using State = ConnectionStatus::State;
constexpr ReaderThread::Pace quick{.start = 0, .idle = 0.01, .simulator = 0, .restart = 0};

/// Receiver and instruments on lines of their own, all threads real.
class Bridge : public GPSListener {
public:
    Bridge()
    {
        settings.set("serialPort", gpsLine.path());
        settings.set("instruments.serialPort", instrumentsLine.path());
        gps.addListener(*this);
        gps.setInstruments(&instruments);
        gps.setRepeater(&repeater);
        connection.setInstruments(&instrumentsConnection);
        for (auto* each : {&connection, &instrumentsConnection})
            each->start();
    }
    ~Bridge() override
    {
        main.close();
        connection.stop();
        instrumentsConnection.stop();
    }
    bool opens(NmeaConnection& which)
    {
        which.open();
        return loop.runUntil([&] { return which.reader().status().state == State::Open; });
    }
    void plotPosition(Position p) override
    {
        threads.insert(std::this_thread::get_id());
        latitudes.push_back(p.latitude);
    }
    bool hasFixes(std::size_t count)
    {
        return loop.runUntil([&] { return latitudes.size() >= count; });
    }

    NullNotificationBus bus;
    NullAlarms alarms;
    MainLoop loop;
    HandOver main{loop};
    ThreadClock clock;
    MemorySettings settings;
    Strings strings;
    Compass compass;
    PseudoTerminal gpsLine, instrumentsLine;
    TCPConnectionModel network{main, clock};
    GPSNotification notification{clock, bus};
    InstrumentsController instruments{main, clock, settings, strings, compass};
    GPSController gps{{main, clock, settings, strings, alarms, notification, compass}};
    NmeaConnection connection{ConsumerRole::GPS, gps, {main, clock, settings, &network}, quick};
    Repeater repeater{clock, connection};
    NmeaConnection instrumentsConnection{
        ConsumerRole::Instruments, instruments, {main, clock, settings, &network}, quick};
    std::set<std::thread::id> threads;
    std::vector<double> latitudes;
};

std::string gll(const std::string& latitude)
{
    return completeSentence("$GPGLL," + latitude + ",N,01315.000,E", AddChecksum::Yes);
}

TEST(NmeaConnection, FixesFromASerialLineArriveOnTheMainThread)
{
    Bridge bridge;
    TemporaryFolder folder;
    ASSERT_TRUE(bridge.opens(bridge.connection));
    ASSERT_TRUE(bridge.connection.recorder().start(folder.path() / "trip"));
    bridge.gpsLine.write(gll("5230.000") + "$GPGLL,bad*00\r\n" + gll("5245.000"));
    ASSERT_TRUE(bridge.hasFixes(2));
    EXPECT_NEAR(bridge.latitudes[1], 52.75, 1e-5);
    EXPECT_EQ(bridge.threads, std::set{std::this_thread::get_id()});
    EXPECT_EQ(bridge.connection.monitor().lines("GLL").size(), 3U) << "bad ones show as well";
    ASSERT_TRUE(bridge.connection.recorder().stop());
    EXPECT_NE(readFile(folder.path() / "trip")->find(gll("5245.000")), std::string::npos);
}

TEST(NmeaConnection, RepeatsToTheInstrumentsPortAndFeedsTheServer)
{
    Bridge bridge;
    bridge.settings.set("repeat", true);
    bridge.settings.set("repeatSerialPort", bridge.instrumentsLine.path());
    ASSERT_TRUE(bridge.network.createServerConnection("0"));
    bridge.network.setServerTransmit({.gps = true});
    bridge.network.setServerLimitToProcessed(true);
    const auto addresses = resolveHost("127.0.0.1", bridge.network.serverPort());
    auto client = NetSocket::connect(addresses->front());
    ASSERT_TRUE(client);
    ASSERT_TRUE(bridge.loop.runUntil([&] { return bridge.network.serverClientCount() == 1; }));
    ASSERT_TRUE(bridge.opens(bridge.instrumentsConnection));
    ASSERT_TRUE(bridge.opens(bridge.connection));
    bridge.gpsLine.write("$GPXXX,1\r\n" + gll("5230.000"));
    ASSERT_TRUE(bridge.hasFixes(1));
    const auto repeated = "$GPXXX,1\r\n" + gll("5230.000");
    EXPECT_EQ(bridge.instrumentsLine.read(repeated.size()), repeated);
    std::string served;
    pollfd waiting{client->descriptor(), POLLIN, 0};
    while (served.size() < gll("5230.000").size() && ::poll(&waiting, 1, 10000) > 0)
        client->read(served);
    EXPECT_EQ(served, gll("5230.000")) << "only what the program decodes";
}

TEST(NmeaConnection, NetworkLinesGoTheSameWay)
{
    Bridge bridge;
    ASSERT_TRUE(bridge.network.createClientUDPConnection(bridge.connection, "0"));
    const FileDescriptor sender(::socket(AF_INET, SOCK_DGRAM, 0));
    const auto to = resolveHost("127.0.0.1", bridge.network.clientPort())->front();
    const auto text = "noise " + gll("5230.000");
    ::sendto(sender.get(), text.data(), text.size(), 0,
             reinterpret_cast<const sockaddr*>(&to.storage), to.length);
    EXPECT_TRUE(bridge.hasFixes(1));
}

TEST(NmeaConnection, ASirfReceiverIsBroughtToNmeaWhenOpenedAndLeftAloneWhenClosed)
{
    Bridge bridge;
    bridge.settings.set("type", GPSSettingsController::sirf);
    const auto opening = sirfToBinary(4800) + sirfToNmea(4800);
    ASSERT_TRUE(bridge.opens(bridge.connection));
    EXPECT_EQ(bridge.gpsLine.read(opening.size()), opening);
    bridge.gpsLine.write(gll("5230.000"));
    ASSERT_TRUE(bridge.hasFixes(1));
    // Opening it once more closes it first; what is unread then is lost with the port.
    bridge.connection.open();
    ASSERT_TRUE(bridge.loop.runUntil(
        [&] { return bridge.connection.monitor().lines("####").size() == 2; }));
    ASSERT_TRUE(bridge.loop.runUntil([&] { return bridge.connection.reader().isOpen(); }));
    // That is so on a busy machine with what it says at the closing, too.
    const auto closing = sirfToBinary(4800);
    std::string again = bridge.gpsLine.read(opening.size());
    if (again != opening)
        again += bridge.gpsLine.read(closing.size());
    EXPECT_TRUE(again == opening || again == closing + opening) << again;
    bridge.connection.close();
    ASSERT_TRUE(bridge.loop.runUntil(
        [&] { return bridge.connection.reader().status().state == State::Closed; }));
    ASSERT_TRUE(bridge.opens(bridge.connection));
    EXPECT_EQ(bridge.gpsLine.read(opening.size()), opening) << "nothing at the closing";
}

TEST(NmeaConnection, AGarminReceiverIsToldWhatItsSetupSays)
{
    Bridge bridge;
    bridge.connection.setGarminSetup(
        [](Serial& port, const auto& /*restart*/) { port.writePort("hello"); });
    bridge.settings.set("type", GPSSettingsController::garmin);
    ASSERT_TRUE(bridge.opens(bridge.connection));
    EXPECT_EQ(bridge.gpsLine.read(5), "hello");
    bridge.gpsLine.write(gll("5230.000"));
    EXPECT_TRUE(bridge.hasFixes(1));
}

TEST(NmeaConnection, LendsItsPortAndTakesItBack)
{
    Bridge bridge;
    int free = 0;
    bridge.connection.lendPort([&] { ++free; });
    EXPECT_EQ(free, 1) << "a port that is not open is free at once";
    bridge.connection.takePortBack();
    ASSERT_TRUE(bridge.opens(bridge.connection));
    bridge.connection.lendPort([&] { ++free; });
    ASSERT_TRUE(bridge.loop.runUntil([&] { return free == 2; }));
    Serial other;
    EXPECT_TRUE(other.open(bridge.gpsLine.path(), "9600"));
    other.closePort();
    bridge.connection.takePortBack();
    ASSERT_TRUE(bridge.loop.runUntil([&] { return bridge.connection.reader().isOpen(); }));
    bridge.gpsLine.write(gll("5230.000"));
    EXPECT_TRUE(bridge.hasFixes(1));
}

TEST(NmeaConnection, SleepClosesAndWakingReopens)
{
    Bridge bridge;
    ASSERT_TRUE(bridge.opens(bridge.connection));
    bridge.connection.applicationWillSleep();
    ASSERT_TRUE(bridge.loop.runUntil(
        [&] { return bridge.connection.reader().status().state == State::Closed; }));
    bridge.connection.applicationWillWake();
    ASSERT_TRUE(bridge.loop.runUntil([&] { return bridge.connection.reader().isOpen(); }));
    bridge.gpsLine.write(gll("5230.000"));
    EXPECT_TRUE(bridge.hasFixes(1));
}

TEST(GPSSettingsController, PlansFollowTheSettings)
{
    MemorySettings settings;
    const GPSSettingsController gps(settings, ConsumerRole::GPS);
    using Repeat = PortPlan::Repeat;
    settings.set("serialPort", std::string("/dev/ttyS0"));
    settings.set("repeatSerialPort", std::string("/dev/ttyS0"));
    EXPECT_EQ(gps.portPlan().repeat, Repeat::Off) << "not switched on";
    settings.set("repeat", true);
    EXPECT_EQ(gps.portPlan().repeat, Repeat::SamePort);
    settings.set("type", 5LL);
    EXPECT_FALSE(gps.portPlan().hasPort);
    EXPECT_EQ(gps.portPlan().repeat, Repeat::OwnPort);
    settings.set("instruments.serialPort", std::string("/dev/ttyS0"));
    EXPECT_TRUE(gps.repeatToInstruments());
    EXPECT_EQ(gps.portPlan().repeat, Repeat::Off);
    settings.set("instruments.useGPSPort", true);
    EXPECT_FALSE(gps.repeatToInstruments());
    settings.set("type", 2LL);
    EXPECT_TRUE(gps.portPlan().initialise && gps.portPlan().beforeReopening) << "a SiRF receiver";
}

} // namespace
} // namespace kelvox
