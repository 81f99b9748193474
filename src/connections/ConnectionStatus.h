#pragma once

#include <algorithm>
#include <string>

namespace kelvox {

/// What a connection is doing, for the user to see.
struct ConnectionStatus {
    enum class State {
        Closed, ///< by the user's choice, or not opened yet
        Opening,
        Open,
        Waiting, ///< lost or refused; tried again by itself
    };
    State state = State::Closed;
    std::string target; ///< "/dev/ttyUSB0 at 4800", "chart-pc:2114"
    std::string reason; ///< why it is not open, with the remedy where there is one
    double retryAt = 0; ///< while waiting: monotonic seconds of the next try

    friend bool operator==(const ConnectionStatus&, const ConnectionStatus&) = default;
};

/// How long to wait before the next try: 1, 2, 4, 8, 16, then every 30 seconds.
class Backoff {
public:
    double next()
    {
        constexpr double longest = 30;
        const double seconds = m_seconds;
        m_seconds = std::min(m_seconds * 2, longest);
        return seconds;
    }
    void reset() { m_seconds = 1; }

private:
    double m_seconds = 1;
};

} // namespace kelvox
