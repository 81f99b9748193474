#pragma once

#include <cstddef>
#include <deque>

namespace kelvox {

/// Smooths courses or speeds over the last few values.
class Damper {
public:
    /// @param length how many values are kept; 0 counts as 1
    explicit Damper(std::size_t length);

    /// Degrees; a course further than this from the average restarts it. 0 turns that off.
    void setCriticalAngle(float degrees) { m_criticalAngle = degrees; }
    void reset() { m_values.clear(); }
    [[nodiscard]] std::size_t count() const { return m_values.size(); }

    /// The average course in [0, 360) with the new one. Once the window is full it runs over one
    /// value more than is kept, on purpose.
    float averageCourse(float course);
    /// The mean of the kept speeds with the new one.
    float averageSpeed(float speed);

private:
    [[nodiscard]] float sum() const;

    std::size_t m_length;
    float m_criticalAngle = 45.0F;
    std::deque<float> m_values; // oldest first
};

} // namespace kelvox
