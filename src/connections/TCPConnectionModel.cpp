#include "connections/TCPConnectionModel.h"

#include <fmt/format.h>
#include <poll.h>

#include <array>
#include <cstring>
#include <utility>

namespace kelvox {
namespace {

constexpr std::size_t linesAtOnce = 64;
constexpr std::size_t longestQueue = std::size_t{256} * 1024; // bytes waiting for one client
constexpr std::size_t mostServerClients = 64;
constexpr double stalledTimeout = 30; // seconds
constexpr int longestPoll = 250; // milliseconds, so that time-outs are seen

} // namespace

/// A look-up in progress. Its thread may outlive the model, since nothing can end it early.
struct TCPConnectionModel::Resolution {
    std::mutex mutex;
    std::optional<Result<std::vector<NetAddress>>> answer;
};

TCPConnectionModel::TCPConnectionModel(Executor& main, const Clock& clock)
    : m_main(main)
    , m_clock(clock)
    , m_wakeUp(std::make_shared<WakeUp>())
{
    m_thread = std::thread([this] { run(); });
}

TCPConnectionModel::~TCPConnectionModel()
{
    m_stopping = true;
    m_wakeUp->ring();
    m_thread.join();
}

bool TCPConnectionModel::createClientConnection(Owner& owner, const std::string& host,
                                                const std::string& port)
{
    const std::scoped_lock lock(m_mutex);
    const auto number = portNumber(port);
    if (m_owner || host.empty() || !number || *number == 0) {
        m_lastError = m_owner ? "There is a connection already."
            : host.empty()    ? "The host is missing."
                              : fmt::format("\"{}\" is not a port.", port);
        return false;
    }
    m_owner = &owner;
    m_udp = false;
    m_host = host;
    m_port = *number;
    m_backoff.reset();
    m_deadline = m_clock.monotonicSeconds();
    m_status = {.state = ConnectionStatus::State::Opening,
                .target = fmt::format("{}:{}", host, *number),
                .reason = {}};
    m_state = ClientState::Waiting; // due at once
    m_wakeUp->ring();
    return true;
}

bool TCPConnectionModel::createClientUDPConnection(Owner& owner, const std::string& port)
{
    const std::scoped_lock lock(m_mutex);
    const auto number = portNumber(port);
    if (m_owner || !number) {
        m_lastError =
            m_owner ? "There is a connection already." : fmt::format("\"{}\" is not a port.", port);
        return false;
    }
    auto socket = NetSocket::receiveUdp(*number);
    if (!socket) {
        m_lastError = socket.error().message;
        return false;
    }
    m_owner = &owner;
    m_udp = true;
    m_client = std::move(*socket);
    m_port = m_client.localPort();
    m_backoff.reset();
    m_status.target = fmt::format("UDP port {}", m_port);
    clientIsConnected();
    m_wakeUp->ring();
    return true;
}

bool TCPConnectionModel::createServerConnection(const std::string& port)
{
    const std::scoped_lock lock(m_mutex);
    const auto number = portNumber(port);
    if (!number) {
        m_lastError = fmt::format("\"{}\" is not a port.", port);
        return false;
    }
    if (m_server.isOpen() && m_server.localPort() == *number)
        return true; // clients stay connected while other settings change
    m_serverClients.clear();
    m_server.close();
    auto socket = NetSocket::listen(*number);
    if (!socket) {
        m_lastError = socket.error().message;
        return false;
    }
    m_server = std::move(*socket);
    m_wakeUp->ring();
    return true;
}

void TCPConnectionModel::closeClientConnection()
{
    const std::scoped_lock lock(m_mutex);
    m_owner = nullptr;
    m_client.close();
    m_clientQueue.clear();
    m_resolution.reset();
    m_addresses.clear();
    m_state = ClientState::Off;
    m_status = {};
    m_wakeUp->ring();
}

void TCPConnectionModel::closeServerConnection()
{
    const std::scoped_lock lock(m_mutex);
    m_server.close();
    m_serverClients.clear();
    m_wakeUp->ring();
}

std::string TCPConnectionModel::lastError() const
{
    const std::scoped_lock lock(m_mutex);
    return m_lastError;
}

bool TCPConnectionModel::clientConnected() const
{
    const std::scoped_lock lock(m_mutex);
    return m_state == ClientState::Connected;
}

bool TCPConnectionModel::clientUDP() const
{
    const std::scoped_lock lock(m_mutex);
    return m_owner && m_udp;
}

bool TCPConnectionModel::serverConnected() const
{
    const std::scoped_lock lock(m_mutex);
    return m_server.isOpen();
}

std::size_t TCPConnectionModel::serverClientCount() const
{
    const std::scoped_lock lock(m_mutex);
    return m_serverClients.size();
}

ConnectionStatus TCPConnectionModel::clientStatus() const
{
    const std::scoped_lock lock(m_mutex);
    return m_status;
}

std::uint16_t TCPConnectionModel::clientPort() const
{
    const std::scoped_lock lock(m_mutex);
    return m_port;
}

std::uint16_t TCPConnectionModel::serverPort() const
{
    const std::scoped_lock lock(m_mutex);
    return m_server.isOpen() ? m_server.localPort() : std::uint16_t{0};
}

std::string TCPConnectionModel::localHost() const
{
    const std::scoped_lock lock(m_mutex);
    return m_client.isOpen() ? m_client.localHost() : std::string();
}

void TCPConnectionModel::setServerTransmit(ServerTransmit transmit)
{
    const std::scoped_lock lock(m_mutex);
    m_transmit = transmit;
}

TCPConnectionModel::ServerTransmit TCPConnectionModel::serverTransmit() const
{
    const std::scoped_lock lock(m_mutex);
    return m_server.isOpen() ? m_transmit : ServerTransmit{};
}

void TCPConnectionModel::setServerLimitToProcessed(bool limit)
{
    const std::scoped_lock lock(m_mutex);
    m_limitToProcessed = limit;
}

bool TCPConnectionModel::serverLimitToProcessed() const
{
    const std::scoped_lock lock(m_mutex);
    return m_limitToProcessed;
}

void TCPConnectionModel::writeNMEASentence(std::string_view sentence, AddChecksum add, ToClients to)
{
    const auto line = completeSentence(sentence, add);
    if (to == ToClients::Yes)
        writeData(line);
    Owner* owner = nullptr;
    {
        const std::scoped_lock lock(m_mutex);
        owner = m_owner;
    }
    if (owner)
        owner->writeNMEASentence(line);
}

void TCPConnectionModel::writeData(std::string_view bytes)
{
    const std::scoped_lock lock(m_mutex);
    for (auto& client : m_serverClients) {
        if (client.queue.size() + bytes.size() > longestQueue)
            continue;
        if (client.queue.empty())
            client.progressAt = m_clock.monotonicSeconds();
        client.queue.append(bytes);
    }
    if (!m_serverClients.empty())
        m_wakeUp->ring();
}

bool TCPConnectionModel::writeToServer(std::string_view bytes)
{
    const std::scoped_lock lock(m_mutex);
    if (m_state != ClientState::Connected || m_udp
        || m_clientQueue.size() + bytes.size() > longestQueue)
        return false;
    m_clientQueue.append(bytes);
    m_wakeUp->ring();
    return true;
}

void TCPConnectionModel::retryNow()
{
    const std::scoped_lock lock(m_mutex);
    if (m_state == ClientState::Waiting)
        m_deadline = m_clock.monotonicSeconds();
    m_wakeUp->ring();
}

void TCPConnectionModel::run()
{
    std::vector<pollfd> waiting;
    while (!m_stopping) {
        std::size_t clients = 0;
        {
            const std::scoped_lock lock(m_mutex);
            const bool connecting = m_state == ClientState::Connecting;
            const bool writes = connecting || !m_clientQueue.empty();
            waiting.assign(
                {{m_wakeUp->descriptor(), POLLIN, 0},
                 {m_client.descriptor(), static_cast<short>(POLLIN | (writes ? POLLOUT : 0)), 0},
                 {m_server.descriptor(), POLLIN, 0}});
            for (const auto& client : m_serverClients)
                waiting.push_back(
                    {client.socket.descriptor(),
                     static_cast<short>(POLLIN | (client.queue.empty() ? 0 : POLLOUT)), 0});
            clients = m_serverClients.size();
        }
        ::poll(waiting.data(), waiting.size(), longestPoll);
        m_wakeUp->clear();
        serveClient(waiting[1].revents);

        const std::scoped_lock lock(m_mutex);
        // Only this thread adds and removes clients one by one; all are gone when the server was
        // closed in between.
        if (m_serverClients.size() == clients) {
            std::size_t index = 3;
            for (auto& client : m_serverClients)
                serveServerClient(client, waiting[index++].revents);
            std::erase_if(m_serverClients,
                          [](const ServerClient& client) { return !client.socket.isOpen(); });
        }
        if (m_server.isOpen() && waiting[2].revents != 0)
            acceptServerClients();
    }
}

void TCPConnectionModel::serveClient(short events)
{
    ClientState state = ClientState::Off;
    {
        const std::scoped_lock lock(m_mutex);
        state = m_state;
        const auto now = m_clock.monotonicSeconds();
        const bool late = now >= m_deadline;
        if (state == ClientState::Waiting && late) {
            tryClient();
            return;
        }
        if (state == ClientState::Resolving) {
            std::optional<Result<std::vector<NetAddress>>> answer;
            {
                const std::scoped_lock resolutionLock(m_resolution->mutex);
                answer = std::move(m_resolution->answer);
            }
            if (answer && *answer) {
                m_addresses = std::move(**answer);
                m_state = ClientState::Connecting;
                tryClient();
            } else if (answer) {
                loseClient(answer->error().message, false);
            } else if (late) {
                loseClient(fmt::format("{} was not found in time.", m_host), true);
            }
            return;
        }
        if (state == ClientState::Connecting) {
            if (late) {
                loseClient(fmt::format("{} does not answer.", m_status.target), true);
            } else if (m_client.isOpen() && events != 0) {
                const int error = m_client.connectError();
                if (error == 0) {
                    clientIsConnected();
                } else if (!m_addresses.empty()) {
                    tryClient();
                } else {
                    loseClient(fmt::format("Cannot connect to {}: {}.", m_status.target,
                                           std::strerror(error)),
                               false);
                }
            }
            return;
        }
        if (state == ClientState::Connected) {
            if (m_udp && late) {
                loseClient("Nothing was received for 90 seconds.", true);
                return;
            }
            if ((events & POLLOUT) != 0 && !m_clientQueue.empty()
                && m_client.write(m_clientQueue) == NetSocket::Answer::Closed)
                loseClient("The other side closed the connection.", false);
        }
    }
    if (state == ClientState::Connected && (events & (POLLIN | POLLHUP | POLLERR)) != 0)
        readClient();
}

/// Begins the next attempt: a look-up, or the next address. Under the lock.
void TCPConnectionModel::tryClient()
{
    const auto now = m_clock.monotonicSeconds();
    m_client.close();
    if (m_udp) {
        auto socket = NetSocket::receiveUdp(m_port);
        if (!socket) {
            loseClient(socket.error().message, false);
            return;
        }
        m_client = std::move(*socket);
        clientIsConnected();
        return;
    }
    if (m_state == ClientState::Waiting) {
        m_state = ClientState::Resolving;
        m_status.state = ConnectionStatus::State::Opening;
        m_deadline = now + connectTimeout;
        m_resolution = std::make_shared<Resolution>();
        std::thread([resolution = m_resolution, wakeUp = m_wakeUp, host = m_host, port = m_port] {
            auto answer = resolveHost(host, port);
            const std::scoped_lock lock(resolution->mutex);
            resolution->answer = std::move(answer);
            wakeUp->ring();
        }).detach();
        tell(&Observer::updateConnections);
        return;
    }
    std::string reason = "no address";
    while (!m_addresses.empty()) {
        auto socket = NetSocket::connect(m_addresses.front());
        m_addresses.erase(m_addresses.begin());
        if (socket) {
            m_client = std::move(*socket);
            return;
        }
        reason = socket.error().message;
    }
    loseClient(fmt::format("Cannot connect to {}: {}.", m_status.target, reason), false);
}

void TCPConnectionModel::clientIsConnected()
{
    m_state = ClientState::Connected;
    m_startsAnew = true;
    m_clientQueue.clear();
    m_backoff.reset();
    m_deadline = m_clock.monotonicSeconds() + udpTimeout;
    m_status.state = ConnectionStatus::State::Open;
    m_status.reason.clear();
    tell(&Observer::clientSocketConnected);
}

/// Under the lock; nothing to do when the user closed it meanwhile.
void TCPConnectionModel::loseClient(const std::string& reason, bool timedOut)
{
    if (!m_owner)
        return;
    m_client.close();
    m_clientQueue.clear();
    m_addresses.clear();
    m_resolution.reset();
    m_state = ClientState::Waiting;
    m_deadline = m_clock.monotonicSeconds() + m_backoff.next();
    m_status.state = ConnectionStatus::State::Waiting;
    m_status.reason = reason;
    m_status.retryAt = m_deadline;
    tell(timedOut ? &Observer::clientSocketTimedOut : &Observer::clientSocketDisconnected);
}

void TCPConnectionModel::readClient()
{
    Owner* owner = nullptr;
    bool udp = false;
    std::string bytes;
    auto answer = NetSocket::Answer::Nothing;
    const auto began = m_clock.monotonicSeconds();
    {
        const std::scoped_lock lock(m_mutex);
        if (m_state != ClientState::Connected || !m_owner)
            return;
        owner = m_owner;
        udp = m_udp;
        if (std::exchange(m_startsAnew, false))
            m_lines.clear();
        answer = m_client.read(bytes);
        if (!bytes.empty())
            m_deadline = began + udpTimeout;
    }
    if (!bytes.empty()) {
        // A datagram is a unit: a line left open before one that starts a sentence is complete.
        const bool startsAnew = std::string_view("$!\\").find(bytes.front()) != std::string::npos;
        if (udp && startsAnew && m_lines.pending() > 0) {
            const auto rest = m_lines.takeRest();
            const std::string_view line = rest;
            owner->readNMEASentences({&line, 1});
        }
        m_lines.append(bytes);
        if (!deliver(*owner, began)) {
            throwAway();
            owner->readNMEASentenceOverflow();
        }
    }
    if (answer == NetSocket::Answer::Closed && !udp) {
        const std::scoped_lock lock(m_mutex);
        loseClient("The other side closed the connection.", false);
    }
}

/// Empties what the system holds, within reason: a flood must not hold the thread.
void TCPConnectionModel::throwAway()
{
    constexpr int mostReads = 1000;
    std::string bytes;
    const std::scoped_lock lock(m_mutex);
    for (int i = 0;
         i < mostReads && m_client.isOpen() && m_client.read(bytes) == NetSocket::Answer::Done; ++i)
        bytes.clear();
}

/// False when it took too long and the rest was dropped.
bool TCPConnectionModel::deliver(Owner& owner, double began)
{
    std::array<std::string_view, linesAtOnce> lines;
    for (;;) {
        std::size_t count = 0;
        while (count < lines.size()) {
            const auto line = m_lines.next();
            if (!line)
                break;
            lines[count++] = *line;
        }
        if (count == 0)
            return true;
        owner.readNMEASentences({lines.data(), count});
        if (m_clock.monotonicSeconds() - began > burstLimit) {
            m_lines.clear();
            return false;
        }
    }
}

void TCPConnectionModel::acceptServerClients()
{
    while (auto client = m_server.accept()) {
        if (m_serverClients.size() >= mostServerClients)
            continue; // closed by going out of scope
        m_serverClients.push_back({std::move(*client), {}, m_clock.monotonicSeconds()});
        tell(&Observer::serverSocketConnected);
    }
}

void TCPConnectionModel::serveServerClient(ServerClient& client, short events)
{
    const auto now = m_clock.monotonicSeconds();
    auto answer = NetSocket::Answer::Done;
    if (!client.queue.empty()) { // also when poll() was not asked: before it counts as stalled
        answer = client.socket.write(client.queue);
        if (answer == NetSocket::Answer::Done)
            client.progressAt = now;
    }
    if (answer != NetSocket::Answer::Closed && (events & (POLLIN | POLLHUP | POLLERR)) != 0) {
        std::string ignored; // what clients send is of no use here, but shows that they are there
        answer = client.socket.read(ignored);
    }
    if (answer == NetSocket::Answer::Closed) {
        client.socket.close();
        tell(&Observer::serverSocketDisconnected);
    } else if (!client.queue.empty() && now - client.progressAt > stalledTimeout) {
        client.socket.close();
        tell(&Observer::serverSocketTimedOut);
    }
}

void TCPConnectionModel::tell(void (Observer::*what)())
{
    auto* const observer = m_observer;
    if (!observer)
        return;
    m_main.post([observer, what] {
        (observer->*what)();
        if (what != &Observer::updateConnections)
            observer->updateConnections();
    });
}

} // namespace kelvox
