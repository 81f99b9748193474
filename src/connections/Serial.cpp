#include "connections/Serial.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace kelvox {
namespace {

constexpr int timeoutTenths = 5;
constexpr int timeoutMilliseconds = timeoutTenths * 100;
constexpr std::size_t largestRead = 16384;

struct Rate {
    const char* text;
    speed_t speed;
};
constexpr std::array<Rate, 11> rates = {{{"1200", B1200},
                                         {"2400", B2400},
                                         {"4800", B4800},
                                         {"9600", B9600},
                                         {"19200", B19200},
                                         {"38400", B38400},
                                         {"57600", B57600},
                                         {"115200", B115200},
                                         {"230400", B230400},
                                         {"460800", B460800},
                                         {"921600", B921600}}};

std::optional<speed_t> speedOf(const std::string& rate)
{
    for (const auto& known : rates)
        if (rate == known.text)
            return known.speed;
    return std::nullopt;
}

std::string whyNotOpened(const std::string& path, int error)
{
    switch (error) {
    case EACCES:
        return fmt::format("Cannot open {}: you may not use serial ports. Run: sudo usermod -aG "
                           "dialout $USER, then log in again.",
                           path);
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return fmt::format("Cannot open {}: there is no such device. Plug it in or choose another "
                           "port.",
                           path);
    case EBUSY:
    case EWOULDBLOCK:
        return fmt::format("Cannot open {}: another program is using it. Close that program, or "
                           "run: sudo fuser -v {}",
                           path, path);
    default:
        return fmt::format("Cannot open {}: {}.", path, std::strerror(error));
    }
}

} // namespace

Result<void> Serial::open(const std::string& name, const std::string& rate, FlowControl flow)
{
    closePort();
    const auto path = devicePath(name);
    const auto speed = speedOf(rate);
    if (!speed)
        return failure(Error::Code::OutOfRange,
                       fmt::format("Cannot open {}: \"{}\" is not a baud rate. Choose one of the "
                                   "list.",
                                   path, rate));
    FileDescriptor port(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    // TIOCEXCL does not hold the superuser off, the lock does not hold off programs that never
    // ask: both together are what exclusive can mean.
    if (port.get() < 1 || ::ioctl(port.get(), TIOCEXCL) != 0
        || ::flock(port.get(), LOCK_EX | LOCK_NB) != 0)
        return failure(Error::Code::CannotOpen, whyNotOpened(path, errno));
    const int flags = ::fcntl(port.get(), F_GETFL);
    ::fcntl(port.get(), F_SETFL, flags & ~O_NONBLOCK);

    const bool software = flow == FlowControl::Software || flow == FlowControl::Both;
    const bool hardware = flow == FlowControl::Hardware || flow == FlowControl::Both;
    termios settings{};
    settings.c_cflag = CS8 | CREAD | CLOCAL;
    if (software)
        settings.c_iflag |= IXON | IXOFF | IXANY;
    if (hardware)
        settings.c_cflag |= CRTSCTS;
    settings.c_cc[VSTART] = 17; // XON and XOFF
    settings.c_cc[VSTOP] = 19;
    settings.c_cc[VTIME] = timeoutTenths;
    settings.c_cc[VMIN] = 0;
    ::cfsetispeed(&settings, *speed);
    ::cfsetospeed(&settings, *speed);
    if (::tcsetattr(port.get(), TCSAFLUSH, &settings) != 0)
        return failure(Error::Code::CannotOpen, whyNotOpened(path, errno));
    m_port = std::move(port);
    flushPort();
    return {};
}

bool Serial::openPort(const std::string& name, const std::string& rate, bool softwareFlowControl,
                      bool hardwareFlowControl)
{
    const auto flow = softwareFlowControl && hardwareFlowControl ? FlowControl::Both
        : softwareFlowControl                                    ? FlowControl::Software
        : hardwareFlowControl                                    ? FlowControl::Hardware
                                                                 : FlowControl::None;
    return open(name, rate, flow).has_value();
}

void Serial::closePort()
{
    m_unread.clear();
    if (m_port.isOpen())
        ::ioctl(m_port.get(), TIOCNXCL);
    m_port.close();
}

void Serial::flushPort()
{
    m_unread.clear();
    ::tcflush(m_port.get(), TCIOFLUSH);
}

bool Serial::writePort(std::string_view bytes)
{
    if (!isOpen())
        return false;
    // Non-blocking only here: a stalled line must not hold the thread that also reads.
    const int flags = ::fcntl(m_port.get(), F_GETFL);
    ::fcntl(m_port.get(), F_SETFL, flags | O_NONBLOCK);
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMilliseconds);
    while (!bytes.empty()) {
        const auto written = ::write(m_port.get(), bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (written < 0 && errno != EAGAIN && errno != EINTR)
            break;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd waiting{m_port.get(), POLLOUT, 0};
        if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0)
            break;
    }
    ::fcntl(m_port.get(), F_SETFL, flags);
    return bytes.empty();
}

Serial::ReadStatus Serial::read(std::string& bytes, int otherDescriptor)
{
    if (!m_unread.empty()) {
        bytes += std::exchange(m_unread, {});
        return ReadStatus::Data;
    }
    if (!isOpen())
        return ReadStatus::Closed;
    std::array<pollfd, 2> waiting{{{m_port.get(), POLLIN, 0}, {otherDescriptor, POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), timeoutMilliseconds);
    if (waiting[0].revents == 0)
        return ReadStatus::Timeout;

    std::array<char, largestRead> block;
    const auto count = ::read(m_port.get(), block.data(), block.size());
    if (count > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(count));
        return ReadStatus::Data;
    }
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return ReadStatus::Timeout;
    // An unplugged adaptor reads as an error, or as nothing on a line that hung up.
    const bool gone = count < 0 || (waiting[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
    return gone ? ReadStatus::Closed : ReadStatus::Timeout;
}

std::optional<char> Serial::readPortChar()
{
    const auto one = readPortForLength(1);
    return one ? std::optional(one->front()) : std::nullopt;
}

std::optional<std::string> Serial::readPortForLength(std::size_t length)
{
    std::string bytes;
    while (bytes.size() < length && read(bytes) == ReadStatus::Data) { }
    if (bytes.size() > length) {
        m_unread = bytes.substr(length);
        bytes.resize(length);
    }
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

std::optional<std::string> Serial::readPortUntilChar(char terminator, std::size_t longest)
{
    LineBuffer lines(longest, terminator);
    std::string bytes;
    while (read(bytes) == ReadStatus::Data) {
        lines.append(bytes);
        bytes.clear();
        if (const auto line = lines.next()) {
            std::string result(*line);
            m_unread = lines.takeRest();
            return result;
        }
    }
    auto rest = lines.takeRest();
    return rest.empty() ? std::nullopt : std::optional(std::move(rest));
}

std::string Serial::devicePath(const std::string& name)
{
    const bool isPath = name.starts_with('/') || name.find("/dev/cu.") != std::string::npos
        || name.find("/dev/tty.") != std::string::npos;
    return isPath ? name : "/dev/cu." + name;
}

const std::vector<std::string>& Serial::offeredRates()
{
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> list;
        list.reserve(rates.size());
        for (const auto& rate : rates)
            list.emplace_back(rate.text);
        return list;
    }();
    return texts;
}

} // namespace kelvox
