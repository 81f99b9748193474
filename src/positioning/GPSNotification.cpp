#include "positioning/GPSNotification.h"

#include <fmt/format.h>

namespace kelvox {

void GPSNotification::postGPSPosition(Position position, float speedKnots, float courseDegrees,
                                      float headingDegrees)
{
    constexpr double interval = 2; // seconds
    const auto now = m_clock.monotonicSeconds();
    if ((position.isKnown() && now - m_posted < interval) || !m_bus.companionRuns())
        return;
    m_posted = now;
    const auto text = fmt::format("{:f} {:f} {:f} {:f} {:f}", position.longitude, position.latitude,
                                  speedKnots, courseDegrees, headingDegrees);
    m_bus.post(name, text);
    for (const auto& observer : m_observers)
        observer(text);
}

} // namespace kelvox
