#include "exchange/KMLImport.h"

#include "exchange/ExchangeDate.h"
#include "exchange/FileKind.h"
#include "exchange/KmzFolder.h"
#include "navigation/WaypointIcons.h"

#include <array>
#include <charconv>

namespace kelvox {

namespace {
constexpr std::size_t longestItem = 200; // of coordinates; three numbers take 60
constexpr std::size_t mostTimes = 1'000'000; // that wait for their places

bool isBlank(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

/// An extension of the format that its later editions took up.
bool isTrack(std::string_view element)
{
    return element == "Track" || element == "gx:Track";
}

/// Pictures of the globe viewers' own palettes that mean one of our icons.
int iconOfPicture(std::string_view name)
{
    constexpr std::pair<std::string_view, std::string_view> meanings[] = {
        {"gas_stations", "FUEL"},         {"dining", "RESTAURANT"},  {"parking_lot", "PARKING"},
        {"phone", "TELEPHONE"},           {"info", "INFORMATION"},   {"caution", "DANGER"},
        {"placemark_circle", "DOTWHITE"}, {"red-pushpin", "PINRED"}, {"grn-pushpin", "PINGREEN"},
        {"blue-pushpin", "PINBLUE"},
    };
    for (const auto& [picture, icon] : meanings)
        if (name == picture)
            return iconIndex(icon);
    return iconIndex(name);
}

std::string percentDecoded(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char value = 0;
        const auto* digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size()
            && std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            plain += static_cast<char>(value);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}
} // namespace

KMLImport::KMLImport(const ImportOptions& options, Lines lines)
    : m_options(options)
    , m_lines(lines)
    , m_color(options.trackColor)
{
}

Result<void> KMLImport::import(const std::filesystem::path& path, ExchangeTarget& target)
{
    m_target = &target;
    if (!hasExtension(path, ".KMZ"))
        return readXml(path, *this, m_options.stop);
    const KmzFolder folder;
    const auto document = folder.unpack(path, largestFile);
    if (!document)
        return tl::unexpected(document.error());
    return readXml(*document, *this, m_options.stop);
}

Result<void> KMLImport::parse(std::string_view bytes, ExchangeTarget& target)
{
    m_target = &target;
    return parseXml(bytes, *this);
}

void KMLImport::startElement(std::string_view name, const XmlAttributes& /*attributes*/)
{
    m_text.clear();
    if (name == "Placemark") {
        m_placemark.emplace();
        m_geometry = Geometry::None;
    } else if (name == "Point") {
        m_geometry = Geometry::Point;
    } else if (name == "LineString") {
        m_geometry = Geometry::Line;
    } else if (isTrack(name)) {
        m_geometry = Geometry::Track;
        m_times.clear();
    } else if (name == "coordinates") {
        m_inCoordinates = true;
        m_itemMayEnd = false;
    }
}

void KMLImport::characters(std::string_view text)
{
    if (m_inCoordinates && m_geometry == Geometry::Line)
        readCoordinates(text);
    else
        appendBounded(m_text, text);
}

/// The items of a line as they come: a long one is never held whole. A blank ends an item unless it
/// stands beside a comma.
void KMLImport::readCoordinates(std::string_view text)
{
    for (const char c : text) {
        if (isBlank(c)) {
            m_itemMayEnd = !m_text.empty() && m_text.back() != ',';
            continue;
        }
        if (m_itemMayEnd && c != ',')
            endItem();
        m_itemMayEnd = false;
        if (m_text.size() < longestItem)
            m_text += c;
    }
}

void KMLImport::endItem()
{
    const std::string item = std::exchange(m_text, {});
    const auto comma = item.find(',');
    if (item.empty() || !m_placemark)
        return;
    if (comma == std::string::npos)
        return m_target->passedOver();
    const auto longitude = std::string_view(item).substr(0, comma);
    const auto rest = std::string_view(item).substr(comma + 1);
    const auto latitude = rest.substr(0, rest.find(','));
    if (m_lines == Lines::AsTracks)
        return trackPoint(longitude, latitude);
    Waypoint waypoint;
    if (setPlace(waypoint, latitude, longitude))
        routePoint(std::move(waypoint));
    else
        m_target->passedOver();
}

void KMLImport::routePoint(Waypoint waypoint)
{
    const std::pair place(waypoint.latitude, waypoint.longitude);
    if (const auto it = m_nameAtPlace.find(place); it != m_nameAtPlace.end())
        waypoint.name = it->second;
    m_nameAtPlace[place] = m_target->routePoint(std::move(waypoint));
    m_routeIsOpen = true;
}

void KMLImport::trackPoint(std::string_view longitude, std::string_view latitude)
{
    Track point;
    point.name = std::to_string(m_options.key++);
    point.date = Date(std::chrono::seconds(m_options.key));
    if (!m_times.empty()) {
        point.date = m_times.front();
        m_times.pop_front();
    }
    point.color = m_color;
    if (setPlace(point, latitude, longitude))
        m_target->trackPoint(std::move(point));
    else
        m_target->passedOver();
}

void KMLImport::endElement(std::string_view name)
{
    if (name == "coordinates") {
        m_inCoordinates = false;
        if (m_geometry == Geometry::Line)
            endItem();
        else if (m_geometry == Geometry::Point && m_placemark) {
            const auto isGap = [](char c) { return c == ',' || isBlank(c); };
            std::array<std::string_view, 2> ordinates;
            std::string_view rest = m_text;
            for (auto& ordinate : ordinates) {
                while (!rest.empty() && isGap(rest.front()))
                    rest.remove_prefix(1);
                while (!rest.empty() && !isGap(rest.front())) {
                    ordinate = {rest.data() - ordinate.size(), ordinate.size() + 1};
                    rest.remove_prefix(1);
                }
            }
            if (!setPlace(*m_placemark, ordinates[1], ordinates[0]))
                m_target->passedOver();
        }
    } else if (name == "LineString" || name == "Point" || isTrack(name)) {
        if (m_routeIsOpen)
            m_target->endRoute(m_placemark ? m_placemark->name : std::string());
        m_routeIsOpen = false;
        m_geometry = Geometry::None;
    } else if (name == "color") {
        readColor();
    } else if (m_placemark) {
        if (name == "Placemark")
            endPlacemark();
        else if (name == "name")
            m_placemark->name = trimmed(m_text);
        else if (name == "description")
            m_placemark->description = trimmed(m_text);
        else if (name == "href")
            readIcon();
        else if (m_geometry == Geometry::Track && m_lines == Lines::AsTracks && name == "when") {
            const auto date = parseLenientDate(m_text);
            if (date && m_times.size() < mostTimes)
                m_times.push_back(*date);
        } else if (m_geometry == Geometry::Track && m_lines == Lines::AsTracks
                   && (name == "coord" || name == "gx:coord")) {
            const auto text = trimmed(m_text);
            const auto blank = std::min(text.find(' '), text.size());
            trackPoint(text.substr(0, blank), text.substr(blank));
        }
    }
    m_text.clear();
}

void KMLImport::endPlacemark()
{
    if (m_placemark->hasPosition()) {
        const std::pair place(m_placemark->latitude, m_placemark->longitude);
        m_nameAtPlace.emplace(place, m_target->waypoint(std::move(*m_placemark)));
    }
    m_placemark.reset();
}

void KMLImport::readIcon()
{
    // An icon's picture; a ground overlay's stands outside placemarks.
    const std::string address(trimmed(m_text));
    const auto path = address.substr(0, address.find_first_of("?#"));
    const auto picture = path.substr(path.find_last_of('/') + 1); // npos + 1 is the whole
    m_placemark->iconIndex = iconOfPicture(percentDecoded(picture.substr(0, picture.rfind('.'))));
}

void KMLImport::readColor()
{
    auto text = trimmed(m_text);
    if (text.starts_with('#'))
        text.remove_prefix(1);
    std::array<unsigned, 4> parts{}; // alpha, blue, green, red
    if (text.size() != 8)
        return;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const char* digits = text.data() + 2 * i;
        if (std::from_chars(digits, digits + 2, parts[i], 16).ptr != digits + 2)
            return;
    }
    const auto component = [](unsigned value) { return static_cast<float>(value) / 255.0F; };
    m_color = {component(parts[3]), component(parts[2]), component(parts[1])};
}

} // namespace kelvox
