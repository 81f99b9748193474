#pragma once

#include "base/Clock.h"
#include "base/Executor.h"
#include "connections/ConnectionStatus.h"
#include "connections/LineBuffer.h"
#include "connections/NetSocket.h"
#include "connections/SentenceText.h"
#include "connections/WakeUp.h"

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <span>
#include <thread>

namespace kelvox {

/// The network side: one client connection (TCP or UDP) that brings sentences, and one server that
/// gives them to other programs.
///
/// A thread of its own does all socket work. The operations may be called from any thread; they
/// never wait for the network. A client connection that is lost or refused is tried again by
/// itself until it is closed here.
class TCPConnectionModel {
public:
    static constexpr double connectTimeout = 30; // seconds
    static constexpr double udpTimeout = 90;
    static constexpr double burstLimit = 2; ///< longest one read may take to process

    /// Who takes the sentences of the client connection. Must outlive the model: a call that is
    /// under way while the connection is closed still ends.
    class Owner {
    public:
        virtual ~Owner() = default;
        // On the network thread:
        /// Complete lines in order, as they came.
        virtual void readNMEASentences(std::span<const std::string_view> lines) = 0;
        /// A read took longer than burstLimit to process; the rest of it was thrown away.
        virtual void readNMEASentenceOverflow() { }
        /// On the caller's thread: a sentence that goes out, complete.
        virtual void writeNMEASentence(std::string_view /*line*/) { }
    };
    /// Who shows the state. On the main thread, the network not waiting.
    class Observer {
    public:
        virtual ~Observer() = default;
        virtual void clientSocketConnected() { }
        virtual void clientSocketTimedOut() { }
        virtual void clientSocketDisconnected() { }
        virtual void serverSocketConnected() { } ///< a client came
        virtual void serverSocketDisconnected() { } ///< a client went
        virtual void serverSocketTimedOut() { } ///< a client that took nothing was let go
        virtual void updateConnections() { } ///< after each of these
    };

    TCPConnectionModel(Executor& main, const Clock& clock);
    ~TCPConnectionModel();
    TCPConnectionModel(const TCPConnectionModel&) = delete;
    TCPConnectionModel& operator=(const TCPConnectionModel&) = delete;
    void setObserver(Observer* observer) { m_observer = observer; } ///< before anything is opened

    /// False when there is an owner already or host or port are missing.
    bool createClientConnection(Owner& owner, const std::string& host, const std::string& port);
    bool createClientUDPConnection(Owner& owner, const std::string& port);
    bool createServerConnection(const std::string& port);
    void closeClientConnection();
    void closeServerConnection();
    /// Why the last create… failed, for the user.
    [[nodiscard]] std::string lastError() const;

    [[nodiscard]] bool clientConnected() const;
    [[nodiscard]] bool clientUDP() const;
    [[nodiscard]] bool serverConnected() const; ///< whether the server runs
    [[nodiscard]] std::size_t serverClientCount() const;
    [[nodiscard]] ConnectionStatus clientStatus() const;
    [[nodiscard]] std::uint16_t clientPort() const; ///< the UDP port listened to
    [[nodiscard]] std::uint16_t serverPort() const;
    [[nodiscard]] std::string localHost() const; ///< our address on the client connection

    struct ServerTransmit {
        bool gps = false;
        bool instruments = false;
        bool ais = false;
    };
    void setServerTransmit(ServerTransmit transmit);
    [[nodiscard]] ServerTransmit serverTransmit() const;
    void setServerLimitToProcessed(bool limit);
    [[nodiscard]] bool serverLimitToProcessed() const;

    enum class ToClients { Yes, No };
    /// The sentence with checksum and line end to the server's clients, and to the owner of the
    /// client connection; or to the owner only.
    void writeNMEASentence(std::string_view sentence, AddChecksum add = AddChecksum::Yes,
                           ToClients to = ToClients::Yes);
    void writeString(std::string_view text) { writeData(text); }
    /// Bytes as they stand to the server's clients. A client that takes nothing loses the newest
    /// writes, whole, and is let go after 30 seconds.
    void writeData(std::string_view bytes);
    /// Bytes as they stand to the other side of the client connection.
    bool writeToServer(std::string_view bytes);

    /// Looks at the clock again and tries a lost connection at once: after waking up.
    void retryNow();

private:
    enum class ClientState { Off, Resolving, Connecting, Connected, Waiting };
    struct ServerClient {
        NetSocket socket;
        std::string queue;
        double progressAt; // monotonic seconds when it took something last
    };
    struct Resolution;

    void run();
    void serveClient(short events);
    void tryClient();
    void readClient();
    void loseClient(const std::string& reason, bool timedOut);
    void clientIsConnected();
    void acceptServerClients();
    void serveServerClient(ServerClient& client, short events);
    void throwAway();
    bool deliver(Owner& owner, double began);
    void tell(void (Observer::*what)());

    Executor& m_main;
    const Clock& m_clock;
    Observer* m_observer = nullptr;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    std::shared_ptr<WakeUp> m_wakeUp;

    mutable std::mutex m_mutex; // for all below
    Owner* m_owner = nullptr;
    std::string m_host;
    std::uint16_t m_port = 0;
    bool m_udp = false;
    ClientState m_state = ClientState::Off;
    NetSocket m_client;
    std::string m_clientQueue;
    std::shared_ptr<Resolution> m_resolution;
    std::vector<NetAddress> m_addresses; // still to be tried
    double m_deadline = 0;
    Backoff m_backoff;
    ConnectionStatus m_status;
    bool m_startsAnew = false; // the lines of an earlier connection are void

    NetSocket m_server;
    std::list<ServerClient> m_serverClients;
    ServerTransmit m_transmit;
    bool m_limitToProcessed = false;
    std::string m_lastError;

    LineBuffer m_lines{4096}; // the network thread's own
};

} // namespace kelvox
