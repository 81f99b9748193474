#include "exchange/GPXExport.h"

#include "exchange/ExchangeDate.h"
#include "exchange/FileKind.h"
#include "exchange/XmlReader.h"
#include "navigation/WaypointIcons.h"

#include <fmt/format.h>

#include <ctime>

namespace kelvox {

void GPXWriter::writeHeader()
{
    m_out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
             "<gpx version=\"1.1\" creator=\"Kelvox\"\n"
             "xmlns=\"http://www.topografix.com/GPX/1/1\" "
             "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
             "xsi:schemaLocation=\"http://www.topografix.com/GPX/1/1 "
             "http://www.topografix.com/GPX/1/1/gpx.xsd\">\n";
}

void GPXWriter::writeFooter()
{
    m_out << "</gpx>\n";
}

void GPXWriter::writeWaypoint(const Waypoint& waypoint, std::string_view element)
{
    m_out << "<" << element << " lat=\"" << waypoint.latitude << "\" lon=\"" << waypoint.longitude
          << "\">\n<name>" << escapedForXml(waypoint.name) << "</name>\n";
    if (!waypoint.description.empty())
        m_out << "<desc>" << escapedForXml(waypoint.description) << "</desc>\n";
    if (const auto* icon = waypointIcon(waypoint.iconIndex))
        m_out << "<sym>" << icon->name << "</sym>\n";
    m_out << "</" << element << ">\n";
}

void GPXWriter::beginRoute(std::string_view name)
{
    m_out << "<rte>\n<name>" << escapedForXml(name) << "</name>\n";
}

void GPXWriter::beginTrack(std::string_view name)
{
    m_out << "<trk>\n<name>" << escapedForXml(name) << "</name>\n<trkseg>\n";
    m_segmentHasPoints = false;
}

void GPXWriter::writeTrack(const Track& point, bool isStart)
{
    if (isStart && m_segmentHasPoints)
        m_out << "</trkseg>\n<trkseg>\n";
    m_segmentHasPoints = true;
    m_out << "<trkpt lat=\"" << point.latitude << "\" lon=\"" << point.longitude << "\">\n";
    if (point.date)
        m_out << "<time>" << isoDate(*point.date) << "</time>\n";
    if (isKnown(point.cog))
        m_out << fmt::format("<course>{:.1f}</course>\n", point.cog);
    if (isKnown(point.sog))
        m_out << fmt::format("<speed>{:.1f}</speed>\n", point.sog);
    m_out << "</trkpt>\n";
}

void GPXWriter::endTrack()
{
    m_out << "</trkseg>\n</trk>\n";
}

bool GPXExport::isGPX(const std::filesystem::path& path)
{
    return hasExtension(path, ".GPX");
}

Result<void> GPXExport::exportWaypoints(const std::filesystem::path& path,
                                        const WaypointsModel& waypoints) const
{
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    for (std::size_t i = 0; i < waypoints.countMatch(); ++i)
        if (const auto waypoint = waypoints.waypointMatch(i); waypoint->hasPosition())
            writer.writeWaypoint(*waypoint, "wpt");
    writer.writeFooter();
    return out.finish();
}

Result<void> GPXExport::exportWaypointsFromGroup(const std::filesystem::path& path,
                                                 const WaypointsModel& waypoints,
                                                 const std::string& group) const
{
    const auto members = waypoints.waypointsForGroup(group);
    if (members.empty())
        return failure(Error::Code::OutOfRange, "the group has no waypoints");
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    for (const auto& waypoint : members)
        if (waypoint->hasPosition())
            writer.writeWaypoint(*waypoint, "wpt");
    writer.writeFooter();
    return out.finish();
}

Result<void> GPXExport::exportRoute(const std::filesystem::path& path, const Route& route) const
{
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    writer.beginRoute(route.name);
    for (const auto& reference : route.waypointReferences())
        if (reference->waypoint && reference->waypoint->hasPosition())
            writer.writeWaypoint(*reference->waypoint, "rtept");
    writer.endRoute();
    writer.writeFooter();
    return out.finish();
}

Result<void> GPXExport::exportTracks(const std::filesystem::path& path,
                                     const TracksModel& tracks) const
{
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    writer.beginTrack(path.stem().string());
    bool isStart = false; // also when the point that starts the line has no position
    for (std::size_t i = 0; i < tracks.count(); ++i) {
        isStart = isStart || tracks.isStart(i);
        if (const auto point = tracks.track(i); point->hasPosition()) {
            writer.writeTrack(*point, isStart);
            isStart = false;
        }
    }
    writer.endTrack();
    writer.writeFooter();
    return out.finish();
}

std::string GPXExport::defaultTrackName(const Clock& clock)
{
    const std::time_t second = std::chrono::system_clock::to_time_t(clock.now());
    std::tm local{};
    ::localtime_r(&second, &local);
    return fmt::format("TRACK_{:02}{:02}{:02}", local.tm_mon + 1, local.tm_mday,
                       local.tm_year % 100);
}

} // namespace kelvox
