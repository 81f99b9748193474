#include "exchange/GPXImport.h"

#include "exchange/ExchangeDate.h"
#include "navigation/WaypointIcons.h"

#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <utility>

namespace kelvox {

namespace {
constexpr float colorStep = 0.05F;

float number(std::string_view text, float otherwise)
{
    text = trimmed(text);
    float value = otherwise;
    (void)std::from_chars(text.data(), text.data() + text.size(), value);
    return std::isfinite(value) ? value : otherwise;
}
} // namespace

GPXImport::GPXImport(const ImportOptions& options)
    : m_options(options)
    , m_trackColor(options.trackColor)
{
}

bool GPXImport::isGPX(const std::filesystem::path& path)
{
    std::array<char, 128> head{};
    std::error_code notThere;
    if (!std::filesystem::is_regular_file(path, notThere))
        return false;
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), head.size());
    return std::string_view(head.data(), static_cast<std::size_t>(file.gcount())).find("<gpx")
        != std::string_view::npos;
}

Result<void> GPXImport::import(const std::filesystem::path& path, ExchangeTarget& target)
{
    m_target = &target;
    return readXml(path, *this, m_options.stop);
}

Result<void> GPXImport::parse(std::string_view bytes, ExchangeTarget& target)
{
    m_target = &target;
    return parseXml(bytes, *this);
}

void GPXImport::startElement(std::string_view name, const XmlAttributes& attributes)
{
    m_valueString.clear();
    if (name == "trkpt") {
        beginTrackPoint(attributes);
    } else if (name == "wpt" || name == "rtept") {
        m_waypoint.emplace();
        (void)setPlace(*m_waypoint, attributes.value("lat"), attributes.value("lon"));
    } else if (name == "rte") {
        m_routeName.emplace();
    } else if (name == "trkseg") {
        ++m_segments;
        setColor();
    }
}

/// Each component wraps around at white, so that two neighbours always differ.
void GPXImport::setColor()
{
    const auto lighter = [this](float component) {
        const float raised = component + colorStep * static_cast<float>(m_segments % 20);
        return raised > 1 ? raised - 1 : raised;
    };
    const auto& first = m_options.trackColor;
    m_trackColor = {lighter(first.red), lighter(first.green), lighter(first.blue)};
}

void GPXImport::beginTrackPoint(const XmlAttributes& attributes)
{
    m_track.emplace();
    m_track->name = std::to_string(m_options.key++);
    m_track->date = Date(std::chrono::seconds(m_options.key));
    (void)setPlace(*m_track, attributes.value("lat"), attributes.value("lon"));
    m_track->color = m_trackColor;
}

void GPXImport::characters(std::string_view text)
{
    if (m_waypoint || m_track || m_routeName)
        appendBounded(m_valueString, text);
}

void GPXImport::endElement(std::string_view name)
{
    if (name == "trkpt") {
        if (m_track && m_track->hasPosition())
            m_target->trackPoint(std::move(*m_track));
        else
            m_target->passedOver();
        m_track.reset();
    } else if (name == "wpt" || name == "rtept") {
        endWaypoint(name == "rtept");
    } else if (name == "rte") {
        if (m_routeName)
            m_target->endRoute(std::move(*m_routeName));
        m_routeName.reset();
    } else if (m_track) {
        if (name == "time")
            readTime();
        else if (name == "course")
            m_track->cog = number(m_valueString, m_track->cog);
        else if (name == "speed")
            m_track->sog = number(m_valueString, m_track->sog);
    } else if (name == "name") {
        if (m_waypoint && m_waypoint->name.empty())
            m_waypoint->name = trimmed(m_valueString);
        else if (m_routeName && !m_waypoint && m_routeName->empty())
            *m_routeName = trimmed(m_valueString);
    } else if (m_waypoint) {
        if (name == "desc" || (name == "cmt" && m_waypoint->description.empty()))
            m_waypoint->description = trimmed(m_valueString);
        else if (name == "sym")
            m_waypoint->iconIndex = iconIndex(trimmed(m_valueString));
        else if (const auto type = trimmed(m_valueString); name == "type" && type == "Tide Station")
            m_waypoint->iconIndex = iconIndex("TIDESTATION");
        else if (name == "type" && type == "Current Station")
            m_waypoint->iconIndex = iconIndex("CURRENTSTATION");
    }
    m_valueString.clear();
}

void GPXImport::endWaypoint(bool ofRoute)
{
    if (!m_waypoint)
        return;
    if (!m_waypoint->hasPosition())
        m_target->passedOver();
    else if (ofRoute)
        m_target->routePoint(std::move(*m_waypoint));
    else
        m_target->waypoint(std::move(*m_waypoint));
    m_waypoint.reset();
}

void GPXImport::readTime()
{
    const auto text = trimmed(m_valueString);
    const bool iso = text.size() >= 19 && text[10] == 'T';
    if (const auto date = iso ? parseIsoDate(text) : parseLenientDate(text))
        m_track->date = *date + m_options.timeZoneOffset; // on purpose, though the time is UTC
}

} // namespace kelvox
