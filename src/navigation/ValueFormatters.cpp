#include "navigation/ValueFormatters.h"

#include "navigation/NavMath.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kelvox {

namespace {
constexpr std::string_view degreeSign = "\u00B0";

// Speeds and distances use different kilometres and metres to the mile, and temperatures two
// roundings of 5/9. All are kept on purpose.
constexpr double milesPerKnot = 1.1516;
constexpr double kilometresPerKnot = 1.8533;
constexpr double metresPerSecondPerKnot = 0.5144;
constexpr double feetPerMile = 6080.4;
constexpr double yardsPerMile = 2026.8;
constexpr double metresPerMile = 1853.3;
constexpr double kilometresPerMile = 1.852;
constexpr double statutePerMile = 1.1516;
constexpr double metresPerFoot = 0.3048;
constexpr double fathomsPerFoot = 0.1666;

bool isShown(double value)
{
    return isKnown(value) && std::isfinite(value);
}

/// The pattern "#,###,##0" with so many decimals.
std::string grouped(double value, int decimals)
{
    std::string digits = fmt::format("{:.{}f}", std::abs(value), decimals);
    const bool isZero = digits.find_first_not_of("0.") == std::string::npos;
    const auto whole = static_cast<std::ptrdiff_t>(std::min(digits.find('.'), digits.size()));
    for (auto at = whole - 3; at > 0; at -= 3)
        digits.insert(static_cast<std::size_t>(at), 1, ',');
    return value < 0 && !isZero ? "-" + digits : digits;
}

double inUnit(double miles, int surfaceDistanceUnits)
{
    switch (surfaceDistanceUnits) {
    case UnitsModel::Kilometres:
        return miles * kilometresPerMile;
    case UnitsModel::StatuteMiles:
        return miles * statutePerMile;
    default:
        return miles;
    }
}

/// Empty for a code that is not known.
std::string_view distanceName(int surfaceDistanceUnits)
{
    switch (surfaceDistanceUnits) {
    case UnitsModel::NauticalMilesAndFeet:
    case UnitsModel::NauticalMilesAndMetres:
    case UnitsModel::NauticalMiles:
        return "NM";
    case UnitsModel::Kilometres:
        return "KM";
    case UnitsModel::StatuteMiles:
        return "mi";
    default:
        return {};
    }
}
} // namespace

Result<double> ValueFormatter::getObjectValue(std::string_view text)
{
    const auto start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const bool plus = start < text.size() && text[start] == '+';
    const char* begin = text.data() + start + (plus ? 1 : 0);
    double value = 0;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)
        || (plus && *begin == '-'))
        return failure(Error::Code::BadSyntax, fmt::format("not a number: {}", text), start);
    return value;
}

std::string NSSogFormatter::stringForObjectValue(double knots) const
{
    if (!isShown(knots))
        return {};
    const auto show = [&](double value, std::string_view unit) {
        return m_showUnits ? fmt::format("{:.1f} {}", value, unit) : fmt::format("{:.1f}", value);
    };
    switch (units().boatSpeedUnits) {
    case UnitsModel::Knots:
        return show(knots, "KTS");
    case UnitsModel::MilesPerHour:
        return show(knots * milesPerKnot, "MPH");
    case UnitsModel::KilometresPerHour:
        return show(knots * kilometresPerKnot, "KM/H");
    default:
        return {};
    }
}

std::string NSAwsFormatter::stringForObjectValue(double knots) const
{
    if (!isShown(knots))
        return {};
    switch (units().windSpeedUnits) {
    case UnitsModel::WindKnots:
        return fmt::format("{:.1f} KTS", knots);
    case UnitsModel::WindMilesPerHour:
        return fmt::format("{:.1f} MPH", knots * milesPerKnot);
    case UnitsModel::WindKilometresPerHour:
        return fmt::format("{:.1f} KP/H", knots * kilometresPerKnot);
    case UnitsModel::WindMetresPerSecond:
        return fmt::format("{:.1f} m/s", knots * metresPerSecondPerKnot);
    default:
        return {};
    }
}

std::string NSDtwFormatter::stringForObjectValue(double miles) const
{
    if (!isShown(miles) || miles < 0)
        return "---";
    const std::string sign = m_showSign ? "+" : "";
    const int unit = units().surfaceDistanceUnits;
    if (unit == UnitsModel::NauticalMilesAndFeet && miles < 1)
        return m_showFeet ? sign + grouped(miles * feetPerMile, 0) + "'"
                          : sign + grouped(miles * yardsPerMile, 0) + " YDS";
    if (unit == UnitsModel::NauticalMilesAndMetres && miles < 1)
        return sign + grouped(miles * metresPerMile, 0) + " m";
    const auto name = distanceName(unit);
    if (name.empty())
        return {};
    return fmt::format("{}{} {}", sign, grouped(inUnit(miles, unit), m_showFractional ? 2 : 0),
                       name);
}

std::string NSXteFormatter::stringForObjectValue(double miles) const
{
    if (!isShown(miles))
        return {};
    const int unit = units().surfaceDistanceUnits;
    if (unit == UnitsModel::NauticalMilesAndFeet && miles < 1)
        return grouped(miles * feetPerMile, 0) + "'";
    if (unit == UnitsModel::NauticalMilesAndMetres && miles < 1)
        return grouped(miles * metresPerMile, 0) + " m";
    const auto name = distanceName(unit);
    if (name.empty())
        return {};
    return fmt::format("{:.2f} {} ", inUnit(miles, unit), name); // the trailing blank is part of it
}

std::string NSCogFormatter::stringForObjectValue(double degrees) const
{
    if (!isShown(degrees) || degrees < 0)
        return {};
    if (m_magnetic)
        degrees = NavMath::magneticBearing(static_cast<float>(degrees), m_variation);
    const bool isTrue = !m_magnetic && m_variation < 0.01F;
    return fmt::format("{:03.0f}{} {}", std::min(degrees, 359.0), degreeSign,
                       m_strings.text(isTrue ? "NSTrue" : "NSMag"));
}

std::string NSEtaFormatter::stringForObjectValue(double hours) const
{
    if (!isKnown(hours) || std::isnan(hours))
        return {};
    constexpr double longest = 1e6; // a century: beyond it, nothing is under way
    if (hours <= 0 || hours > longest)
        return "---";
    if (hours < 1.0 / 60)
        return fmt::format(":{:02}", static_cast<int>(hours * 3600));
    const auto whole = static_cast<unsigned>(hours);
    return fmt::format("{}:{:02}", whole, static_cast<unsigned>((hours - whole) * 60));
}

std::string NSDptFormatter::stringForObjectValue(double feet) const
{
    if (!isShown(feet))
        return {};
    switch (units().waterDepthUnits) {
    case UnitsModel::Feet:
        return grouped(feet, 1) + "'";
    case UnitsModel::Metres:
        return grouped(feet * metresPerFoot, 1) + " m";
    case UnitsModel::Fathoms:
        return grouped(feet * fathomsPerFoot, 1) + " ftm";
    default:
        return {};
    }
}

std::string NSTmpFormatter::stringForObjectValue(double fahrenheit) const
{
    if (!isShown(fahrenheit))
        return {};
    switch (units().temperatureUnits) {
    case UnitsModel::Fahrenheit:
        return fmt::format("{:.0f}{}F", fahrenheit, degreeSign);
    case UnitsModel::Celsius:
        return fmt::format("{:.0f}{}C", (fahrenheit - 32) * 0.5555, degreeSign);
    case UnitsModel::Kelvin:
        return fmt::format("{:.0f}K", (fahrenheit + 459.67) * 0.5555556);
    default:
        return {};
    }
}

std::string NSAwaFormatter::stringForObjectValue(double degrees) const
{
    if (!isShown(degrees))
        return {};
    std::string side;
    if (degrees >= 1)
        side = m_strings.text("NSStarboard");
    else if (degrees <= -1)
        side = m_strings.text("NSPort");
    return fmt::format("{:03.0f}{} {}", std::abs(degrees), degreeSign, side);
}

std::string NSLenFormatter::stringForObjectValue(double feet) const
{
    if (!isShown(feet))
        return {};
    return units().heightsInMetres() ? grouped(feet * metresPerFoot, 1) + " m"
                                     : grouped(feet, 1) + "'";
}

} // namespace kelvox
