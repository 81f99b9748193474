#pragma once

#include <string>
#include <string_view>

namespace kelvox {

/// The line to a receiver as a transfer sees it. Belongs to one thread.
class DeviceLine {
public:
    enum class ReadStatus {
        Data,
        Timeout, ///< nothing came in time, or the wait was interrupted
        Closed ///< the device is gone
    };

    virtual ~DeviceLine() = default;
    /// All of it or false.
    [[nodiscard]] virtual bool write(std::string_view bytes) = 0;
    /// Appends what there is, waiting at most so many seconds for the first byte.
    [[nodiscard]] virtual ReadStatus read(std::string& bytes, double seconds) = 0;
    virtual void flush() = 0; ///< throws away what is on its way in and out
};

} // namespace kelvox
