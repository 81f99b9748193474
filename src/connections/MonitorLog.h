#pragma once

#include "base/Result.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The lines that went over a connection, the newest few thousand. Any thread.
///
/// While paused nothing is added, so that the user can read; the count of missed lines is kept.
class MonitorLog {
public:
    explicit MonitorLog(std::size_t mostLines = 5000)
        : m_mostLines(mostLines)
    {
    }
    /// One line; its line end is dropped, unprintable bytes are shown as dots.
    void append(std::string_view line);
    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] std::uint64_t missed() const; ///< lines that came while paused
    void clear();

    /// The lines that hold the text; all for an empty one.
    [[nodiscard]] std::vector<std::string> lines(std::string_view filter = {}) const;
    /// Grows with every change: a display that has drawn this one has nothing to do.
    [[nodiscard]] std::uint64_t revision() const;
    [[nodiscard]] Result<void> save(const std::filesystem::path& path,
                                    std::string_view filter = {}) const;

private:
    mutable std::mutex m_mutex;
    std::size_t m_mostLines;
    std::deque<std::string> m_lines;
    bool m_paused = false;
    std::uint64_t m_missed = 0;
    std::uint64_t m_revision = 0;
};

} // namespace kelvox
