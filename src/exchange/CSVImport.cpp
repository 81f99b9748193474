#include "exchange/CSVImport.h"

#include "base/File.h"
#include "exchange/ExchangeDate.h"
#include "navigation/WaypointIcons.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

namespace kelvox {

namespace {
using Fields = std::vector<std::string>;

/// Lines at line feeds; a text of one line only is split at carriage returns instead.
std::vector<std::string_view> linesOf(std::string_view text)
{
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    const char end =
        text.find('\n') < text.size() - std::min<std::size_t>(text.size(), 1) ? '\n' : '\r';
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto length = std::min(text.find(end), text.size());
        auto line = text.substr(0, length);
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
            line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return lines;
}

/// @param most fields; the last one takes the rest, separators and all
Fields plainFields(std::string_view line, std::size_t most)
{
    Fields fields;
    while (fields.size() + 1 < most && line.find(',') != std::string_view::npos) {
        const auto comma = line.find(',');
        fields.emplace_back(line.substr(0, comma));
        line.remove_prefix(comma + 1);
    }
    fields.emplace_back(line);
    return fields;
}

Fields quotedFields(std::string_view line, char separator)
{
    Fields fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"')
            fields.back() += line[++i];
        else if (c == '"')
            quoted = !quoted;
        else if (c == separator && !quoted)
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields;
}

std::optional<double> decimal(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

bool fraction(std::string_view text)
{
    return text.find('.') != std::string_view::npos && decimal(text);
}

/// Degrees, minutes and seconds with whatever marks, the letter first or last or a sign in its
/// stead.
std::optional<double> markedDegrees(std::string_view text, std::string_view letters)
{
    std::vector<double> parts;
    char letter = 0;
    bool marked = false;
    const bool minus = text.starts_with('-');
    if (minus)
        text.remove_prefix(1);
    while (!text.empty()) {
        const char c = text.front();
        if ((c >= '0' && c <= '9') || c == '.') {
            double value = 0;
            const auto end = std::from_chars(text.data(), text.data() + text.size(), value,
                                             std::chars_format::fixed);
            if (end.ec != std::errc{})
                return std::nullopt;
            parts.push_back(value);
            text.remove_prefix(static_cast<std::size_t>(end.ptr - text.data()));
            continue;
        }
        const bool isMark = c == '*' || static_cast<unsigned char>(c) >= 0x80;
        if (letters.find(c) != std::string_view::npos && letter == 0)
            letter = c;
        else if (!isMark && c != ' ' && c != '\'' && c != '"')
            return std::nullopt;
        marked = marked || isMark;
        text.remove_prefix(1);
    }
    if ((letter == 0 && !marked) || (letter != 0 && minus) || parts.empty() || parts.size() > 3)
        return std::nullopt;
    parts.resize(3);
    const double value = parts[0] + parts[1] / 60 + parts[2] / 3600;
    return minus || letter == letters[1] ? -value : value;
}

float value(const std::string& text)
{
    return static_cast<float>(decimal(text).value_or(noValue));
}
} // namespace

/// Where the fields of a table stand; -1 where it has none.
struct CSVImport::Columns {
    char separator = ',';
    int latitude = -1, longitude = -1, name = -1, description = -1, symbol = -1;
    int date = -1, time = -1, course = -1, speed = -1;

    /// Nothing when the line is no header.
    static std::optional<Columns> of(std::string_view line)
    {
        for (const char separator : {',', ';', '\t'}) {
            Columns columns;
            columns.separator = separator;
            const std::pair<std::string_view, int Columns::*> known[] = {
                {"latitude", &Columns::latitude},
                {"lat", &Columns::latitude},
                {"longitude", &Columns::longitude},
                {"lon", &Columns::longitude},
                {"long", &Columns::longitude},
                {"name", &Columns::name},
                {"description", &Columns::description},
                {"desc", &Columns::description},
                {"symbol", &Columns::symbol},
                {"date", &Columns::date},
                {"time", &Columns::time},
                {"course", &Columns::course},
                {"speed", &Columns::speed}};
            int place = 0;
            for (const auto& field : quotedFields(line, separator)) {
                std::string title(trimmed(field));
                for (char& c : title)
                    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
                for (const auto& [word, column] : known)
                    if (title == word)
                        columns.*column = place;
                ++place;
            }
            if (columns.latitude >= 0 && columns.longitude >= 0)
                return columns;
        }
        return std::nullopt;
    }
    static const std::string& at(const Fields& fields, int column)
    {
        static const std::string none;
        return column >= 0 && column < static_cast<int>(fields.size()) ? fields[column] : none;
    }
};

CSVImport::CSVImport(const ImportOptions& options, const Strings& strings, const UnitsModel& units)
    : m_options(options)
    , m_strings(strings)
    , m_units(units)
{
}

Result<double> CSVImport::ordinate(std::string_view text,
                                   NSPositionFormatter::Orientation axis) const
{
    auto read = NSPositionFormatter(axis, m_strings, m_units).getObjectValue(text);
    if (read)
        return read;
    const bool isLatitude = axis == NSPositionFormatter::Latitude;
    auto other = decimal(text);
    if (!other)
        other = markedDegrees(trimmed(text), isLatitude ? "NS" : "EW");
    for (int format = 0; !other && format < 4; ++format) {
        UnitsModel units;
        units.positionFormatUnits = format;
        if (const auto again = NSPositionFormatter(axis, m_strings, units).getObjectValue(text))
            other = *again;
    }
    if (other && std::abs(*other) <= (isLatitude ? 90 : 180))
        return *other;
    return read;
}

Result<void> CSVImport::place(ChartMarker& marker, std::string_view latitude,
                              std::string_view longitude) const
{
    const auto north = ordinate(latitude, NSPositionFormatter::Latitude);
    if (!north)
        return tl::unexpected(north.error());
    const auto east = ordinate(longitude, NSPositionFormatter::Longitude);
    if (!east)
        return tl::unexpected(east.error());
    marker.setPositionOnGPS({.longitude = *east, .latitude = *north});
    return {};
}

template <class Take> std::string CSVImport::eachWaypoint(std::string_view text, Take&& take) const
{
    std::string faults;
    std::optional<Columns> columns;
    bool first = true;
    for (const auto line : linesOf(text)) {
        if (std::exchange(first, false))
            if ((columns = Columns::of(line)))
                continue;
        if (trimmed(line).empty())
            continue;
        Waypoint waypoint;
        Result<void> placed;
        if (columns) {
            const auto fields = quotedFields(line, columns->separator);
            waypoint.name = trimmed(Columns::at(fields, columns->name));
            waypoint.description = trimmed(Columns::at(fields, columns->description));
            waypoint.iconIndex = iconIndex(trimmed(Columns::at(fields, columns->symbol)));
            placed = place(waypoint, Columns::at(fields, columns->latitude),
                           Columns::at(fields, columns->longitude));
        } else {
            auto fields = plainFields(line, 4);
            fields.resize(4);
            waypoint.name = trimmed(fields[0]);
            waypoint.description = trimmed(fields[3]);
            placed = place(waypoint, fields[1], fields[2]);
            // Lists of plain degrees put them first; whole numbers may mean anything.
            if (!placed && fraction(fields[0]) && fraction(fields[1])
                && place(waypoint, fields[0], fields[1])) {
                waypoint.name = trimmed(fields[2]);
                placed = {};
            }
        }
        if (placed)
            take(std::move(waypoint));
        else
            faults += placed.error().message + "\n";
    }
    return faults;
}

std::string CSVImport::readWaypoints(std::string_view text, ExchangeTarget& target) const
{
    return eachWaypoint(text, [&](Waypoint waypoint) { target.waypoint(std::move(waypoint)); });
}

std::string CSVImport::readRoute(std::string_view text, std::string name,
                                 ExchangeTarget& target) const
{
    auto faults =
        eachWaypoint(text, [&](Waypoint waypoint) { target.routePoint(std::move(waypoint)); });
    target.endRoute(std::move(name));
    return faults;
}

std::string CSVImport::readTracks(std::string_view text, ExchangeTarget& target) const
{
    std::string faults;
    std::optional<Columns> columns;
    bool first = true;
    auto key = m_options.key;
    for (const auto line : linesOf(text)) {
        if (std::exchange(first, false))
            if ((columns = Columns::of(line)))
                continue;
        if (line.size() < 3)
            continue;
        Track point;
        point.color = m_options.trackColor;
        Result<void> placed;
        if (columns) {
            const auto fields = quotedFields(line, columns->separator);
            placed = place(point, Columns::at(fields, columns->latitude),
                           Columns::at(fields, columns->longitude));
            point.date = parseLenientDate(Columns::at(fields, columns->date) + ' '
                                          + Columns::at(fields, columns->time));
            point.cog = value(Columns::at(fields, columns->course));
            point.sog = value(Columns::at(fields, columns->speed));
        } else {
            auto fields = plainFields(line, 11);
            fields.resize(11);
            placed = place(point, fields[1], fields[2]);
            point.date = parseLenientDate(fields[0]);
            float Track::*const values[] = {&Track::cog,      &Track::sog,   &Track::heading,
                                            &Track::speed,    &Track::depth, &Track::windAngle,
                                            &Track::windSpeed};
            for (std::size_t i = 0; i < std::size(values); ++i)
                point.*values[i] = value(fields[3 + i]);
            point.description = trimmed(fields[10]);
        }
        point.name = std::to_string(key++);
        if (placed)
            target.trackPoint(std::move(point));
        else
            faults += placed.error().message + "\n";
    }
    return faults;
}

bool CSVImport::isTrack(std::string_view text)
{
    const auto line = linesOf(text.substr(0, 4096));
    if (line.empty())
        return false;
    if (const auto columns = Columns::of(line.front()))
        return columns->name < 0 && columns->date >= 0;
    const auto fields = plainFields(line.front(), 12);
    return fields.size() >= 11 && (fields[0].empty() || parseLenientDate(fields[0]));
}

Result<std::string> CSVImport::importWaypoints(const std::filesystem::path& path,
                                               ExchangeTarget& target) const
{
    return readFile(path).map([&](const std::string& text) { return readWaypoints(text, target); });
}

Result<std::string> CSVImport::importRoute(const std::filesystem::path& path,
                                           ExchangeTarget& target) const
{
    return readFile(path).map(
        [&](const std::string& text) { return readRoute(text, path.stem().string(), target); });
}

Result<std::string> CSVImport::importTracks(const std::filesystem::path& path,
                                            ExchangeTarget& target) const
{
    return readFile(path).map([&](const std::string& text) { return readTracks(text, target); });
}

} // namespace kelvox
