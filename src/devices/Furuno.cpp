#include "devices/Furuno.h"

#include "devices/NamedRecords.h"
#include "navigation/WaypointIcons.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kelvox {
namespace {

using Phase = TransferProgress::Phase;
using Kind = TransferProgress::Kind;

constexpr std::string_view lastLine = "$PFEC,GPxfr,CTL,E";
constexpr std::size_t nameSize = 6;
constexpr std::size_t namesInSentence = 8;
constexpr unsigned mostRoutes = 30;
constexpr double betweenLines = 10; // seconds after which a receiver has broken off
constexpr TextRule nameRule{.longest = nameSize};
constexpr TextRule commentRule{.longest = 13, .others = " _&()+-/=?>", .substitute = '-'};
constexpr TextRule routeCommentRule{.longest = 16, .others = " _&()+-/=?>", .substitute = '-'};
constexpr char circleMark = 'q';
constexpr char anchorMark = 'x';

std::string line(const std::string& sentence)
{
    return sentence + "\r\n";
}

} // namespace

Result<void> Furuno::startPrivate()
{
    setIdent("Furuno");
    m_inList = false;
    serialPort().flush();
    forgetLines();
    return {};
}

void Furuno::stopPrivate()
{
    if (!std::exchange(m_inList, false))
        return; // what is still on its way out must get there
    serialPort().flush();
    // Ends the half line that was thrown away, then the loading.
    (void)writeSentence("\r\n" + line(std::string(lastLine)));
}

std::string Furuno::waypointSentence(const Waypoint& waypoint)
{
    const auto* icon = waypointIcon(waypoint.iconIndex);
    const bool isAnchor = icon && icon->name == "ANCHOR";
    return fmt::format("$PFEC,GPwpl,{},{:6},,@{}{},A,,,,",
                       positionFields(waypoint.positionOnGPS(), 3),
                       deviceText(waypoint.name, nameRule), isAnchor ? anchorMark : circleMark,
                       deviceText(waypoint.description, commentRule));
}

std::vector<std::string> Furuno::routeSentences(unsigned number,
                                                const ExchangeRecords::NamedRoute& route)
{
    const auto count = (route.points.size() + namesInSentence - 1) / namesInSentence;
    std::vector<std::string> sentences;
    for (std::size_t i = 0; i < count; ++i) {
        auto sentence = fmt::format("$GPRTE,{},{},C,{:02}", count, i + 1, number);
        const auto end = std::min((i + 1) * namesInSentence, route.points.size());
        for (auto k = i * namesInSentence; k < end; ++k) // a blank: the point is not skipped
            sentence += fmt::format(", {:6}", deviceText(route.points[k].name, nameRule));
        sentences.push_back(std::move(sentence));
    }
    sentences.push_back(
        fmt::format("$PFEC,GPrtc,{:02},{}", number, deviceText(route.name, routeCommentRule)));
    return sentences;
}

std::optional<Waypoint> Furuno::waypointFromSentence(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    Waypoint waypoint;
    waypoint.name = textFromDevice(fields[6]);
    const bool isPlaced = setPosition(waypoint, fields[2], fields[3], fields[4], fields[5]);
    auto comment = fields[8];
    if (comment.starts_with('@')) {
        const char mark = comment.size() > 1 ? comment[1] : circleMark;
        waypoint.iconIndex = mark == anchorMark ? iconIndex("ANCHOR") : 0;
        comment.remove_prefix(std::min<std::size_t>(2, comment.size()));
    }
    waypoint.description = textFromDevice(comment);
    waypoint.show = fields[9] != "V";
    if (waypoint.name.empty() || !isPlaced)
        return std::nullopt;
    return waypoint;
}

std::optional<RoutePart> Furuno::routeFromSentence(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    RoutePart part{.count = NMEA::integer(fields[1]),
                   .number = NMEA::integer(fields[2]),
                   .route = textFromDevice(fields[4]),
                   .names = {}};
    if (fields[3] != "C" || fields.count() < 6)
        return std::nullopt;
    for (std::size_t i = 5; i < fields.count(); ++i) {
        // The first character says whether the point is skipped for now.
        auto name = textFromDevice(fields[i].substr(std::min<std::size_t>(1, fields[i].size())));
        if (!name.empty())
            part.names.push_back(std::move(name));
    }
    return part;
}

Result<void> Furuno::receiveRecords(const ExchangeKinds& kinds, ExchangeRecords& records)
{
    if (!kinds.waypoints && !kinds.routes)
        return failure(Error::Code::Unsupported, "This receiver sends no tracks.");
    message("NSStartSavingAtReceiver");
    TransferProgress state{.phase = Phase::Waiting, .kind = Kind::Any};
    progress(state);
    std::vector<Waypoint> waypoints;
    RouteParts routes;
    std::map<std::string, std::string> routeNames; // by number
    double deadline = deadlineIn(timing().menu);
    for (;;) {
        const auto sentence = readSentence(deadline, Checksum::WhereGiven);
        const auto isOther = [&](const Error& error) {
            return state.done == 0 && error.code == Error::Code::BadSyntax;
        };
        // Until the list begins there may be the rest of what the receiver said before.
        if (!sentence && isOther(sentence.error()))
            continue;
        if (!sentence)
            return tl::unexpected(sentence.error());
        if (sentence->starts_with(lastLine))
            break;
        bool isUnderstood = true;
        if (sentence->starts_with("$PFEC,GPwpl")) {
            auto waypoint = waypointFromSentence(*sentence);
            isUnderstood = waypoint.has_value();
            if (waypoint)
                waypoints.push_back(std::move(*waypoint));
        } else if (sentence->starts_with("$GPRTE")) {
            auto part = routeFromSentence(*sentence);
            isUnderstood = part && routes.add(std::move(*part));
        } else if (sentence->starts_with("$PFEC,GPrtc")) {
            const NmeaFields fields(*sentence);
            const auto name = fields[4].empty() ? fields[3] : fields[4];
            routeNames[textFromDevice(fields[2])] = textFromDevice(name);
        } else {
            if (clock().monotonicSeconds() >= deadline)
                return noAnswer();
            continue;
        }
        if (!isUnderstood)
            return badSentence(*sentence);
        state.phase = Phase::Receiving;
        progress((++state.done, state));
        deadline = deadlineIn(betweenLines);
    }
    if (routes.isInMiddle())
        return failure(Error::Code::Truncated, "The receiver did not send all of a route.");
    if (kinds.routes) {
        const auto before = records.routes.size();
        routes.handOver(waypoints, records);
        for (auto i = before; i < records.routes.size(); ++i) {
            const auto it = routeNames.find(records.routes[i].name);
            if (it != routeNames.end() && !it->second.empty())
                records.routes[i].name = it->second;
        }
    }
    if (kinds.waypoints)
        for (auto& waypoint : waypoints)
            records.waypoint(std::move(waypoint));
    return {};
}

Result<void> Furuno::sendRecords(const ExchangeRecords& records)
{
    leaveOutTracks(records.tracks.size());
    if (records.waypoints.empty() && records.routes.empty())
        return records.tracks.empty()
            ? Result<void>()
            : failure(Error::Code::Unsupported, "This receiver takes no tracks.");
    if (records.routes.size() > mostRoutes)
        return failure(Error::Code::OutOfRange,
                       fmt::format("This receiver takes at most {} routes.", mostRoutes));
    for (const auto& route : records.routes)
        if (route.points.size() > mostRoutePoints)
            return failure(Error::Code::OutOfRange,
                           fmt::format("Route {} has {} waypoints; this receiver takes {}.",
                                       route.name, route.points.size(), mostRoutePoints));

    const NamedRecords named(records, nameRule, routeCommentRule);
    addRenamed(named.renamed());
    std::vector<std::string> sentences;
    for (const auto& waypoint : named.allWaypoints())
        sentences.push_back(waypointSentence(waypoint));
    unsigned number = 0;
    for (const auto& route : named.routes())
        for (auto& sentence : routeSentences(++number, route))
            sentences.push_back(std::move(sentence));
    sentences.emplace_back(lastLine);

    // Lines go one way: what is said before the receiver listens is lost.
    prepare("NSStartLoadingAtReceiver");
    if (isStopped())
        return cancelled();
    TransferProgress state{.phase = Phase::Sending, .kind = Kind::Any, .total = sentences.size()};
    progress(state);
    m_inList = true;
    for (const auto& sentence : sentences) {
        if (isStopped())
            return cancelled();
        if (!writeSentence(line(sentence)))
            return gone();
        progress((++state.done, state));
    }
    m_inList = false;
    return {};
}

} // namespace kelvox
