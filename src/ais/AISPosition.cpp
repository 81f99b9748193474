#include "ais/AISPosition.h"

namespace kelvox {

AISPosition::AISPosition(std::int32_t mmsi)
    : m_mmsi(mmsi)
    , m_name(mmsi >= 1 ? "~" + std::to_string(mmsi) : "~???")
{
}

bool AISPosition::underway() const
{
    constexpr float leastSpeed = 0.3F; // knots; below, a fix only wanders about
    return isKnown(m_sog) && m_sog > leastSpeed && isPositionKnown();
}

} // namespace kelvox
