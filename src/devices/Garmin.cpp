#include "devices/Garmin.h"

#include "devices/DeviceBytes.h"
#include "devices/NamedRecords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvox {
namespace {

using Id = GarminPacket::Id;
using Kind = TransferProgress::Kind;
using Phase = TransferProgress::Phase;

template <typename Number> std::string numberData(Number value)
{
    DeviceRecord record;
    record.number(value);
    return record.take();
}

constexpr std::size_t mostExtraPackets = 100;

bool isOneOf(std::span<const std::uint8_t> ids, std::uint8_t id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

tl::unexpected<Error> notUnderstood()
{
    return failure(Error::Code::BadSyntax,
                   "The receiver sent a record that is not of the kind it announced.");
}

} // namespace

Result<void> Garmin::startPrivate()
{
    m_unread.clear();
    m_read = 0;
    m_inList = false;
    makeQuiet(timing().answer);
    return getIdent();
}

void Garmin::stopPrivate()
{
    if (std::exchange(m_inList, false)) {
        (void)sendCommand(Id::Command, numberData<std::uint16_t>(Abort));
        makeQuiet(timing().answer);
    }
    serialPort().flush();
}

void Garmin::initialise()
{
    if (!sendCommand(Id::Command, numberData<std::uint16_t>(Abort)))
        return;
    (void)startPrivate();
}

Result<void> Garmin::getIdent()
{
    setIdent({});
    m_capabilities = {};
    Error lastError;
    int silences = 0;
    for (int attempt = 0; attempt < timing().attempts; ++attempt) {
        if (attempt > 0)
            startAfresh();
        std::uint8_t id = 0;
        // The product data says as well as the acknowledgement that the request was heard.
        auto data = sendCommandWaitForResponse(Id::ProductRequest, {}, Id::Acknowledge,
                                               Id::ProductData, id);
        if (!data)
            return tl::unexpected(std::move(data.error())); // that had its attempts
        if (id == Id::Acknowledge)
            data = getResponse(Id::ProductData, Id::ProductData, id);
        if (data) {
            readIdentity(*data);
            acknowledge(Id::ProductData);
            data = awaitProtocolArray();
            if (data) {
                m_capabilities = GarminCapabilities(*data);
                return {};
            }
            silences += data.error().code == Error::Code::Truncated ? 1 : 0;
        }
        lastError = std::move(data.error());
        if (lastError.code == Error::Code::CannotOpen || lastError.code == Error::Code::Cancelled)
            break;
    }
    // Only silence each time tells an old receiver from an array that was lost on its way.
    if (silences == timing().attempts)
        return {};
    return tl::unexpected(std::move(lastError));
}

void Garmin::readIdentity(std::string_view productData)
{
    DeviceRecordReader product(productData);
    product.skip(2); // its number
    product.skip(2); // its version stands before the text
    setIdent(textFromDevice(product.endedText()));
}

Result<std::string> Garmin::awaitProtocolArray()
{
    std::uint8_t id = Id::ExtendedProductData;
    Result<std::string> data;
    for (std::size_t packets = 0; id == Id::ExtendedProductData; ++packets) {
        data = packets < mostExtraPackets
            ? getResponse(Id::ProtocolArray, Id::ExtendedProductData, id)
            : Result<std::string>(noAnswer());
        if (!data)
            break;
        acknowledge(id);
    }
    return data;
}

void Garmin::startAfresh()
{
    makeQuiet(timing().answer);
    m_read = m_unread.size();
}

void Garmin::prepareToReceive(const ExchangeKinds& kinds)
{
    if (kinds.waypoints)
        prepare("NSSlaveMode");
}

Result<void> Garmin::receiveRecords(const ExchangeKinds& kinds, ExchangeRecords& records)
{
    Result<void> received;
    if (kinds.waypoints)
        received = receiveWaypoints(records);
    if (received && kinds.routes)
        received = receiveRoutes(records);
    if (received && kinds.tracks)
        received = receiveTracks(records);
    return received;
}

Result<void> Garmin::receiveWaypoints(ExchangeRecords& records)
{
    static constexpr std::array<std::uint8_t, 1> ids = {Id::WaypointData};
    return receiveList(Waypoints, Kind::Waypoints, ids, [&](const GarminPacket& packet) {
        auto waypoint = makeWaypoint(packet.data);
        if (waypoint)
            keepWaypoint(std::move(*waypoint), records);
        return waypoint.has_value();
    });
}

Result<void> Garmin::receiveRoutes(ExchangeRecords& records)
{
    static constexpr std::array<std::uint8_t, 3> ids = {Id::RouteHeader, Id::RouteWaypoint,
                                                        Id::RouteLink};
    std::string name;
    bool hasPoints = false;
    const auto endRoute = [&] {
        if (std::exchange(hasPoints, false))
            records.endRoute(name);
    };
    auto received = receiveList(Routes, Kind::Routes, ids, [&](const GarminPacket& packet) {
        if (packet.id == Id::RouteHeader) {
            endRoute();
            name = m_capabilities.uses(202) ? GarminRecords::routeNameFromD202(packet.data)
                : m_capabilities.uses(200)  ? std::string()
                                            : GarminRecords::routeNameFromD201(packet.data);
        } else if (packet.id == Id::RouteWaypoint) {
            auto waypoint = makeWaypoint(packet.data);
            if (!waypoint)
                return false;
            if (waypoint->isInsideTheChart()) {
                records.routePoint(std::move(*waypoint));
                hasPoints = true;
            } else {
                records.passedOver();
            }
        }
        return true;
    });
    if (received)
        endRoute();
    return received;
}

Result<void> Garmin::receiveTracks(ExchangeRecords& records)
{
    static constexpr std::array<std::uint8_t, 2> ids = {Id::TrackHeader, Id::TrackPoint};
    const auto make = m_capabilities.usesD302TrackType() ? GarminRecords::makeTrackWithD302
        : m_capabilities.usesD301TrackType()             ? GarminRecords::makeTrackWithD301
                                                         : GarminRecords::makeTrackWithD300;
    const bool headersHaveColor =
        m_capabilities.usesD310TrackType() || m_capabilities.usesD312TrackType();
    TrackLineColors colors;
    TrackColor headerColor;
    bool afterHeader = true;
    return receiveList(TrackLog, Kind::Tracks, ids, [&](const GarminPacket& packet) {
        if (packet.id == Id::TrackHeader) {
            headerColor = {};
            if (headersHaveColor)
                headerColor = GarminRecords::colorFromD310(packet.data).value_or(TrackColor());
            afterHeader = true;
            return true;
        }
        auto point = make(packet.data);
        if (!point)
            return false;
        if (point->startsLine || afterHeader)
            colors.startLine(headerColor);
        afterHeader = false;
        point->track.color = colors.color();
        keepTrackPoint(std::move(point->track), records);
        return true;
    });
}

Result<void> Garmin::sendRecords(const ExchangeRecords& records)
{
    const NamedRecords named(records, nameRule(), GarminRecords::routeName);
    addRenamed(named.renamed());
    if (!named.waypoints().empty())
        if (auto sent = sendWaypoints(named.waypoints()); !sent)
            return sent;
    unsigned number = 0;
    for (const auto& route : named.routes()) {
        // Number 0 is the active route on some receivers.
        number = number % 255 + 1;
        if (auto sent = sendRoute(static_cast<std::uint8_t>(number), route); !sent)
            return sent;
    }
    return records.tracks.empty() ? Result<void>() : sendTracks(records.tracks);
}

Result<void> Garmin::sendWaypoints(std::span<const Waypoint> waypoints)
{
    std::vector<GarminPacket> packets;
    packets.reserve(waypoints.size());
    for (const auto& waypoint : waypoints)
        packets.push_back({Id::WaypointData, makeWaypointType(waypoint)});
    return sendList(Waypoints, Kind::Waypoints, packets);
}

Result<void> Garmin::sendRoute(std::uint8_t number, const ExchangeRecords::NamedRoute& route)
{
    std::vector<GarminPacket> packets;
    // This header also for receivers that announce another one, on purpose.
    packets.push_back({Id::RouteHeader, GarminRecords::makeD201RouteType(number, route.name)});
    for (const auto& waypoint : route.points) {
        const bool isFirst = packets.size() == 1;
        if (!isFirst && m_capabilities.usesD210RouteType())
            packets.push_back({Id::RouteLink, GarminRecords::makeD210RouteType(waypoint)});
        packets.push_back({Id::RouteWaypoint, makeWaypointType(waypoint)});
    }
    return sendList(Routes, Kind::Routes, packets);
}

Result<void> Garmin::sendTracks(const std::vector<Track>& points)
{
    std::vector<GarminPacket> packets;
    if (m_capabilities.usesD310TrackType() || m_capabilities.usesD312TrackType())
        packets.push_back(
            {Id::TrackHeader, GarminRecords::makeD310TrackType("TRACK", points.front().color)});
    else if (m_capabilities.usesD311TrackType())
        packets.push_back({Id::TrackHeader, GarminRecords::makeD311TrackType(0)});
    const auto make = m_capabilities.usesD302TrackType() ? GarminRecords::makeD302TrackType
        : m_capabilities.usesD301TrackType()             ? GarminRecords::makeD301TrackType
                                                         : GarminRecords::makeD300TrackType;
    for (std::size_t i = 0; i < points.size(); ++i)
        packets.push_back({Id::TrackPoint, make({points[i], startsTrackLine(points, i)})});
    return sendList(TrackLog, Kind::Tracks, packets);
}

std::optional<Waypoint> Garmin::makeWaypoint(std::string_view record) const
{
    return m_capabilities.usesD108WaypointType() ? GarminRecords::makeWaypointWithD108(record)
        : m_capabilities.usesD109WaypointType()  ? GarminRecords::makeWaypointWithD109(record)
        : m_capabilities.usesD110WaypointType()  ? GarminRecords::makeWaypointWithD110(record)
        : m_capabilities.usesD150WaypointType()  ? GarminRecords::makeWaypointWithD150(record)
                                                 : GarminRecords::makeWaypointWithD100(record);
}

std::string Garmin::makeWaypointType(const Waypoint& waypoint) const
{
    return m_capabilities.usesD108WaypointType() ? GarminRecords::makeD108WaypointType(waypoint)
        : m_capabilities.usesD109WaypointType()  ? GarminRecords::makeD109WaypointType(waypoint)
        : m_capabilities.usesD110WaypointType()  ? GarminRecords::makeD110WaypointType(waypoint)
        : m_capabilities.usesD150WaypointType()  ? GarminRecords::makeD150WaypointType(waypoint)
                                                 : GarminRecords::makeD100WaypointType(waypoint);
}

const TextRule& Garmin::nameRule() const
{
    const bool isLong = m_capabilities.usesD108WaypointType()
        || m_capabilities.usesD109WaypointType() || m_capabilities.usesD110WaypointType();
    return isLong ? GarminRecords::longName : GarminRecords::shortName;
}

bool Garmin::sendCommand(std::uint8_t id, std::string_view data)
{
    return serialPort().write(garminFrame(id, data));
}

void Garmin::acknowledge(std::uint8_t id)
{
    // One that is lost is made up for: the receiver sends its packet again.
    (void)sendCommand(Id::Acknowledge, numberData<std::uint16_t>(id));
}

Result<GarminPacket> Garmin::readPacket(double deadline)
{
    if (isStopped())
        return cancelled();
    bool isGone = false;
    auto packet = readGarminPacket([&]() -> std::optional<std::uint8_t> {
        while (m_read == m_unread.size()) {
            m_unread.clear();
            m_read = 0;
            const double left = deadline - clock().monotonicSeconds();
            if (left <= 0 || isStopped())
                return std::nullopt;
            isGone = serialPort().read(m_unread, left) == DeviceLine::ReadStatus::Closed;
            if (isGone)
                return std::nullopt;
        }
        return static_cast<std::uint8_t>(m_unread[m_read++]);
    });
    if (packet)
        return packet;
    if (isGone)
        return gone();
    if (isStopped())
        return cancelled();
    if (packet.error().code == Error::Code::Truncated)
        return noAnswer();
    return failure(Error::Code::BadSyntax,
                   "The line to the receiver is disturbed: " + packet.error().message + ".");
}

Result<GarminPacket> Garmin::readOneOf(Ids ids)
{
    const double deadline = clock().monotonicSeconds() + timing().answer;
    for (;;) {
        auto packet = readPacket(deadline);
        if (!packet || isOneOf(ids, packet->id))
            return packet;
        if (packet->id == Id::Refuse && isOneOf(ids, Id::Acknowledge))
            return failure(Error::Code::BadSyntax, "The receiver refuses a packet.");
        if (packet->id != Id::Acknowledge && packet->id != Id::Refuse)
            acknowledge(packet->id);
        if (clock().monotonicSeconds() >= deadline)
            return noAnswer(); // it talks, but never says what was asked for
    }
}

Result<std::string> Garmin::getResponse(std::uint8_t expected, std::uint8_t alternative,
                                        std::uint8_t& received)
{
    auto packet = readOneOf(std::array{expected, alternative});
    if (!packet)
        return tl::unexpected(std::move(packet.error()));
    received = packet->id;
    return std::move(packet->data);
}

Result<std::string> Garmin::sendCommandWaitForResponse(std::uint8_t id, std::string_view data,
                                                       std::uint8_t expected,
                                                       std::uint8_t alternative,
                                                       std::uint8_t& received)
{
    const auto isOfAnother = [&](const std::string& answer) {
        return received == Id::Acknowledge && !answer.empty()
            && static_cast<std::uint8_t>(answer.front()) != id;
    };
    Error lastError;
    for (int attempt = 0; attempt < timing().attempts; ++attempt) {
        if (attempt > 0)
            startAfresh();
        if (isStopped())
            return cancelled();
        if (!sendCommand(id, data))
            return gone();
        auto answer = getResponse(expected, alternative, received);
        const double deadline = clock().monotonicSeconds() + timing().answer;
        while (answer && isOfAnother(*answer) && clock().monotonicSeconds() < deadline)
            answer = getResponse(expected, alternative, received);
        if (answer && !isOfAnother(*answer))
            return answer;
        lastError = answer ? noAnswer().value() : std::move(answer.error());
        if (lastError.code == Error::Code::CannotOpen || lastError.code == Error::Code::Cancelled)
            break;
    }
    return tl::unexpected(std::move(lastError));
}

Result<GarminPacket> Garmin::receiveOneOf(Ids ids)
{
    Result<GarminPacket> packet = readOneOf(ids);
    for (int attempt = 1; attempt < timing().attempts && !packet; ++attempt) {
        const auto code = packet.error().code;
        if (code == Error::Code::CannotOpen || code == Error::Code::Cancelled)
            break;
        startAfresh();
        if (isStopped())
            return cancelled();
        if (!sendCommand(Id::Refuse, numberData<std::uint16_t>(ids.front())))
            return gone();
        packet = readOneOf(ids);
    }
    return packet;
}

Result<void> Garmin::sendAcknowledged(std::uint8_t id, std::string_view data)
{
    std::uint8_t received = 0;
    auto answer = sendCommandWaitForResponse(id, data, Id::Acknowledge, Id::Acknowledge, received);
    return answer ? Result<void>() : tl::unexpected(std::move(answer.error()));
}

template <typename Take>
Result<void> Garmin::receiveList(CommandCode command, Kind kind, Ids ids, const Take& take)
{
    TransferProgress state{.phase = Phase::Receiving, .kind = kind};
    progress(state);
    m_inList = true;
    std::uint8_t id = 0;
    // The list itself says as well as the acknowledgement that the command was heard.
    auto begun = sendCommandWaitForResponse(Id::Command, numberData<std::uint16_t>(command),
                                            Id::Acknowledge, Id::Records, id);
    if (!begun)
        return tl::unexpected(std::move(begun.error()));
    GarminPacket last{.id = id, .data = std::move(*begun)};
    if (id == Id::Acknowledge) {
        static constexpr std::array<std::uint8_t, 1> countId = {Id::Records};
        auto packet = receiveOneOf(countId);
        if (!packet)
            return tl::unexpected(std::move(packet.error()));
        last = std::move(*packet);
    }
    acknowledge(Id::Records);
    state.total = DeviceRecordReader(last.data).number<std::uint16_t>();
    progress(state);

    std::vector<std::uint8_t> awaited(ids.begin(), ids.end());
    awaited.push_back(Id::TransferComplete);
    awaited.push_back(Id::Records); // once more, when its acknowledgement was lost
    std::size_t repeated = 0;
    for (;;) {
        auto packet = receiveOneOf(awaited);
        if (!packet)
            return tl::unexpected(std::move(packet.error()));
        acknowledge(packet->id);
        if (packet->id == Id::TransferComplete)
            break;
        // A lost acknowledgement makes the receiver send the same again.
        if (packet->id == Id::Records || *packet == last) {
            ++repeated;
            continue;
        }
        last = std::move(*packet);
        if (!take(last))
            return notUnderstood();
        progress((++state.done, state));
        if (state.done > std::max<std::size_t>(state.total, 1) * 2)
            return failure(Error::Code::OutOfRange,
                           "The receiver sends far more records than it announced.");
    }
    m_inList = false;
    if (state.done + repeated < state.total)
        return failure(Error::Code::Truncated,
                       "The receiver announced " + std::to_string(state.total)
                           + " records and sent " + std::to_string(state.done) + ".");
    return {};
}

Result<void> Garmin::sendList(CommandCode command, Kind kind, std::span<const GarminPacket> packets)
{
    constexpr std::size_t mostRecords = 0xFFFF;
    if (packets.size() > mostRecords)
        return failure(Error::Code::OutOfRange, "A receiver takes at most 65535 records at once.");
    TransferProgress state{.phase = Phase::Sending, .kind = kind, .total = packets.size()};
    progress(state);
    m_inList = true;
    auto sent =
        sendAcknowledged(Id::Records, numberData(static_cast<std::uint16_t>(packets.size())));
    for (std::size_t i = 0; sent && i < packets.size(); ++i) {
        sent = sendAcknowledged(packets[i].id, packets[i].data);
        if (sent)
            progress((++state.done, state));
    }
    if (sent)
        sent = sendAcknowledged(Id::TransferComplete, numberData<std::uint16_t>(command));
    if (sent)
        m_inList = false;
    return sent;
}

} // namespace kelvox
