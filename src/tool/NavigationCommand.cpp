// variation, distance, bearing, destination: the navigation maths on the command line.

#include "navigation/MagneticModel.h"
#include "navigation/NavMath.h"
#include "navigation/PositionFormatter.h"
#include "tool/Command.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

namespace kelvox {

namespace {
std::optional<double> number(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

/// Decimal degrees, or degrees and minutes with a letter as the program shows them.
double ordinate(const std::string& text, NSPositionFormatter::Orientation axis)
{
    const double limit = axis == NSPositionFormatter::Latitude ? 90 : 180;
    const char* name = axis == NSPositionFormatter::Latitude ? "latitude" : "longitude";
    if (const auto value = number(text)) {
        if (std::abs(*value) > limit)
            throw CLI::ValidationError(name, text + " is out of range");
        return *value;
    }
    const Strings strings;
    UnitsModel units;
    for (int format = 0; format <= 3; ++format) {
        units.positionFormatUnits = format;
        if (const auto value = NSPositionFormatter(axis, strings, units).getObjectValue(text))
            return *value;
    }
    throw CLI::ValidationError(name, text + " is neither decimal degrees nor like 59*12.3'N");
}

double latitude(const std::string& text)
{
    return ordinate(text, NSPositionFormatter::Latitude);
}

double longitude(const std::string& text)
{
    return ordinate(text, NSPositionFormatter::Longitude);
}

/// "LAT,LON"
Position position(const std::string& text)
{
    const auto comma = text.find(',');
    if (comma == std::string::npos)
        throw CLI::ValidationError("position", text + " is not LAT,LON");
    return {.longitude = longitude(text.substr(comma + 1)),
            .latitude = latitude(text.substr(0, comma))};
}

float quantity(const std::string& text, const char* name)
{
    const auto value = number(text);
    if (!value)
        throw CLI::ValidationError(name, text + " is not a number");
    return static_cast<float>(*value);
}

/// The Julian day of YYYY-MM-DD.
int day(const std::string& text)
{
    int year = 0;
    unsigned month = 0;
    unsigned dayOfMonth = 0;
    int length = 0;
    const bool read =
        std::sscanf(text.c_str(), "%4d-%2u-%2u%n", &year, &month, &dayOfMonth, // NOLINT
                    &length)
            == 3
        && length == static_cast<int>(text.size());
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(dayOfMonth)};
    if (!read || !date.ok())
        throw CLI::ValidationError("--date", text + " is not a date like 2026-07-04");
    return julianDayNumber(year, static_cast<int>(month), static_cast<int>(dayOfMonth));
}

struct Arguments {
    std::string first, second, bearing, distance, date;
};

constexpr const char* positionHelp = "LAT,LON in decimal degrees or like 59*12.3'N,10*45.6'E";
constexpr const char* negativeHelp = "Put -- before arguments that begin with a minus sign.";
} // namespace

void addNavigationCommand(Tool& tool)
{
    const auto arguments = std::make_shared<Arguments>();

    auto* variation = tool.command("variation", "Magnetic variation in degrees, east positive");
    variation->add_option("LAT", arguments->first, "latitude")->required();
    variation->add_option("LON", arguments->second, "longitude")->required();
    variation->add_option(
        "--date", arguments->date,
        "YYYY-MM-DD, taken as it is; without it the program's date rule for today");
    variation->footer(negativeHelp);
    variation->callback([arguments] {
        const Position place{.longitude = longitude(arguments->second),
                             .latitude = latitude(arguments->first)};
        const float degrees = arguments->date.empty()
            ? NavMath::variationForPoint(place)
            : NavMath::variationForDay(place, day(arguments->date));
        std::printf("%.3f\n", static_cast<double>(degrees));
    });

    auto* distance = tool.command("distance", "Great-circle distance in nautical miles");
    auto* bearing = tool.command("bearing", "Initial great-circle bearing in degrees true");
    for (auto* command : {distance, bearing}) {
        command->add_option("A", arguments->first, positionHelp)->required();
        command->add_option("B", arguments->second, positionHelp)->required();
        command->footer(negativeHelp);
    }
    distance->callback([arguments] {
        std::printf("%.3f\n",
                    static_cast<double>(NavMath::distanceFromPoint(position(arguments->first),
                                                                   position(arguments->second))));
    });
    bearing->callback([arguments] {
        std::printf("%.2f\n",
                    static_cast<double>(NavMath::bearingFromPoint(position(arguments->first),
                                                                  position(arguments->second))));
    });

    auto* destination = tool.command("destination", "LAT,LON at a bearing and distance");
    destination->add_option("LAT", arguments->first, "latitude")->required();
    destination->add_option("LON", arguments->second, "longitude")->required();
    destination->add_option("BEARING", arguments->bearing, "degrees true")->required();
    destination->add_option("NM", arguments->distance, "nautical miles")->required();
    destination->footer(negativeHelp);
    destination->callback([arguments] {
        const Position start{.longitude = longitude(arguments->second),
                             .latitude = latitude(arguments->first)};
        const auto end = NavMath::positionAtDistance(
            start, NavMath::fixBearing(quantity(arguments->bearing, "BEARING")),
            quantity(arguments->distance, "NM"));
        std::printf("%.6f,%.6f\n", end.latitude, NavMath::fixPosition(end.longitude));
    });
}

} // namespace kelvox
