#include "connections/NetSocket.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/tcp.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

namespace kelvox {
namespace {

constexpr std::size_t largestRead = 65536; // the largest datagram there is

void setOption(int socket, int level, int option, int value)
{
    ::setsockopt(socket, level, option, &value, sizeof value); // a wish: the default serves too
}

/// A peer that vanished without a word is noticed within about a minute.
void keepAlive(int socket)
{
    setOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, 30);
    setOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, 10);
    setOption(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

NetAddress addressOf(int socket, decltype(&::getsockname) ask)
{
    NetAddress address;
    address.length = sizeof address.storage;
    if (ask(socket, reinterpret_cast<sockaddr*>(&address.storage), &address.length) != 0)
        address.length = 0;
    return address;
}

} // namespace

std::string NetAddress::host() const
{
    std::array<char, NI_MAXHOST> text{};
    if (length == 0
        || ::getnameinfo(reinterpret_cast<const sockaddr*>(&storage), length, text.data(),
                         text.size(), nullptr, 0, NI_NUMERICHOST)
            != 0)
        return {};
    std::string host = text.data();
    constexpr std::string_view mapped = "::ffff:"; // an IPv4 peer of a socket for both
    return host.starts_with(mapped) ? host.substr(mapped.size()) : host;
}

Result<std::vector<NetAddress>> resolveHost(const std::string& host, std::uint16_t port)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    if (error != 0)
        return failure(Error::Code::CannotOpen,
                       fmt::format("Cannot find {}: {}. Check the name and the network.", host,
                                   ::gai_strerror(error)));
    std::vector<NetAddress> addresses;
    for (const auto* entry = found; entry; entry = entry->ai_next) {
        NetAddress address;
        std::memcpy(&address.storage, entry->ai_addr, entry->ai_addrlen);
        address.length = entry->ai_addrlen;
        addresses.push_back(address);
    }
    return addresses;
}

std::optional<std::uint16_t> portNumber(const std::string& text)
{
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, port);
    return read.ec == std::errc{} && read.ptr == end ? std::optional(port) : std::nullopt;
}

std::optional<std::string> localHostAddress()
{
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return std::nullopt;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, ::freeifaddrs);
    for (const auto* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET
            || (entry->ifa_flags & IFF_LOOPBACK) != 0 || (entry->ifa_flags & IFF_UP) == 0)
            continue;
        NetAddress address;
        address.length = sizeof(sockaddr_in);
        std::memcpy(&address.storage, entry->ifa_addr, address.length);
        return address.host();
    }
    return std::nullopt;
}

Result<NetSocket> NetSocket::connect(const NetAddress& address)
{
    NetSocket socket(
        ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (socket.isOpen()) {
        keepAlive(socket.descriptor());
        if (::connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address.storage),
                      address.length)
                == 0
            || errno == EINPROGRESS)
            return socket;
    }
    return failure(Error::Code::CannotOpen, std::strerror(errno));
}

/// For both families where the machine has IPv6, else for IPv4 alone.
Result<NetSocket> NetSocket::bound(int type, std::uint16_t port)
{
    int error = 0;
    for (const int family : {AF_INET6, AF_INET}) {
        NetSocket socket(::socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        error = errno;
        if (!socket.isOpen())
            continue;
        setOption(socket.descriptor(), SOL_SOCKET, SO_REUSEADDR, 1);
        sockaddr_in6 six{};
        sockaddr_in four{};
        int result = -1;
        if (family == AF_INET6) {
            setOption(socket.descriptor(), IPPROTO_IPV6, IPV6_V6ONLY, 0);
            six.sin6_family = AF_INET6;
            six.sin6_port = htons(port);
            result = ::bind(socket.descriptor(), reinterpret_cast<sockaddr*>(&six), sizeof six);
        } else {
            four.sin_family = AF_INET;
            four.sin_port = htons(port);
            result = ::bind(socket.descriptor(), reinterpret_cast<sockaddr*>(&four), sizeof four);
        }
        if (result == 0)
            return socket;
        error = errno;
        if (error == EADDRINUSE)
            break;
    }
    return failure(Error::Code::CannotOpen,
                   fmt::format("Cannot use port {}: {}.{}", port, std::strerror(error),
                               error == EADDRINUSE ? " Choose another port, or close the program "
                                                     "that has it."
                                                   : ""));
}

Result<NetSocket> NetSocket::listen(std::uint16_t port)
{
    constexpr int waitingClients = 16;
    auto socket = bound(SOCK_STREAM, port);
    if (socket && ::listen(socket->descriptor(), waitingClients) != 0)
        return failure(Error::Code::CannotOpen,
                       fmt::format("Cannot use port {}: {}.", port, std::strerror(errno)));
    return socket;
}

Result<NetSocket> NetSocket::receiveUdp(std::uint16_t port)
{
    constexpr int burst = 4 << 20; // bytes the system keeps while nobody reads
    auto socket = bound(SOCK_DGRAM, port);
    if (socket)
        setOption(socket->descriptor(), SOL_SOCKET, SO_RCVBUF, burst);
    return socket;
}

std::optional<NetSocket> NetSocket::accept()
{
    NetSocket client(::accept4(descriptor(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client.isOpen())
        return std::nullopt;
    keepAlive(client.descriptor());
    return client;
}

int NetSocket::connectError() const
{
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(descriptor(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

NetSocket::Answer NetSocket::read(std::string& bytes)
{
    std::array<char, largestRead> block;
    const auto count = ::recv(descriptor(), block.data(), block.size(), 0);
    if (count > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(count));
        return Answer::Done;
    }
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return Answer::Nothing;
    return Answer::Closed;
}

NetSocket::Answer NetSocket::write(std::string& queue)
{
    const auto count = ::send(descriptor(), queue.data(), queue.size(), MSG_NOSIGNAL);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR ? Answer::Nothing : Answer::Closed;
    queue.erase(0, static_cast<std::size_t>(count));
    return Answer::Done;
}

std::uint16_t NetSocket::localPort() const
{
    const auto address = addressOf(descriptor(), ::getsockname);
    if (address.storage.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6&>(address.storage).sin6_port);
    return ntohs(reinterpret_cast<const sockaddr_in&>(address.storage).sin_port);
}

std::string NetSocket::localHost() const
{
    return addressOf(descriptor(), ::getsockname).host();
}

std::string NetSocket::peerHost() const
{
    return addressOf(descriptor(), ::getpeername).host();
}

} // namespace kelvox
