#include "exchange/KMLExport.h"

#include "exchange/ExchangeDate.h"
#include "exchange/FileKind.h"
#include "exchange/Program.h"
#include "exchange/XmlReader.h"
#include "navigation/WaypointIcons.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvox {

namespace {
constexpr const char* lineEnd = "</coordinates>\n</LineString>\n</Placemark>\n";

int colorByte(float component)
{
    return static_cast<int>(std::clamp(component, 0.0F, 1.0F) * 255);
}
} // namespace

void KMLWriter::writeHeader(std::string_view folderName)
{
    m_out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
             "<kml xmlns=\"http://earth.google.com/kml/2.0\">\n<Folder>\n<name>"
          << escapedForXml(folderName) << "</name>\n";
}

void KMLWriter::writeFooter()
{
    m_out << "</Folder>\n</kml>\n";
}

void KMLWriter::writeStartPosition(Position position)
{
    m_out << fmt::format("<LookAt>\n<longitude>{:.6f}</longitude>\n<latitude>{:.6f}</latitude>\n"
                         "<range>5000</range>\n<tilt>0</tilt>\n<heading>0</heading>\n</LookAt>\n",
                         position.longitude, position.latitude);
}

void KMLWriter::writeWaypoint(const Waypoint& waypoint)
{
    m_out << "<Placemark>\n<name>" << escapedForXml(waypoint.name) << "</name>\n<description>"
          << escapedForXml(waypoint.description)
          << "</description>\n<Style>\n<IconStyle>\n<scale>0.5</scale>\n";
    if (const auto* icon = waypointIcon(waypoint.iconIndex))
        m_out << "<Icon>\n<href>" << escapedForXml(m_iconBase) << icon->name
              << ".png</href>\n</Icon>\n";
    m_out << "</IconStyle>\n</Style>\n<Point>\n<coordinates>" << waypoint.longitude << ","
          << waypoint.latitude << ",0</coordinates>\n</Point>\n</Placemark>\n";
}

void KMLWriter::startRoute(std::string_view name)
{
    m_out << "<Placemark>\n<name>" << escapedForXml(name)
          << "</name>\n<Style>\n<LineStyle>\n<color>FFFF7F00</color>\n<width>3</width>\n"
             "</LineStyle>\n</Style>\n<LineString>\n<coordinates>\n";
}

void KMLWriter::startTrack(TrackColor color)
{
    m_out << fmt::format(
        "<Placemark>\n<Style>\n<LineStyle>\n<color>{:02x}{:02x}{:02x}{:02x}</color>"
        "\n<width>2</width>\n</LineStyle>\n</Style>\n<LineString>\n<coordinates>\n",
        255, colorByte(color.blue), colorByte(color.green), colorByte(color.red));
}

void KMLWriter::writePosition(const ChartMarker& marker)
{
    m_out << marker.longitude << "," << marker.latitude << ",0\n";
}

void KMLWriter::endTrack()
{
    m_out << lineEnd;
}

void KMLWriter::writeTrack(const Track& point)
{
    m_out << "<Placemark>\n";
    if (point.date)
        m_out << "<name>" << plainDate(*point.date) << "</name>\n";
    m_out << "<Point>\n<coordinates>" << point.longitude << "," << point.latitude
          << ",0</coordinates>\n</Point>\n</Placemark>\n";
}

KMLExport::KMLExport(const Settings& settings)
    : m_iconBase(settings.text(iconBaseKey))
{
}

bool KMLExport::isKML(const std::filesystem::path& path)
{
    return hasExtension(path, ".KML") || hasExtension(path, ".KMZ");
}

Result<void> KMLExport::exportWaypoints(const std::filesystem::path& path,
                                        const WaypointsModel& waypoints) const
{
    TextOutput out(path);
    KMLWriter writer(out, m_iconBase);
    writer.writeHeader(path.stem().string());
    for (std::size_t i = 0; i < waypoints.countMatch(); ++i)
        if (const auto waypoint = waypoints.waypointMatch(i); waypoint->hasPosition())
            writer.writeWaypoint(*waypoint);
    writer.writeFooter();
    return out.finish();
}

Result<void> KMLExport::exportRoute(const std::filesystem::path& path, const Route& route) const
{
    TextOutput out(path);
    KMLWriter writer(out, m_iconBase);
    writer.writeHeader(path.stem().string());
    const auto each = [&](auto&& write) {
        for (const auto& reference : route.waypointReferences())
            if (reference->waypoint && reference->waypoint->hasPosition())
                write(*reference->waypoint);
    };
    each([&](const Waypoint& waypoint) { writer.writeWaypoint(waypoint); });
    writer.startRoute(route.name);
    each([&](const Waypoint& waypoint) { writer.writePosition(waypoint); });
    writer.endTrack();
    writer.writeFooter();
    return out.finish();
}

Result<void> KMLExport::exportTracks(const std::filesystem::path& path,
                                     const TracksModel& tracks) const
{
    TextOutput out(path);
    KMLWriter writer(out, m_iconBase);
    writer.writeHeader(path.stem().string());
    bool isOpen = false;
    bool isStart = true;
    for (std::size_t i = 0; i < tracks.count(); ++i) {
        const auto point = tracks.track(i);
        isStart = isStart || tracks.isStart(i);
        if (!point->hasPosition())
            continue;
        if (isStart && isOpen)
            writer.endTrack();
        if (isStart)
            writer.startTrack(point->color);
        isOpen = true;
        isStart = false;
        writer.writePosition(*point);
    }
    if (isOpen)
        writer.endTrack();
    writer.writeFooter();
    return out.finish();
}

Result<void> KMLExport::exportPlacemarks(const std::filesystem::path& path,
                                         std::string_view placemarks, Position start,
                                         const std::stop_token& stop) const
{
    TextOutput out(path, stop);
    KMLWriter writer(out, m_iconBase);
    writer.writeHeader(path.stem().string());
    if (start.isKnown())
        writer.writeStartPosition(start);
    writer.writePlacemarks(placemarks);
    writer.writeFooter();
    return out.finish();
}

Result<void> KMLExport::openGoogleEarth(const std::filesystem::path& path)
{
    return runProgram({"xdg-open", std::filesystem::absolute(path).string()});
}

} // namespace kelvox
