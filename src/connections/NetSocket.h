#pragma once

#include "base/Result.h"
#include "connections/FileDescriptor.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvox {

/// An address of the network, as the system keeps it.
struct NetAddress {
    sockaddr_storage storage{};
    socklen_t length = 0;
    [[nodiscard]] std::string host() const; ///< in figures
};

/// The addresses of a host. Blocks for as long as the name service takes.
[[nodiscard]] Result<std::vector<NetAddress>> resolveHost(const std::string& host,
                                                          std::uint16_t port);
/// The number of a port as settings write it; 0 stands for any free one.
[[nodiscard]] std::optional<std::uint16_t> portNumber(const std::string& text);
/// The address under which other computers reach this one; nothing without a network.
[[nodiscard]] std::optional<std::string> localHostAddress();

/// A non-blocking socket. Broken pipes are an answer, never a signal.
class NetSocket {
public:
    enum class Answer { Done, Nothing, Closed };

    NetSocket() = default;
    /// Begins to connect; poll for writing, then ask connectError().
    [[nodiscard]] static Result<NetSocket> connect(const NetAddress& address);
    [[nodiscard]] static Result<NetSocket> listen(std::uint16_t port);
    [[nodiscard]] static Result<NetSocket> receiveUdp(std::uint16_t port);

    /// A client that waits at a listening socket.
    [[nodiscard]] std::optional<NetSocket> accept();
    [[nodiscard]] int connectError() const; ///< errno of the attempt; 0 once connected
    /// Appends what has arrived, one read or one datagram.
    Answer read(std::string& bytes);
    /// Writes from the front of the queue and removes what went.
    Answer write(std::string& queue);
    [[nodiscard]] std::uint16_t localPort() const;
    [[nodiscard]] std::string localHost() const;
    [[nodiscard]] std::string peerHost() const;

    void close() { m_socket.close(); }
    [[nodiscard]] bool isOpen() const { return m_socket.isOpen(); }
    [[nodiscard]] int descriptor() const { return m_socket.get(); }

private:
    explicit NetSocket(int descriptor)
        : m_socket(descriptor)
    {
    }
    static Result<NetSocket> bound(int type, std::uint16_t port);

    FileDescriptor m_socket;
};

} // namespace kelvox
