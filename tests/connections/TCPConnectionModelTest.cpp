#include "connections/TCPConnectionModel.h"
#include "connections/HandOver.h"
#include "connections/TCPIPController.h"

#include "support/MainLoop.h"
#include "support/ThreadClock.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>

#include <cstring>

namespace kelvox {
namespace {

using State = ConnectionStatus::State;

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

NetAddress netAddress(std::uint16_t port)
{
    NetAddress address;
    const auto four = loopback(port);
    std::memcpy(&address.storage, &four, sizeof four);
    address.length = sizeof four;
    return address;
}

/// The model with an owner that hands its lines to the main thread.
class Network : public TCPConnectionModel::Owner, public TCPConnectionModel::Observer {
public:
    Network() { model.setObserver(this); }
    ~Network() override { main.close(); }

    void readNMEASentences(std::span<const std::string_view> taken) override
    {
        clock.advance(secondsPerRead);
        main.performAndWait([&] { lines.insert(lines.end(), taken.begin(), taken.end()); });
    }
    void readNMEASentenceOverflow() override
    {
        main.post([this] { ++overflows; });
    }
    void clientSocketConnected() override { ++connected; }
    void clientSocketTimedOut() override { ++timeOuts; }
    void clientSocketDisconnected() override { ++disconnected; }
    void serverSocketTimedOut() override { ++clientsLetGo; }
    bool comesToBe(State state)
    {
        return loop.runUntil([&] { return model.clientStatus().state == state; });
    }
    bool hasLines(std::size_t count)
    {
        return loop.runUntil([&] { return lines.size() >= count; });
    }

    MainLoop loop;
    HandOver main{loop};
    ThreadClock clock;
    std::atomic<double> secondsPerRead{0};
    std::vector<std::string> lines;
    int connected = 0, timeOuts = 0, disconnected = 0, overflows = 0, clientsLetGo = 0;
    TCPConnectionModel model{main, clock};
};

/// The other program: accepts one connection and sends.
class Peer {
public:
    explicit Peer(std::uint16_t port = 0)
        : m_listening(std::move(*NetSocket::listen(port)))
    {
    }
    [[nodiscard]] std::uint16_t port() const { return m_listening.localPort(); }
    bool accept()
    {
        pollfd waiting{m_listening.descriptor(), POLLIN, 0};
        if (::poll(&waiting, 1, 10000) <= 0)
            return false;
        m_socket = std::move(*m_listening.accept());
        return true;
    }
    void send(std::string bytes)
    {
        pollfd waiting{m_socket.descriptor(), POLLOUT, 0};
        while (!bytes.empty() && ::poll(&waiting, 1, 10000) > 0)
            if (m_socket.write(bytes) == NetSocket::Answer::Closed)
                return;
    }
    void hangUp() { m_socket.close(); }

private:
    NetSocket m_listening;
    NetSocket m_socket;
};

/// A program that listens to our server.
class Listener {
public:
    explicit Listener(std::uint16_t port)
        : m_socket(std::move(*NetSocket::connect(netAddress(port))))
    {
    }
    const std::string& read(std::size_t length)
    {
        pollfd waiting{m_socket.descriptor(), POLLIN, 0};
        while (m_text.size() < length && ::poll(&waiting, 1, 10000) > 0)
            if (m_socket.read(m_text) == NetSocket::Answer::Closed)
                break;
        return m_text;
    }

private:
    NetSocket m_socket;
    std::string m_text;
};

TEST(TCPConnectionModel, ClientTakesLinesAndComesBackAfterEveryLoss)
{
    Network network;
    Peer peer;
    const auto port = std::to_string(peer.port());
    EXPECT_FALSE(network.model.createClientConnection(network, "", port));
    EXPECT_FALSE(network.model.createClientConnection(network, "127.0.0.1", ""));
    ASSERT_TRUE(network.model.createClientConnection(network, "127.0.0.1", port));
    EXPECT_FALSE(network.model.createClientConnection(network, "127.0.0.1", port))
        << "one owner at a time";
    ASSERT_TRUE(peer.accept());
    peer.send("$A\r\n$B\r\n$half");
    ASSERT_TRUE(network.hasLines(2));
    peer.send(" done\r\n$lost in the middle");
    ASSERT_TRUE(network.hasLines(3));
    EXPECT_EQ(network.lines, (std::vector<std::string>{"$A\r\n", "$B\r\n", "$half done\r\n"}));

    peer.hangUp();
    ASSERT_TRUE(network.comesToBe(State::Waiting));
    network.clock.advance(1);
    ASSERT_TRUE(peer.accept());
    ASSERT_TRUE(network.comesToBe(State::Open));
    peer.send("$C\r\n");
    ASSERT_TRUE(network.hasLines(4));
    EXPECT_EQ(network.lines.back(), "$C\r\n") << "the broken line belongs to the old connection";

    network.model.closeClientConnection();
    network.clock.advance(1000);
    EXPECT_EQ(network.model.clientStatus().state, State::Closed);
    EXPECT_TRUE(network.loop.runUntil([&] { return network.disconnected == 1; }));
    EXPECT_EQ(network.connected, 2);
}

TEST(TCPConnectionModel, RefusedConnectionIsTriedAgain)
{
    Network network;
    std::uint16_t port = 0;
    {
        const Peer gone;
        port = gone.port();
    }
    ASSERT_TRUE(network.model.createClientConnection(network, "127.0.0.1", std::to_string(port)));
    ASSERT_TRUE(network.comesToBe(State::Waiting));
    EXPECT_NE(network.model.clientStatus().reason.find("Cannot connect to 127.0.0.1"),
              std::string::npos);
    Peer back(port);
    network.clock.advance(1);
    EXPECT_TRUE(back.accept());
    EXPECT_TRUE(network.comesToBe(State::Open));
}

TEST(TCPConnectionModel, UdpTakesDatagramsAndTimesOut)
{
    Network network;
    ASSERT_TRUE(network.model.createClientUDPConnection(network, "0"));
    EXPECT_TRUE(network.model.clientUDP());
    const FileDescriptor sender(::socket(AF_INET, SOCK_DGRAM, 0));
    const auto address = loopback(network.model.clientPort());
    const auto send = [&](std::string_view bytes) {
        ::sendto(sender.get(), bytes.data(), bytes.size(), 0,
                 reinterpret_cast<const sockaddr*>(&address), sizeof address);
    };
    send("$A\r\n$B\r\n");
    send("$no end*00");
    send("!C\r\n");
    ASSERT_TRUE(network.hasLines(4));
    EXPECT_EQ(network.lines,
              (std::vector<std::string>{"$A\r\n", "$B\r\n", "$no end*00", "!C\r\n"}));

    network.clock.advance(91);
    network.model.retryNow();
    ASSERT_TRUE(network.loop.runUntil([&] { return network.timeOuts == 1; }));
    network.clock.advance(1);
    ASSERT_TRUE(network.comesToBe(State::Open));
    send("$D\r\n");
    EXPECT_TRUE(network.hasLines(5));
}

TEST(TCPConnectionModel, BurstThatTakesTooLongIsCutOff)
{
    Network network;
    Peer peer;
    ASSERT_TRUE(
        network.model.createClientConnection(network, "127.0.0.1", std::to_string(peer.port())));
    ASSERT_TRUE(peer.accept());
    network.secondsPerRead = 2.5;
    std::string burst;
    for (int i = 0; i < 500; ++i)
        burst += "$GPXXX,1\r\n";
    peer.send(burst);
    ASSERT_TRUE(network.loop.runUntil([&] { return network.overflows > 0; }));
    EXPECT_LT(network.lines.size(), 500U);
    network.secondsPerRead = 0;
    const auto before = network.lines.size();
    peer.send("$AFTER\r\n");
    ASSERT_TRUE(network.hasLines(before + 1));
    EXPECT_EQ(network.lines.back(), "$AFTER\r\n");
}

TEST(TCPConnectionModel, EveryLineArrivesInOrderAndHostileBytesAreSurvived)
{
    Network network;
    Peer peer;
    ASSERT_TRUE(
        network.model.createClientConnection(network, "127.0.0.1", std::to_string(peer.port())));
    ASSERT_TRUE(peer.accept());
    constexpr std::size_t count = 50000;
    std::thread sender([&peer] {
        const std::string half(5'000'000, '\0');
        peer.send(half + half + "\r\n");
        std::string lines;
        for (std::size_t i = 0; i < count; ++i)
            lines += "$GPXXX," + std::to_string(i) + "\r\n";
        peer.send(lines);
    });
    std::size_t next = 0;
    const bool all = network.loop.runUntil([&] {
        for (const auto& line : std::exchange(network.lines, {}))
            if (line.starts_with('$')) {
                EXPECT_EQ(line, "$GPXXX," + std::to_string(next++) + "\r\n");
            }
        return next == count;
    });
    sender.join();
    EXPECT_TRUE(all) << next;
}

TEST(TCPConnectionModel, ServerGivesEachClientTheSentences)
{
    Network network;
    ASSERT_TRUE(network.model.createServerConnection("0"));
    Listener one(network.model.serverPort());
    Listener two(network.model.serverPort());
    ASSERT_TRUE(network.loop.runUntil([&] { return network.model.serverClientCount() == 2; }));
    network.model.writeNMEASentence("$GPXTE,A,A,0.67,L,N");
    network.model.writeNMEASentence("$GPXTE,A,A,0.67,L,N*00");
    const std::string expected = "$GPXTE,A,A,0.67,L,N*6F\r\n$GPXTE,A,A,0.67,L,N*00\r\n";
    EXPECT_EQ(one.read(expected.size()), expected);
    EXPECT_EQ(two.read(expected.size()), expected);
    network.model.closeServerConnection();
    EXPECT_FALSE(network.model.serverConnected());
}

TEST(TCPConnectionModel, ClientThatTakesNothingHarmsNobody)
{
    Network network;
    ASSERT_TRUE(network.model.createServerConnection("0"));
    const Listener stuck(network.model.serverPort());
    Listener good(network.model.serverPort());
    ASSERT_TRUE(network.loop.runUntil([&] { return network.model.serverClientCount() == 2; }));
    const std::string chunk(1000, 'x');
    std::size_t written = 0;
    // More than the system and the queue together hold for the one who does not read.
    for (; written < (32U << 20); written += chunk.size()) {
        network.model.writeData(chunk);
        if (written % 64000 == 0) {
            ASSERT_GE(good.read(written).size(), written);
        }
    }
    EXPECT_EQ(network.model.serverClientCount(), 2U);
    network.clock.advance(31);
    network.model.retryNow();
    EXPECT_TRUE(network.loop.runUntil([&] { return network.clientsLetGo == 1; }));
    EXPECT_EQ(network.model.serverClientCount(), 1U);
}

TEST(TCPIPController, SwitchesBackWhatCannotBeMade)
{
    class Shown final : public Alarms {
    public:
        void beep() override { }
        void playSound(const std::string&) override { }
        void speak(const std::string&) override { }
        void show(const Alert& alert) override { keys.push_back(alert.key); }
        [[nodiscard]] bool isShown(const std::string&) const override { return false; }
        std::vector<std::string> keys;
    };
    Network network;
    const Peer taken;
    MemorySettings settings;
    Shown shown;
    TCPIPController controller(network.model, network, network.main, settings, englishStrings(),
                               shown);
    EXPECT_EQ(controller.loadSettings(),
              TCPIPController::NetworkSettings({.clientHost = "127.0.0.1"}));
    auto values = controller.loadSettings();
    values.serverEnable = values.serverGPS = values.clientModeTCP = true;
    values.serverPort = std::to_string(taken.port());
    values.clientPort = std::to_string(taken.port());
    controller.saveSettings(values);
    controller.connect();
    EXPECT_EQ(shown.keys, std::vector<std::string>{"NSFailConnect"});
    EXPECT_FALSE(controller.loadSettings().serverEnable);
    EXPECT_TRUE(controller.loadSettings().clientModeTCP);
    EXPECT_TRUE(network.comesToBe(State::Open));

    controller.lookUpServerHost();
    EXPECT_TRUE(network.loop.runUntil([&] { return !controller.serverHost().empty(); }));
    values.serverPort = "0";
    controller.saveSettings(values);
    controller.connect();
    EXPECT_TRUE(network.model.serverTransmit().gps);
}

} // namespace
} // namespace kelvox
