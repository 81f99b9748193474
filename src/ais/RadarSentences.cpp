#include "ais/RadarSentences.h"

#include "positioning/NMEA.h"

namespace kelvox {
namespace {

constexpr float unknown = static_cast<float>(noValue);

std::optional<int> targetNumber(std::string_view field)
{
    constexpr int largest = 999;
    if (field.empty() || field.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    const int number = NMEA::integer(field);
    return number <= largest ? std::optional(number) : std::nullopt;
}

RadarStatus status(std::string_view field)
{
    if (field == "L")
        return RadarStatus::Lost;
    return field == "Q" ? RadarStatus::Acquiring : RadarStatus::Tracking;
}

/// From the unit of a distance, or of a speed per hour, to nautical miles or knots.
float mileFactor(std::string_view unit)
{
    if (unit == "K")
        return 1 / 1.852F;
    if (unit == "S")
        return 1.609344F / 1.852F;
    return 1;
}

float scaled(std::string_view field, float factor)
{
    const auto value = NMEA::number(field);
    return value && *value >= 0 ? *value * factor : unknown;
}

RadarReference reference(std::string_view field)
{
    return field == "R" ? RadarReference::Heading : RadarReference::True;
}

} // namespace

std::optional<TrackedTarget> parseTTM(const NmeaFields& fields)
{
    const auto number = targetNumber(fields[1]);
    if (!number)
        return std::nullopt;
    const float factor = mileFactor(fields[10]);
    return TrackedTarget{
        .number = *number,
        .distance = scaled(fields[2], factor),
        .bearing = NMEA::number(fields[3]).value_or(unknown),
        .bearingReference = reference(fields[4]),
        .speed = scaled(fields[5], factor),
        .course = NMEA::number(fields[6]).value_or(unknown),
        .courseReference = reference(fields[7]),
        .name = fields[11],
        .status = status(fields[12]),
    };
}

std::optional<LocatedTarget> parseTLL(const NmeaFields& fields)
{
    const auto number = targetNumber(fields[1]);
    if (!number)
        return std::nullopt;
    return LocatedTarget{
        .number = *number,
        .position = {.longitude = NMEA::position(fields[4], fields[5]),
                     .latitude = NMEA::position(fields[2], fields[3])},
        .name = fields[6],
        .status = status(fields[8]),
    };
}

std::optional<RadarCursor> parseRSD(const NmeaFields& fields)
{
    const float distance = scaled(fields[9], mileFactor(fields[12]));
    const auto bearing = NMEA::number(fields[10]);
    if (!isKnown(distance) || !bearing)
        return std::nullopt;
    const auto rotation = fields[13];
    return RadarCursor{
        .distance = distance,
        .bearing = *bearing,
        .reference = rotation == "N" ? RadarReference::True
            : rotation == "C"        ? RadarReference::Course
                                     : RadarReference::Heading,
    };
}

} // namespace kelvox
