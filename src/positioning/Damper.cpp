#include "positioning/Damper.h"

#include "navigation/NavMath.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kelvox {

Damper::Damper(std::size_t length)
    : m_length(std::max<std::size_t>(length, 1))
{
}

float Damper::averageCourse(float course)
{
    const float mean = m_values.empty() ? 0 : sum() / static_cast<float>(m_values.size());
    const float turn = mean > 300 && course < 90 ? -360.0F : course > 300 && mean < 90 ? 360.0F : 0;
    for (float& value : m_values)
        value += turn;

    if (m_criticalAngle > 0 && !m_values.empty()
        && std::abs(sum() / static_cast<float>(m_values.size()) - course) > m_criticalAngle)
        m_values.clear();

    const float average = (sum() + course) / static_cast<float>(m_values.size() + 1);
    m_values.push_back(course);
    if (m_values.size() > m_length)
        m_values.pop_front();
    return NavMath::fixBearing(average);
}

float Damper::averageSpeed(float speed)
{
    m_values.push_back(speed);
    if (m_values.size() > m_length)
        m_values.pop_front();
    return sum() / static_cast<float>(m_values.size());
}

float Damper::sum() const
{
    return std::accumulate(m_values.begin(), m_values.end(), 0.0F);
}

} // namespace kelvox
