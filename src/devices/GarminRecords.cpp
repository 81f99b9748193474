#include "devices/GarminRecords.h"

#include "devices/DeviceBytes.h"
#include "navigation/WaypointIcons.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {
namespace {

constexpr double degreesPerSemicircle = 180.0 / 2147483648.0;
constexpr std::int32_t unknownPlace = 0x7FFFFFFF;
constexpr std::int32_t pole = 1 << 30;

constexpr float unknownReal = 1.0e25F;
constexpr float realsEnd = 1.0e24F; // beyond it a value is not known
constexpr double feetPerMetre = 1 / 0.3048;
constexpr std::uint32_t unknownTime = 0xFFFFFFFF;
constexpr std::int64_t timeZero = 631065600; // 1989-12-31 in seconds since 1970

constexpr int dotSymbol = 18;
constexpr std::size_t longText = 50;
constexpr std::size_t shortComment = 40;
constexpr std::size_t namedTextsSize = 106; // two texts of 50, six NULs
constexpr std::string_view printable = " !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";
constexpr TextRule shortCommentRule{.longest = shortComment, .others = " -", .substitute = '-'};
constexpr TextRule longCommentRule{.longest = longText,
                                   .lowerCase = TextRule::LowerCase::Yes,
                                   .others = printable,
                                   .substitute = '-'};

void put(DeviceRecord& record, const ChartMarker& marker)
{
    const auto place = semicircles(marker.positionOnGPS());
    record.number(place.latitude).number(place.longitude);
}

void takePlace(DeviceRecordReader& reader, ChartMarker& marker)
{
    Semicircles place;
    place.latitude = reader.number<std::int32_t>();
    place.longitude = reader.number<std::int32_t>();
    marker.setPositionOnGPS(positionOf(place));
}

std::optional<Waypoint> ifWhole(const DeviceRecordReader& reader, Waypoint waypoint)
{
    return reader.isWhole() ? std::optional(std::move(waypoint)) : std::nullopt;
}

std::uint16_t symbolOf(const Waypoint& waypoint)
{
    const auto* icon = waypointIcon(waypoint.iconIndex);
    return static_cast<std::uint16_t>(icon ? icon->deviceCode : dotSymbol);
}

/// What D108, D109 and D110 have in common from the symbol on to the country.
void putCommon(DeviceRecord& record, const Waypoint& waypoint)
{
    record.number(symbolOf(waypoint)).fill(6, 0).fill(12, 0xFF); // subclass: none
    put(record, waypoint);
    record.real(unknownReal).real(unknownReal).real(unknownReal); // altitude, depth, proximity
    record.fill(4, ' '); // state and country
}

/// Name, comment and four empty texts, each at its NUL; then zeros to the size that is sent.
void putTexts(DeviceRecord& record, const Waypoint& waypoint, std::size_t before)
{
    record.endedText(deviceText(waypoint.name, GarminRecords::longName));
    record.endedText(deviceText(waypoint.description, longCommentRule));
    record.fillTo(before + namedTextsSize);
}

std::optional<Waypoint> takeLong(std::string_view bytes, std::size_t beforeTexts)
{
    constexpr std::size_t symbolAt = 4;
    constexpr std::size_t subclassSize = 18;
    constexpr std::size_t placeEnd = symbolAt + 2 + subclassSize + 8;
    DeviceRecordReader reader(bytes);
    Waypoint waypoint;
    reader.skip(symbolAt);
    waypoint.iconIndex = iconIndexForDeviceCode(reader.number<std::uint16_t>());
    reader.skip(subclassSize);
    takePlace(reader, waypoint);
    reader.skip(beforeTexts - placeEnd);
    waypoint.name = textFromDevice(reader.endedText());
    waypoint.description = textFromDevice(reader.endedText());
    return ifWhole(reader, std::move(waypoint));
}

constexpr std::size_t textsOfD108 = 48;
constexpr std::size_t textsOfD109 = 52;
constexpr std::size_t textsOfD110 = 62;

float realOrUnknown(float value, double factor, double offset)
{
    // Also not a number is not known.
    return std::abs(value) < realsEnd ? static_cast<float>(value * factor + offset)
                                      : static_cast<float>(noValue);
}

float realToSend(float value, double factor, double offset)
{
    return isKnown(value) ? static_cast<float>((value - offset) / factor) : unknownReal;
}

enum class TrackFields { Time, Depth, Temperature };

std::optional<GarminRecords::TrackPoint> takeTrack(std::string_view bytes, TrackFields fields)
{
    DeviceRecordReader reader(bytes);
    GarminRecords::TrackPoint point;
    takePlace(reader, point.track);
    const auto seconds = reader.number<std::uint32_t>();
    if (seconds != 0 && seconds != unknownTime && seconds != 0x7FFFFFFF)
        point.track.date = Date(std::chrono::seconds(timeZero + seconds));
    if (fields != TrackFields::Time) {
        reader.skip(4); // altitude
        point.track.depth = realOrUnknown(reader.real(), feetPerMetre, 0);
    }
    if (fields == TrackFields::Temperature)
        point.track.temperature = realOrUnknown(reader.real(), 1.8, 32);
    point.startsLine = reader.number<std::uint8_t>() != 0;
    return reader.isWhole() ? std::optional(std::move(point)) : std::nullopt;
}

std::uint32_t timeToSend(const std::optional<Date>& date)
{
    if (!date)
        return unknownTime;
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(date->time_since_epoch()).count()
        - timeZero;
    return seconds > 0 && seconds < unknownTime ? static_cast<std::uint32_t>(seconds) : unknownTime;
}

std::string makeTrack(const GarminRecords::TrackPoint& point, TrackFields fields)
{
    DeviceRecord record;
    put(record, point.track);
    record.number(timeToSend(point.track.date));
    if (fields != TrackFields::Time)
        record.real(unknownReal).real(realToSend(point.track.depth, feetPerMetre, 0));
    if (fields == TrackFields::Temperature)
        record.real(realToSend(point.track.temperature, 1.8, 32));
    record.number<std::uint8_t>(point.startsLine ? 1 : 0);
    return record.take();
}

/// The colours of track headers by their number.
constexpr std::array<TrackColor, 16> trackColors = {{{0, 0, 0},
                                                     {0.5F, 0, 0},
                                                     {0, 0.5F, 0},
                                                     {0.5F, 0.5F, 0},
                                                     {0, 0, 0.5F},
                                                     {0.5F, 0, 0.5F},
                                                     {0, 0.5F, 0.5F},
                                                     {0.75F, 0.75F, 0.75F},
                                                     {0.5F, 0.5F, 0.5F},
                                                     {1, 0, 0},
                                                     {0, 1, 0},
                                                     {1, 1, 0},
                                                     {0, 0, 1},
                                                     {1, 0, 1},
                                                     {0, 1, 1},
                                                     {1, 1, 1}}};

} // namespace

const TextRule GarminRecords::shortName{.longest = 6};
const TextRule GarminRecords::longName{.longest = longText,
                                       .lowerCase = TextRule::LowerCase::Yes,
                                       .others = printable,
                                       .substitute = '-'};
const TextRule GarminRecords::routeName{
    .longest = 20, .lowerCase = TextRule::LowerCase::No, .others = " -", .substitute = '-'};

Semicircles semicircles(Position position)
{
    if (!position.isKnown())
        return {unknownPlace, unknownPlace};
    const auto nearest = [](double degrees) {
        // 180° is one more than there is room for: it comes round to the same meridian.
        return static_cast<std::int32_t>(
            static_cast<std::uint32_t>(std::llround(degrees / degreesPerSemicircle)));
    };
    return {nearest(position.latitude), nearest(position.longitude)};
}

Position positionOf(const Semicircles& place)
{
    const bool unknown = place.latitude == unknownPlace && place.longitude == unknownPlace;
    if (unknown || place.latitude > pole || place.latitude < -pole)
        return {};
    return {.longitude = place.longitude * degreesPerSemicircle,
            .latitude = place.latitude * degreesPerSemicircle};
}

GarminCapabilities::GarminCapabilities(std::string_view array)
{
    constexpr std::size_t entrySize = 3;
    for (; array.size() >= entrySize; array.remove_prefix(entrySize)) {
        DeviceRecordReader entry(array.substr(1));
        if (array.front() == 'D')
            m_dataTypes.push_back(entry.number<std::uint16_t>());
    }
}

bool GarminCapabilities::uses(std::uint16_t dataType) const
{
    return std::find(m_dataTypes.begin(), m_dataTypes.end(), dataType) != m_dataTypes.end();
}

std::optional<Waypoint> GarminRecords::makeWaypointWithD100(std::string_view record)
{
    DeviceRecordReader reader(record);
    Waypoint waypoint;
    waypoint.name = textFromDevice(reader.text(6));
    takePlace(reader, waypoint);
    reader.skip(4);
    waypoint.description = textFromDevice(reader.text(shortComment));
    return ifWhole(reader, std::move(waypoint));
}

std::optional<Waypoint> GarminRecords::makeWaypointWithD108(std::string_view record)
{
    return takeLong(record, textsOfD108);
}

std::optional<Waypoint> GarminRecords::makeWaypointWithD109(std::string_view record)
{
    return takeLong(record, textsOfD109);
}

std::optional<Waypoint> GarminRecords::makeWaypointWithD110(std::string_view record)
{
    return takeLong(record, textsOfD110);
}

std::optional<Waypoint> GarminRecords::makeWaypointWithD150(std::string_view record)
{
    DeviceRecordReader reader(record);
    Waypoint waypoint;
    waypoint.name = textFromDevice(reader.text(6));
    reader.skip(3); // country, class
    takePlace(reader, waypoint);
    reader.skip(58); // altitude, city, state, facility
    waypoint.description = textFromDevice(reader.text(shortComment));
    return ifWhole(reader, std::move(waypoint));
}

std::string GarminRecords::makeD100WaypointType(const Waypoint& waypoint)
{
    DeviceRecord record;
    record.text(deviceText(waypoint.name, shortName), 6);
    put(record, waypoint);
    record.fill(4, 0).text(deviceText(waypoint.description, shortCommentRule), shortComment);
    return record.take();
}

std::string GarminRecords::makeD108WaypointType(const Waypoint& waypoint)
{
    DeviceRecord record;
    record.fill(1, 0).fill(1, 0xFF); // a user's, in the default colour
    record.fill(1, 0).fill(1, 0x60); // shown with its name
    putCommon(record, waypoint);
    putTexts(record, waypoint, textsOfD108);
    return record.take();
}

std::string GarminRecords::makeD109WaypointType(const Waypoint& waypoint)
{
    DeviceRecord record;
    record.fill(1, 1).fill(1, 0); // a user's
    record.fill(1, 0x1F).fill(1, 0x70); // the default colour, shown with its name
    putCommon(record, waypoint);
    record.number(unknownTime); // to the next point
    putTexts(record, waypoint, textsOfD109);
    return record.take();
}

std::string GarminRecords::makeD110WaypointType(const Waypoint& waypoint)
{
    DeviceRecord record;
    record.fill(1, 1).fill(1, 0);
    record.fill(1, 0x1F).fill(1, 0x80);
    putCommon(record, waypoint);
    record.number(unknownTime).real(unknownReal).number(unknownTime); // way, temperature, made
    record.fill(2, 0); // no category
    putTexts(record, waypoint, textsOfD110);
    return record.take();
}

std::string GarminRecords::makeD150WaypointType(const Waypoint& waypoint)
{
    constexpr std::uint8_t userClass = 4;
    constexpr std::size_t sizeSent = 119;
    DeviceRecord record;
    record.text(deviceText(waypoint.name, shortName), 6).fill(2, ' ').number(userClass);
    put(record, waypoint);
    record.fill(2, 0).fill(56, ' '); // altitude; city, state, facility
    record.text(deviceText(waypoint.description, shortCommentRule), shortComment);
    // Four bytes more than the published fields, on purpose.
    record.fillTo(sizeSent);
    return record.take();
}

std::string GarminRecords::makeD201RouteType(std::uint8_t number, std::string_view name)
{
    DeviceRecord record;
    record.number(number).text(deviceText(name, routeName), routeName.longest);
    return record.take();
}

std::string GarminRecords::makeD210RouteType(const Waypoint& /*next*/)
{
    constexpr std::uint16_t direct = 3;
    constexpr std::size_t sizeSent = 71;
    DeviceRecord record;
    record.number(direct).fill(6, 0).fill(12, 0xFF).fillTo(sizeSent);
    return record.take();
}

std::string GarminRecords::routeNameFromD201(std::string_view record)
{
    return record.size() < 2 ? std::string() : textFromDevice(record.substr(1, routeName.longest));
}

std::string GarminRecords::routeNameFromD202(std::string_view record)
{
    return textFromDevice(record);
}

std::optional<GarminRecords::TrackPoint> GarminRecords::makeTrackWithD300(std::string_view record)
{
    return takeTrack(record, TrackFields::Time);
}

std::optional<GarminRecords::TrackPoint> GarminRecords::makeTrackWithD301(std::string_view record)
{
    return takeTrack(record, TrackFields::Depth);
}

std::optional<GarminRecords::TrackPoint> GarminRecords::makeTrackWithD302(std::string_view record)
{
    return takeTrack(record, TrackFields::Temperature);
}

std::string GarminRecords::makeD300TrackType(const TrackPoint& point)
{
    return makeTrack(point, TrackFields::Time);
}

std::string GarminRecords::makeD301TrackType(const TrackPoint& point)
{
    return makeTrack(point, TrackFields::Depth);
}

std::string GarminRecords::makeD302TrackType(const TrackPoint& point)
{
    return makeTrack(point, TrackFields::Temperature);
}

std::optional<TrackColor> GarminRecords::colorFromD310(std::string_view record)
{
    const auto number =
        record.size() < 2 ? trackColors.size() : static_cast<std::uint8_t>(record[1]);
    return number < trackColors.size() ? std::optional(trackColors[number]) : std::nullopt;
}

std::string GarminRecords::makeD310TrackType(std::string_view name, TrackColor color)
{
    const auto distance = [&](const TrackColor& other) {
        return std::abs(other.red - color.red) + std::abs(other.green - color.green)
            + std::abs(other.blue - color.blue);
    };
    const auto nearest =
        std::min_element(trackColors.begin(), trackColors.end(),
                         [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    DeviceRecord record;
    record.number<std::uint8_t>(1).number(static_cast<std::uint8_t>(nearest - trackColors.begin()));
    record.endedText(deviceText(name, longName));
    return record.take();
}

std::string GarminRecords::makeD311TrackType(std::uint16_t index)
{
    DeviceRecord record;
    record.number(index);
    return record.take();
}

} // namespace kelvox
