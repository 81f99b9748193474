#pragma once

#include "base/Clock.h"
#include "base/Result.h"
#include "connections/LineBuffer.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

/// Writes received lines with the time they came: each behind an NMEA 4 tag block,
/// "\c:1700000000123*hh\" with milliseconds since 1970, so that other programs read it too.
/// Any thread.
class Recorder {
public:
    explicit Recorder(const Clock& clock)
        : m_clock(clock)
    {
    }
    /// Appends to the file when it is there.
    [[nodiscard]] Result<void> start(const std::filesystem::path& path);
    /// The error is that of the first write that failed, such as a full disk.
    Result<void> stop();
    [[nodiscard]] bool isRecording() const;
    void record(std::string_view line);

private:
    struct Close {
        void operator()(std::FILE* file) const
        {
            std::fclose(file); // NOLINT(bugprone-unused-return-value): stop() has flushed
        }
    };
    const Clock& m_clock;
    mutable std::mutex m_mutex;
    std::unique_ptr<std::FILE, Close> m_file;
    std::filesystem::path m_path;
    int m_error = 0;
};

/// Reads a log as if it came in now. Lines with a time (see Recorder) keep their distances; others
/// follow each other at 0.15 seconds.
class Replay {
public:
    static constexpr double secondsBetweenLines = 0.15;

    [[nodiscard]] static Result<std::unique_ptr<Replay>> open(const std::filesystem::path& path,
                                                              const Clock& clock);
    /// From 1 to 60 times the pace of the recording; takes effect at once.
    void setSpeed(double factor);
    /// The next line without its tag block, when it is due.
    [[nodiscard]] std::optional<std::string> next();
    /// Seconds until a line is due; 0 when one is.
    [[nodiscard]] double wait();
    [[nodiscard]] bool atEnd();

private:
    explicit Replay(const Clock& clock)
        : m_clock(clock)
    {
    }
    [[nodiscard]] bool fetch();

    struct Line {
        std::string text;
        double logTime; // seconds in the recording
    };
    struct Close {
        void operator()(std::FILE* file) const
        {
            std::fclose(file); // NOLINT(bugprone-unused-return-value): only read
        }
    };
    static constexpr std::size_t longestLine = 4096;
    const Clock& m_clock;
    std::unique_ptr<std::FILE, Close> m_file;
    LineBuffer m_lines{longestLine};
    std::optional<Line> m_next;
    std::mutex m_mutex; // the speed is set by the user
    double m_speed = 1;
    double m_logTime = 0; // of the line given last
    double m_givenAt = 0; // monotonic seconds when it was due
    bool m_started = false;
};

} // namespace kelvox
