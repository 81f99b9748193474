#include "devices/NmeaTransfer.h"

#include "connections/SentenceText.h"
#include "connections/SirfSetup.h"
#include "devices/NamedRecords.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace kelvox {
namespace {

using Phase = TransferProgress::Phase;
using Kind = TransferProgress::Kind;

constexpr TextRule nameRule{
    .longest = 8, .lowerCase = TextRule::LowerCase::Yes, .others = "+-", .substitute = '-'};
constexpr std::size_t longestSentence = 79; // leaves room for the checksum, less the line end
constexpr int minuteDecimals = 4;
constexpr double quietAfterLast = 5; // seconds without anything new

} // namespace

bool RouteParts::add(RoutePart part)
{
    if (part.count < 1 || part.number != m_next || part.number > part.count)
        return false;
    m_next = part.number == part.count ? 1 : part.number + 1;
    if (part.number == 1) {
        m_routes.push_back(std::move(part));
        return true;
    }
    auto& route = m_routes.back();
    if (route.count != part.count || (!part.route.empty() && part.route != route.route))
        return false;
    route.names.insert(route.names.end(), std::make_move_iterator(part.names.begin()),
                       std::make_move_iterator(part.names.end()));
    return true;
}

void RouteParts::handOver(const std::vector<Waypoint>& waypoints, ExchangeRecords& records) const
{
    std::map<std::string_view, const Waypoint*> byName;
    for (const auto& waypoint : waypoints)
        byName.emplace(waypoint.name, &waypoint);
    for (const auto& route : m_routes) {
        std::size_t points = 0;
        for (const auto& name : route.names) {
            const auto it = byName.find(name);
            if (it == byName.end()) {
                records.passedOver();
                continue;
            }
            records.routePoint(*it->second);
            ++points;
        }
        if (points > 0)
            records.endRoute(route.route);
    }
}

Result<void> NmeaTransfer::startPrivate()
{
    setIdent("NMEA 0183");
    serialPort().flush();
    forgetLines();
    return {};
}

void NmeaTransfer::stopPrivate()
{
    // Nothing goes on at the receiver that could be ended.
    if (isStopped())
        serialPort().flush();
}

std::string NmeaTransfer::waypointSentence(const Waypoint& waypoint)
{
    return completeSentence(fmt::format("$GPWPL,{},{}",
                                        positionFields(waypoint.positionOnGPS(), minuteDecimals),
                                        deviceText(waypoint.name, nameRule)),
                            AddChecksum::Yes);
}

std::vector<std::string> NmeaTransfer::routeSentences(const std::string& name,
                                                      const std::vector<std::string>& waypoints)
{
    const auto routeName = deviceText(name, nameRule);
    const auto head = std::string("$GPRTE,000,000,c,").size() + routeName.size();
    std::vector<std::string> parts;
    for (const auto& waypoint : waypoints) {
        if (parts.empty() || head + parts.back().size() + 1 + waypoint.size() > longestSentence)
            parts.emplace_back();
        parts.back() += "," + waypoint;
    }
    std::vector<std::string> sentences;
    for (std::size_t i = 0; i < parts.size(); ++i)
        sentences.push_back(completeSentence(
            fmt::format("$GPRTE,{},{},c,{}{}", parts.size(), i + 1, routeName, parts[i]),
            AddChecksum::Yes));
    return sentences;
}

std::optional<Waypoint> NmeaTransfer::waypointFromSentence(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    Waypoint waypoint;
    waypoint.name = textFromDevice(fields[5]);
    if (!setPosition(waypoint, fields[1], fields[2], fields[3], fields[4]) || waypoint.name.empty())
        return std::nullopt;
    return waypoint;
}

std::optional<RoutePart> NmeaTransfer::routeFromSentence(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    RoutePart part{.count = NMEA::integer(fields[1]),
                   .number = NMEA::integer(fields[2]),
                   .route = textFromDevice(fields[4]),
                   .names = {}};
    for (std::size_t i = 5; i < fields.count(); ++i)
        if (auto name = textFromDevice(fields[i]); !name.empty())
            part.names.push_back(std::move(name));
    if (part.count < 1 || part.number < 1 || part.number > part.count)
        return std::nullopt;
    return part;
}

struct NmeaTransfer::Received {
    std::vector<Waypoint> waypoints;
    RouteParts routes;
    std::set<std::string> sentences;
};

/// @return whether it brought something new
Result<bool> NmeaTransfer::take(const std::string& sentence, Received& received)
{
    const auto command = NMEA::command(sentence).value_or("");
    if ((command != "WPL" && command != "RTE") || !received.sentences.insert(sentence).second)
        return false;
    if (command == "WPL") {
        auto waypoint = waypointFromSentence(sentence);
        if (!waypoint)
            return badSentence(sentence);
        received.waypoints.push_back(std::move(*waypoint));
        return true;
    }
    auto part = routeFromSentence(sentence);
    if (!part)
        return badSentence(sentence);
    // One that is sent round and round may be met in its middle: its beginning comes later.
    if (part->number != 1 && !received.routes.isInMiddle()) {
        received.sentences.erase(sentence);
        return false;
    }
    if (!received.routes.add(std::move(*part)))
        return badSentence(sentence);
    return true;
}

Result<void> NmeaTransfer::receiveRecords(const ExchangeKinds& kinds, ExchangeRecords& records)
{
    if (!kinds.waypoints && !kinds.routes)
        return failure(Error::Code::Unsupported, "A receiver sends no tracks as NMEA sentences.");
    message("NSStartAtReceiver");
    TransferProgress state{.phase = Phase::Waiting, .kind = Kind::Any};
    progress(state);
    Received received;
    double deadline = deadlineIn(timing().menu);
    for (bool isFirst = true;; isFirst = false) {
        auto sentence = readSentence(deadline, Checksum::Required);
        if (!sentence && sentence.error().code == Error::Code::Truncated && state.done > 0)
            break;
        // The first line may have begun before we listened.
        if (!sentence && sentence.error().code == Error::Code::BadSyntax && isFirst)
            continue;
        if (!sentence)
            return tl::unexpected(std::move(sentence.error()));
        const auto isNew = take(*sentence, received);
        if (!isNew)
            return tl::unexpected(isNew.error());
        if (*isNew) {
            state.phase = Phase::Receiving;
            progress((++state.done, state));
            deadline = deadlineIn(quietAfterLast);
        } else if (clock().monotonicSeconds() >= deadline) {
            break; // only old things for so long
        }
    }
    if (state.done == 0)
        return noAnswer();
    if (received.routes.isInMiddle())
        return failure(Error::Code::Truncated, "The receiver did not send all of a route.");
    if (kinds.routes)
        received.routes.handOver(received.waypoints, records);
    if (kinds.waypoints)
        for (auto& waypoint : received.waypoints)
            records.waypoint(std::move(waypoint));
    return {};
}

Result<void> NmeaTransfer::sendRecords(const ExchangeRecords& records)
{
    leaveOutTracks(records.tracks.size());
    if (records.waypoints.empty() && records.routes.empty())
        return records.tracks.empty()
            ? Result<void>()
            : failure(Error::Code::Unsupported, "A receiver takes no tracks as NMEA sentences.");
    const NamedRecords named(records, nameRule, nameRule);
    addRenamed(named.renamed());
    std::vector<std::string> sentences;
    for (const auto& waypoint : named.allWaypoints())
        sentences.push_back(waypointSentence(waypoint));
    for (const auto& route : named.routes()) {
        std::vector<std::string> names;
        for (const auto& waypoint : route.points)
            names.push_back(waypoint.name);
        for (auto& sentence : routeSentences(route.name, names))
            sentences.push_back(std::move(sentence));
    }
    TransferProgress state{.phase = Phase::Sending, .kind = Kind::Any, .total = sentences.size()};
    for (const auto& sentence : sentences) {
        progress(state);
        if (isStopped())
            return cancelled();
        if (!writeSentence(sentence))
            return gone();
        ++state.done;
    }
    progress(state);
    return {};
}

Result<void> Sirf::startPrivate()
{
    setIdent("SiRF");
    forgetLines();
    // The first is heard only in NMEA, the second only in the binary protocol.
    if (!writeSentence(sirfToBinary(m_bitsPerSecond)))
        return gone();
    pause(timing().restart);
    if (!writeSentence(sirfToNmea(m_bitsPerSecond)))
        return gone();
    pause(timing().restart);
    return isStopped() ? Result<void>(cancelled()) : Result<void>();
}

} // namespace kelvox
