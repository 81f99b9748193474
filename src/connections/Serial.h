#pragma once

#include "base/Result.h"
#include "connections/FileDescriptor.h"
#include "connections/LineBuffer.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// A serial port as the system lists it.
struct SerialPortInfo {
    std::string path; ///< "/dev/ttyUSB0": what openPort() takes
    std::string name; ///< readable, e.g. "FTDI USB Serial Converter (ttyUSB0)"
    friend bool operator==(const SerialPortInfo&, const SerialPortInfo&) = default;
};

/// One open serial port: raw, 8 data bits, read time-out half a second. Belongs to one thread.
class Serial {
public:
    enum class FlowControl { None, Software, Hardware, Both };
    enum class ReadStatus { Data, Timeout, Closed };

    /// @param name a device path as it stands, or a bare name that "/dev/cu." is put before
    /// @param rate bits a second as text, e.g. "4800"
    /// The error says what to do where there is a remedy (permission, port in use).
    [[nodiscard]] Result<void> open(const std::string& name, const std::string& rate,
                                    FlowControl flow = FlowControl::None);
    /// The same as a plain yes or no.
    bool openPort(const std::string& name, const std::string& rate, bool softwareFlowControl,
                  bool hardwareFlowControl);
    void closePort();
    void flushPort(); ///< throws away what is on its way in and out
    [[nodiscard]] bool isOpen() const { return m_port.isOpen(); }
    [[nodiscard]] int descriptor() const { return m_port.get(); }

    /// Writes all, waiting at most half a second for a stalled line.
    bool writePort(std::string_view bytes);
    [[nodiscard]] std::optional<char> readPortChar();
    [[nodiscard]] std::optional<std::string> readPortForLength(std::size_t length);
    /// Up to and including the terminator, at most `longest` bytes; nothing when nothing arrived
    /// within the time-out. An unfinished line is given when the line falls silent.
    [[nodiscard]] std::optional<std::string> readPortUntilChar(char terminator,
                                                               std::size_t longest);

    /// Waits half a second for bytes, or until the other descriptor can be read, and appends what
    /// there is. Closed: the device is gone.
    [[nodiscard]] ReadStatus read(std::string& bytes, int otherDescriptor = -1);

    /// The path that a port name of the settings stands for.
    [[nodiscard]] static std::string devicePath(const std::string& name);
    [[nodiscard]] static std::string shortPortName(const std::string& path);
    /// The serial devices of this machine, by path. The folders are those of the system.
    [[nodiscard]] static std::vector<SerialPortInfo>
    listPorts(const std::filesystem::path& classFolder = "/sys/class/tty",
              const std::filesystem::path& deviceFolder = "/dev");
    [[nodiscard]] static const std::vector<std::string>& offeredRates();

private:
    FileDescriptor m_port;
    std::string m_unread; // read from the port, not yet handed out
};

} // namespace kelvox
