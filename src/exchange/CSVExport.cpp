#include "exchange/CSVExport.h"

#include "exchange/ExchangeDate.h"
#include "exchange/FileKind.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvox {

namespace {
std::string oneLine(std::string_view text, bool last)
{
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(),
        [last](char c) { return c == '\n' || c == '\r' || (c == ',' && !last); }, ' ');
    return line;
}

/// An unknown value leaves its field empty.
std::string field(const char* format, float value)
{
    return isKnown(value) ? fmt::format(fmt::runtime(format), value) : std::string();
}
} // namespace

CSVWriter::CSVWriter(TextOutput& out, const Strings& strings, const UnitsModel& units)
    : m_out(out)
    , m_latitude(NSPositionFormatter::Latitude, strings, units)
    , m_longitude(NSPositionFormatter::Longitude, strings, units)
{
}

void CSVWriter::writeWaypoint(const Waypoint& waypoint)
{
    m_out << oneLine(waypoint.name, false) << ","
          << m_latitude.stringForObjectValue(waypoint.latitude) << ","
          << m_longitude.stringForObjectValue(waypoint.longitude) << ","
          << oneLine(waypoint.description, true) << "\n";
}

void CSVWriter::writeTrack(const Track& point)
{
    constexpr const char* angle = "{:03.0f}";
    constexpr const char* tenths = "{:.1f}";
    if (point.date)
        m_out << plainDate(*point.date);
    m_out << "," << point.latitude << "," << point.longitude;
    for (const auto& text :
         {field(angle, point.cog), field(tenths, point.sog), field(angle, point.heading),
          field(tenths, point.speed), field(tenths, point.depth), field(angle, point.windAngle),
          field(tenths, point.windSpeed), oneLine(point.description, true)})
        m_out << "," << text;
    m_out << "\n";
}

bool CSVExport::isCSV(const std::filesystem::path& path)
{
    return hasExtension(path, ".CSV");
}

Result<void> CSVExport::exportWaypoints(const std::filesystem::path& path,
                                        const WaypointsModel& waypoints) const
{
    TextOutput out(path);
    CSVWriter writer(out, m_strings, m_units);
    for (std::size_t i = 0; i < waypoints.countMatch(); ++i)
        if (const auto waypoint = waypoints.waypointMatch(i); waypoint->hasPosition())
            writer.writeWaypoint(*waypoint);
    return out.finish();
}

Result<void> CSVExport::exportRoute(const std::filesystem::path& path, const Route& route) const
{
    TextOutput out(path);
    CSVWriter writer(out, m_strings, m_units);
    for (const auto& reference : route.waypointReferences())
        if (reference->waypoint && reference->waypoint->hasPosition())
            writer.writeWaypoint(*reference->waypoint);
    return out.finish();
}

Result<void> CSVExport::exportTracks(const std::filesystem::path& path,
                                     const TracksModel& tracks) const
{
    TextOutput out(path);
    CSVWriter writer(out, m_strings, m_units);
    for (const auto& point : tracks.objectEnumerator())
        if (point->hasPosition())
            writer.writeTrack(*point);
    return out.finish();
}

} // namespace kelvox
