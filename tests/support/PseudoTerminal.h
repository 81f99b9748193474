#pragma once

#include "connections/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kelvox {

/// A serial line without hardware: the program opens path(), the test holds the other end.
class PseudoTerminal {
public:
    PseudoTerminal()
        : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (::grantpt(m_master.get()) == 0 && ::unlockpt(m_master.get()) == 0)
            m_path = ::ptsname(m_master.get());
    }
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Waits while the line is full.
    void write(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const auto count = ::write(m_master.get(), bytes.data(), bytes.size());
            if (count <= 0)
                return;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    /// What the program wrote, as much as is asked for.
    [[nodiscard]] std::string read(std::size_t length) const
    {
        std::string text;
        pollfd waiting{m_master.get(), POLLIN, 0};
        while (text.size() < length && ::poll(&waiting, 1, 10000) > 0 && hasBytes(waiting)) {
            std::array<char, 4096> block;
            const auto count = ::read(m_master.get(), block.data(), block.size());
            if (count <= 0)
                break;
            text.append(block.data(), static_cast<std::size_t>(count));
        }
        return text;
    }
    /// What the program has written by now.
    [[nodiscard]] std::string readAvailable() const
    {
        std::string text;
        pollfd waiting{m_master.get(), POLLIN, 0};
        while (::poll(&waiting, 1, 0) > 0 && hasBytes(waiting)) {
            std::array<char, 4096> block;
            const auto count = ::read(m_master.get(), block.data(), block.size());
            if (count <= 0)
                break;
            text.append(block.data(), static_cast<std::size_t>(count));
        }
        return text;
    }
    void unplug() { m_master.close(); }

private:
    // A line that nobody has open hangs up; a read then waits for whoever opens it next.
    static bool hasBytes(const pollfd& line) { return (line.revents & POLLIN) != 0; }

    FileDescriptor m_master;
    std::string m_path;
};

} // namespace kelvox
