#pragma once

#include "base/Clock.h"
#include "base/NoValue.h"
#include "base/Position.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace kelvox {

/// The way to the other processes of this computer; the program fills it with its message bus.
class NotificationBus {
public:
    virtual ~NotificationBus() = default;
    /// Whether a listening companion process is running.
    [[nodiscard]] virtual bool companionRuns() const = 0;
    virtual void post(const std::string& name, const std::string& text) = 0;
};

/// Tells companion processes where the boat is. Main thread.
class GPSNotification {
public:
    static constexpr const char* name = "gpsPosition";

    GPSNotification(const Clock& clock, NotificationBus& bus)
        : m_clock(clock)
        , m_bus(bus)
    {
    }

    /// Posts "longitude latitude speed course heading", six decimals each, unknown ones -1000:
    /// only while a companion runs, and at most every 2 seconds, except that an unknown position
    /// goes out at once.
    void postGPSPosition(Position position, float speedKnots, float courseDegrees,
                         float headingDegrees = static_cast<float>(noValue));

    using Observer = std::function<void(const std::string& text)>;
    /// Observers in this process get every text that is posted.
    void addObserver(Observer observer) { m_observers.push_back(std::move(observer)); }

private:
    const Clock& m_clock;
    NotificationBus& m_bus;
    std::vector<Observer> m_observers;
    double m_posted = -std::numeric_limits<double>::infinity(); // monotonic seconds
};

} // namespace kelvox
