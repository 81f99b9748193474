#pragma once

#include "base/NoValue.h"
#include "base/Position.h"
#include "positioning/BitBuffer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace kelvox {

enum class AISClass : std::uint8_t { Unknown = 0, A = 1, B = 2 };

/// Distances from the antenna to the sides of the vessel, whole metres; 0 not available.
struct AISDimensions {
    unsigned bow = 0;
    unsigned stern = 0;
    unsigned port = 0;
    unsigned starboard = 0;

    static constexpr float feetPerMetre = 3.28084F;
    [[nodiscard]] float lengthFeet() const
    {
        return static_cast<float>(bow + stern) * feetPerMetre;
    }
    [[nodiscard]] float beamFeet() const
    {
        return static_cast<float>(port + starboard) * feetPerMetre;
    }
    /// Where the antenna stands: x feet from the starboard side, y feet from the bow.
    [[nodiscard]] Point referencePoint() const
    {
        return {static_cast<float>(starboard) * feetPerMetre,
                static_cast<float>(bow) * feetPerMetre};
    }
};

/// Message types 1, 2, 3 (class A) and 18 (class B). At least one ordinate is known.
struct AISPositionReport {
    int type = 0;
    std::int32_t mmsi = 0;
    AISClass equipmentClass = AISClass::Unknown;
    Position position = {}; ///< an ordinate that is not available is noCoordinate
    float speedKnots = static_cast<float>(noValue); ///< over ground, below 102
    float courseDegrees = static_cast<float>(noValue); ///< over ground, true
    /// True heading. Class B reports are not asked for theirs, on purpose.
    float headingDegrees = static_cast<float>(noValue);
};

/// Message types 5 and 24; what the message has no field for is nothing.
struct AISStaticReport {
    int type = 0;
    std::int32_t mmsi = 0;
    std::optional<std::string> name = {};
    std::optional<std::string> callSign = {};
    std::optional<std::string> destination = {};
    std::optional<int> shipType = {}; ///< ship and cargo type, 0 to 255; 0 not available
    std::optional<AISDimensions> dimensions = {};
};

/// Nothing for the message types that are not decoded and for what is to be ignored.
using AISReport = std::variant<std::monostate, AISPositionReport, AISStaticReport>;

/// The message that the bits hold; field by field after ITU-R M.1371.
///
/// A field that reaches beyond the last bit reads as 0, a text as empty: a message that lost its
/// end still gives what came.
[[nodiscard]] AISReport decodeAISReport(const BitBuffer& bits);

/// Degrees from the raw 27-bit latitude and 28-bit longitude, in single precision on purpose. A
/// negative raw value counts one unit (1/10000 minute) nearer zero, also on purpose.
[[nodiscard]] Position aisPositionOnGPS(std::uint32_t rawLatitude, std::uint32_t rawLongitude);

} // namespace kelvox
