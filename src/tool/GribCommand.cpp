// kelvox-tool grib: what a weather file holds, as JSON or as lines for a spreadsheet.

#include "base/NoValue.h"
#include "tool/Command.h"
#include "weather/GribFile.h"
#include "weather/GribModel.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <memory>

namespace kelvox {

namespace {
using Json = nlohmann::ordered_json;

struct GribOptions {
    std::string file;
    std::string at;
    std::string time;
    bool csv = false;
};

std::string isoTime(GribTime time)
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", time);
}

/// "2019-08-23T03:00:00Z"; the time may be cut short from its end down to the day.
std::optional<GribTime> parseTime(const std::string& text)
{
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int used = 0;
    const int count = std::sscanf(text.c_str(), "%4d-%2u-%2u%*1[T ]%2d:%2d:%2d%n", &year, &month,
                                  &day, &hour, &minute, &second, &used);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (count < 3 || !date.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0
        || second > 59)
        return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute)
        + std::chrono::seconds(second);
}

std::optional<Position> parsePosition(const std::string& text)
{
    Position position;
    const char* const end = text.data() + text.size();
    const auto latitude = std::from_chars(text.data(), end, position.latitude);
    if (latitude.ec != std::errc() || latitude.ptr == end || *latitude.ptr != ',')
        return std::nullopt;
    const auto longitude = std::from_chars(latitude.ptr + 1, end, position.longitude);
    if (longitude.ec != std::errc() || longitude.ptr != end || !(std::abs(position.latitude) <= 90)
        || !(std::abs(position.longitude) <= 360))
        return std::nullopt;
    return position;
}

template <typename Do> void forEachField(const GribPoints& points, Do&& work)
{
    for (int i = 0; i < gribFieldCount; ++i)
        if (const auto field = static_cast<GribField>(i); points.has(field))
            work(field);
}

void writeCsv(const GribModel& model)
{
    fmt::print("time,field,latitude,longitude,value\n");
    fmt::memory_buffer lines;
    for (const GribPoints* points : model.points()) {
        const std::string time = isoTime(points->forecastDate());
        forEachField(*points, [&](GribField field) {
            const auto& values = points->values(field);
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (isMissing(values[i]))
                    continue;
                const Position position = points->positionOf(i);
                fmt::format_to(std::back_inserter(lines), "{},{},{:.9g},{:.9g},{}\n", time,
                               gribFieldName(field), position.latitude, position.longitude,
                               values[i]);
            }
            std::fwrite(lines.data(), 1, lines.size(), stdout);
            lines.clear();
        });
    }
}

Json describeField(const GribPoints& points, GribField field)
{
    std::size_t missing = 0;
    float smallest = missingGridValue;
    float largest = -missingGridValue;
    for (const float value : points.values(field)) {
        if (isMissing(value)) {
            ++missing;
            continue;
        }
        smallest = std::min(smallest, value);
        largest = std::max(largest, value);
    }
    Json json = {{"field", gribFieldName(field)},
                 {"unit", gribFieldUnit(field)},
                 {"level", describe(points.level(field))},
                 {"missing", missing}};
    if (missing < points.values(field).size()) {
        json["minimum"] = smallest;
        json["maximum"] = largest;
    }
    return json;
}

Json describeGrid(const GribPoints& points)
{
    Json fields = Json::array();
    forEachField(points, [&](GribField field) { fields.push_back(describeField(points, field)); });
    return {{"time", isoTime(points.forecastDate())},
            {"first",
             {{"latitude", points.positionOnGPS().latitude},
              {"longitude", points.positionOnGPS().longitude}}},
            {"latitudeIncrement", points.latitudeIncrement()},
            {"longitudeIncrement", points.longitudeIncrement()},
            {"latitudeCount", points.latitudeCount()},
            {"longitudeCount", points.longitudeCount()},
            {"fields", fields}};
}

Json describeSkips(const std::vector<GribSkip>& skips)
{
    Json list = Json::array();
    for (const auto& skip : skips)
        list.push_back(
            {{"reason", skip.reason}, {"messages", skip.messages}, {"offset", skip.offset}});
    return list;
}

Json describeVector(const GribVector& vector)
{
    return {{"u", vector.east},
            {"v", vector.north},
            {"knots", vector.knots()},
            {"from", vector.fromDegrees()},
            {"towards", vector.towardsDegrees()}};
}

Json describeValues(const GribValues& values, GribTime time)
{
    Json json = {{"time", isoTime(time)}};
    if (values.wind)
        json["wind"] = describeVector(*values.wind);
    if (values.current)
        json["current"] = describeVector(*values.current);
    for (int i = 0; i < gribFieldCount; ++i)
        if (const auto value = values[static_cast<GribField>(i)])
            json[std::string(gribFieldName(static_cast<GribField>(i)))] = *value;
    return json;
}

Json describeFile(const GribModel& model, const GribOptions& options,
                  const std::optional<Position>& at, const std::optional<GribTime>& time)
{
    Json json = {{"file", options.file}, {"messages", model.messageCount()}};
    Json times = Json::array();
    for (const GribTime date : model.forecastDates())
        times.push_back(isoTime(date));
    json["times"] = times;
    if (at) {
        json["at"] = {{"latitude", at->latitude}, {"longitude", at->longitude}};
        Json values = Json::array();
        for (const GribTime date : time ? std::vector{*time} : model.forecastDates())
            if (const auto here = model.valuesAt(*at, date); !here.isEmpty())
                values.push_back(describeValues(here, date));
        json["values"] = values;
    } else {
        Json grids = Json::array();
        for (const GribPoints* points : time ? model.pointsAt(*time) : model.points())
            grids.push_back(describeGrid(*points));
        json["grids"] = grids;
    }
    json["skipped"] = describeSkips(model.skipped());
    json["ignored"] = describeSkips(model.ignored());
    return json;
}

void runGrib(Tool& tool, const GribOptions& options)
{
    std::optional<Position> at;
    std::optional<GribTime> time;
    if (!options.at.empty() && !(at = parsePosition(options.at)))
        throw CLI::ValidationError("--at", "not a position in degrees: " + options.at);
    if (!options.time.empty() && !(time = parseTime(options.time)))
        throw CLI::ValidationError("--time",
                                   "not a time such as 2024-06-15T18:00: " + options.time);

    const auto bytes = readGribFile(options.file); // never unpacked in its place: we only look
    if (!bytes)
        return tool.fail(bytes.error().message);
    const UnitsModel units;
    GribModel model(units);
    if (const auto loaded = model.loadBytes(*bytes, options.file); !loaded)
        return tool.fail(loaded.error().message);
    if (options.csv)
        return writeCsv(model);
    fmt::print("{}\n", describeFile(model, options, at, time).dump(2));
}
} // namespace

void addGribCommand(Tool& tool)
{
    auto options = std::make_shared<GribOptions>();
    CLI::App* command = tool.command("grib", "Weather file: grids, times and fields as JSON");
    command->add_option("FILE", options->file, "GRIB file of edition 0 or 1, also as .bz2")
        ->required();
    auto* at = command->add_option("--at", options->at,
                                   "Values at LAT,LON in degrees, north and east positive");
    command->add_option("--time", options->time,
                        "Only this time (UTC), e.g. 2024-06-15T18:00; with --at between steps too");
    command
        ->add_flag("--csv", options->csv,
                   "One line per grid point and field: time, field, latitude, longitude, value")
        ->excludes(at);
    command->footer("--at with a southern latitude: --at=-33.5,18.25");
    command->callback([&tool, options] { runGrib(tool, *options); });
}

} // namespace kelvox
