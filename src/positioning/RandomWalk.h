#pragma once

#include <algorithm>
#include <random>

namespace kelvox {

/// A value that wanders smoothly between two bounds: its slope changes at random and is drawn back
/// to the middle, so that it neither jumps nor sticks to a bound.
class RandomWalk {
public:
    /// @param liveliness how far the slope may change in one step
    RandomWalk(double start, double lowest, double highest, double liveliness)
        : m_value(start)
        , m_lowest(lowest)
        , m_highest(highest)
        , m_liveliness(liveliness)
    {
    }
    template <typename Random> double step(Random& random)
    {
        std::uniform_real_distribution<double> push(-m_liveliness, m_liveliness);
        const double middle = (m_lowest + m_highest) / 2;
        m_slope = 0.9 * m_slope + push(random)
            + 0.2 * m_liveliness * (middle - m_value) / (m_highest - m_lowest);
        m_value = std::clamp(m_value + m_slope, m_lowest, m_highest);
        return m_value;
    }
    [[nodiscard]] double value() const { return m_value; }
    void setValue(double value) { m_value = value; }

private:
    double m_value;
    double m_lowest;
    double m_highest;
    double m_liveliness;
    double m_slope = 0;
};

} // namespace kelvox
