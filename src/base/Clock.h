#pragma once

#include <chrono>

namespace kelvox {

/// Where the time comes from. Handed to whatever ages, waits or stamps, so that tests never sleep.
class Clock {
public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual std::chrono::system_clock::time_point now() const = 0; ///< wall clock
    /// Seconds on a clock that never jumps; only differences mean something.
    [[nodiscard]] virtual double monotonicSeconds() const = 0;
};

/// The machine's clocks.
class SystemClock final : public Clock {
public:
    [[nodiscard]] std::chrono::system_clock::time_point now() const override
    {
        return std::chrono::system_clock::now();
    }
    [[nodiscard]] double monotonicSeconds() const override
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }
};

/// A clock that stands still until told otherwise.
class ManualClock final : public Clock {
public:
    explicit ManualClock(std::chrono::system_clock::time_point start = {})
        : m_now(start)
    {
    }
    [[nodiscard]] std::chrono::system_clock::time_point now() const override { return m_now; }
    [[nodiscard]] double monotonicSeconds() const override { return m_seconds; }
    void advance(std::chrono::duration<double> step)
    {
        m_now += std::chrono::duration_cast<std::chrono::system_clock::duration>(step);
        m_seconds += step.count();
    }
    void setNow(std::chrono::system_clock::time_point now) { m_now = now; }

private:
    std::chrono::system_clock::time_point m_now;
    double m_seconds = 0;
};

} // namespace kelvox
