#pragma once

#include "base/Clock.h"

#include <atomic>

namespace kelvox {

/// A clock that stands still until told otherwise, read by other threads meanwhile.
class ThreadClock final : public Clock {
public:
    [[nodiscard]] std::chrono::system_clock::time_point now() const override
    {
        return std::chrono::system_clock::time_point(
            std::chrono::duration_cast<std::chrono::system_clock::duration>(
                std::chrono::duration<double>(1.7e9 + m_seconds)));
    }
    [[nodiscard]] double monotonicSeconds() const override { return m_seconds; }
    void advance(double seconds) { m_seconds = m_seconds + seconds; }

private:
    std::atomic<double> m_seconds{100};
};

} // namespace kelvox
