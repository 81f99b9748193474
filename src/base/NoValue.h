#pragma once

#include <limits>

namespace kelvox {

/// Markers that stand where a number is not known. Test with isKnown() / isMissing(), never by
/// hand.
inline constexpr double noCoordinate = -10000.0; ///< either ordinate of an unknown position
inline constexpr double noValue = -1000.0; ///< course, speed, heading or instrument value
inline constexpr float missingGridValue = std::numeric_limits<float>::max(); ///< weather fields

/// Whether a course, speed, heading or instrument value is known.
[[nodiscard]] constexpr bool isKnown(double value)
{
    return value != noValue;
}
[[nodiscard]] constexpr bool isMissing(float gridValue)
{
    return gridValue == missingGridValue;
}

} // namespace kelvox
