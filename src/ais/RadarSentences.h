#pragma once

#include "base/NoValue.h"
#include "base/Position.h"
#include "positioning/NmeaFields.h"

#include <optional>
#include <string_view>

namespace kelvox {

/// What a bearing on a radar counts from.
enum class RadarReference { True, Heading, Course };

enum class RadarStatus { Tracking, Acquiring, Lost };

/// TTM: a target by distance and bearing from the own vessel. Nautical miles, knots, degrees;
/// unknown ones -1000. The texts point into the sentence.
struct TrackedTarget {
    int number = 0;
    float distance = static_cast<float>(noValue);
    float bearing = static_cast<float>(noValue);
    RadarReference bearingReference = RadarReference::True;
    float speed = static_cast<float>(noValue);
    float course = static_cast<float>(noValue);
    RadarReference courseReference = RadarReference::True;
    std::string_view name;
    RadarStatus status = RadarStatus::Tracking;
};

/// TLL: a target by its position.
struct LocatedTarget {
    int number = 0;
    Position position;
    std::string_view name;
    RadarStatus status = RadarStatus::Tracking;
};

/// RSD: the radar's cursor; the other fields of the sentence are not used.
struct RadarCursor {
    float distance = 0; ///< nautical miles
    float bearing = 0;
    RadarReference reference = RadarReference::Heading;
};

// Nothing without a target number from 0 to 999, or without the cursor's two fields. A missing
// unit counts as nautical miles, a missing display rotation as head up.
[[nodiscard]] std::optional<TrackedTarget> parseTTM(const NmeaFields& fields);
[[nodiscard]] std::optional<LocatedTarget> parseTLL(const NmeaFields& fields);
[[nodiscard]] std::optional<RadarCursor> parseRSD(const NmeaFields& fields);

} // namespace kelvox
