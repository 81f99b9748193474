#include "devices/Magellan.h"

#include "connections/SentenceText.h"
#include "devices/NamedRecords.h"
#include "navigation/WaypointIcons.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace kelvox {
namespace {

using Phase = TransferProgress::Phase;
using Kind = TransferProgress::Kind;

// The maker's figures for the hand-shake.
constexpr double acknowledgeSeconds = 2;
constexpr double versionSeconds = 6;
constexpr std::size_t longestSentence = 82; // with checksum and line end
constexpr std::size_t checksumAndEnd = 5;
constexpr std::size_t mostWaiting = 64;

struct Letter {
    std::string_view icon; ///< of the one table of icons
    std::string_view letters;
};
// Ours first where several mean one of theirs, and theirs first where several mean one of ours.
constexpr std::array oldLetters = {
    Letter{"WAYPOINT", "a"},    Letter{"BUOYWHITE", "e"},   Letter{"SQUARERED", "b"},
    Letter{"NAVAIDRED", "c"},   Letter{"NAVAIDGREEN", "d"}, Letter{"REEF", "f"},
    Letter{"TRIANGLERED", "g"}, Letter{"SQUAREGREEN", "h"}, Letter{"BELL", "i"},
    Letter{"DANGER", "j"},      Letter{"DIVER", "k"},       Letter{"FISHING", "l"},
    Letter{"RESIDENCE", "m"},   Letter{"FLAG", "n"},        Letter{"PARKING", "o"},
    Letter{"DOCK", "q"},        Letter{"RESTAURANT", "r"},  Letter{"FUEL", "s"},
};
constexpr std::array newLetters = {
    Letter{"WAYPOINT", "a"},     Letter{"SQUARERED", "b"}, Letter{"RESIDENCE", "c"},
    Letter{"TOWER", "d"},        Letter{"BOATRAMP", "i"},  Letter{"MEDICAL", "l"},
    Letter{"BEACON", "m"},       Letter{"BUOYWHITE", "n"}, Letter{"FUEL", "o"},
    Letter{"LODGING", "r"},      Letter{"FISHING", "s"},   Letter{"LIGHT", "u"},
    Letter{"MARINA", "w"},       Letter{"DANGER", "z"},    Letter{"RESTAURANT", "ac"},
    Letter{"REEF", "ad"},        Letter{"DIVER", "ae"},    Letter{"DROPOFF", "aj"},
    Letter{"INFORMATION", "al"}, Letter{"BAR", "an"},      Letter{"SHIPWRECK", "ao"},
};

std::span<const Letter> lettersOf(const Magellan::Family& family)
{
    return family.isOld ? std::span<const Letter>(oldLetters) : newLetters;
}

std::string_view lettersOfIcon(int index, const Magellan::Family& family)
{
    const auto* icon = waypointIcon(index);
    const auto letters = lettersOf(family);
    const auto it = std::find_if(letters.begin(), letters.end(), [&](const Letter& letter) {
        return icon && letter.icon == icon->name;
    });
    return it == letters.end() ? "a" : it->letters;
}

int iconOfLetters(std::string_view text, const Magellan::Family& family)
{
    const auto letters = lettersOf(family);
    const auto it = std::find_if(letters.begin(), letters.end(),
                                 [&](const Letter& letter) { return letter.letters == text; });
    return it == letters.end() ? 0 : iconIndex(it->icon);
}

/// A text field: an escape character and two digits stand for what would part fields.
std::string textOf(std::string_view field)
{
    constexpr char escape = '\x1B';
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        unsigned value = 0;
        if (field[i] == escape && i + 2 < field.size()
            && std::from_chars(&field[i + 1], &field[i + 1] + 2, value, 16).ptr
                == &field[i + 1] + 2) {
            text += static_cast<char>(value);
            i += 2;
        } else {
            text += field[i];
        }
    }
    return textFromDevice(text);
}

std::optional<Date> dateOf(std::string_view time, std::string_view date)
{
    const auto two = [](std::string_view text, std::size_t at) {
        int value = -1;
        if (text.size() >= at + 2)
            std::from_chars(text.data() + at, text.data() + at + 2, value);
        return value;
    };
    constexpr int century = 2000;
    const std::chrono::year_month_day day(std::chrono::year(century + two(date, 4)),
                                          std::chrono::month(static_cast<unsigned>(two(date, 2))),
                                          std::chrono::day(static_cast<unsigned>(two(date, 0))));
    const int hours = two(time, 0);
    const int minutes = two(time, 2);
    const int seconds = two(time, 4);
    if (two(date, 4) < 0 || !day.ok() || hours < 0 || hours > 23 || minutes < 0 || minutes > 59
        || seconds < 0 || seconds > 60)
        return std::nullopt;
    return std::chrono::sys_days(day) + std::chrono::hours(hours) + std::chrono::minutes(minutes)
        + std::chrono::seconds(seconds);
}

} // namespace

Magellan::Family Magellan::Family::ofProduct(int productId)
{
    static constexpr std::array old = {15, 19, 24, 25};
    if (std::find(old.begin(), old.end(), productId) != old.end())
        return {.name = {.longest = 6}, .isOld = true};
    // Later models take longer names still; eight is what all of them take.
    return {.name = {.longest = 8,
                     .lowerCase = TextRule::LowerCase::Yes,
                     .others = " -",
                     .substitute = '-'}};
}

Result<void> Magellan::startPrivate()
{
    m_family = Family::ofProduct(-1);
    m_waiting.clear();
    m_inList = false;
    setIdent({});
    forgetLines();
    serialPort().flush();
    // Nothing answers the first sentence, so it goes again with each try of the second.
    m_handShake = HandShake::On;
    Result<void> begun;
    for (int attempt = 0; attempt < handShakeAttempts; ++attempt) {
        if (!write("$PMGNCMD,HANDON"))
            return gone();
        begun = sendAcknowledged("$PMGNCMD,NMEAOFF", acknowledgeSeconds, 1);
        if (begun)
            return getIdent();
        if (begun.error().code != Error::Code::Truncated)
            break;
    }
    return begun;
}

Result<void> Magellan::getIdent()
{
    Error lastError;
    for (int attempt = 0; attempt < timing().attempts; ++attempt) {
        if (auto sent = sendAcknowledged("$PMGNCMD,VERSION", versionSeconds); !sent)
            return sent;
        const double deadline = deadlineIn(acknowledgeSeconds);
        auto sentence = readOwn(deadline);
        while (sentence && !sentence->starts_with("$PMGNVER"))
            sentence = readOwn(deadline);
        if (sentence) {
            const NmeaFields fields(*sentence);
            m_family = Family::ofProduct(NMEA::integer(fields[1]));
            setIdent(textFromDevice(fields[3]));
            return {};
        }
        lastError = std::move(sentence.error());
        if (lastError.code == Error::Code::CannotOpen || lastError.code == Error::Code::Cancelled)
            break;
    }
    return tl::unexpected(std::move(lastError));
}

void Magellan::stopPrivate()
{
    if (std::exchange(m_inList, false))
        (void)write("$PMGNCMD,END");
    (void)write("$PMGNCMD,HANDOFF");
    m_handShake = HandShake::Off;
    (void)write("$PMGNCMD,NMEAON");
    makeQuiet(acknowledgeSeconds);
}

bool Magellan::write(std::string_view sentence)
{
    return writeSentence(completeSentence(sentence, AddChecksum::Yes));
}

Result<std::string> Magellan::readOwn(double deadline)
{
    if (!m_waiting.empty()) {
        auto sentence = std::move(m_waiting.front());
        m_waiting.pop_front();
        return sentence;
    }
    for (;;) {
        auto sentence = readSentence(deadline, Checksum::Required);
        if (!sentence || sentence->starts_with("$PMGN")) {
            const bool isAnswer = sentence && sentence->starts_with("$PMGNCSM");
            if (sentence && !isAnswer && m_handShake == HandShake::On)
                (void)write(fmt::format("$PMGNCSM,{:02X}", sentenceChecksum(*sentence)));
            return sentence;
        }
        if (clock().monotonicSeconds() >= deadline)
            return noAnswer();
    }
}

Result<void> Magellan::sendAcknowledged(std::string_view sentence, double firstAnswer, int attempts)
{
    const auto wanted = fmt::format("{:02X}", sentenceChecksum(sentence));
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (isStopped())
            return cancelled();
        if (!write(sentence))
            return gone();
        const double deadline = deadlineIn(attempt == 0 ? firstAnswer : acknowledgeSeconds);
        std::deque<std::string> waiting = std::exchange(m_waiting, {});
        bool isAnswered = false;
        while (!isAnswered) {
            auto answer = readOwn(deadline);
            if (!answer && answer.error().code == Error::Code::BadSyntax)
                continue;
            if (!answer && answer.error().code != Error::Code::Truncated)
                return tl::unexpected(std::move(answer.error()));
            if (!answer)
                break;
            isAnswered = answer->starts_with("$PMGNCSM") && NmeaFields(*answer)[1] == wanted;
            if (!answer->starts_with("$PMGNCSM") && waiting.size() < mostWaiting)
                waiting.push_back(std::move(*answer));
        }
        m_waiting = std::move(waiting);
        const auto refused = std::find_if(m_waiting.begin(), m_waiting.end(), [](const auto& it) {
            return it.starts_with("$PMGNCMD,UNABLE");
        });
        if (refused != m_waiting.end())
            return failure(Error::Code::Unsupported, "The receiver cannot do what was asked.");
        if (isAnswered)
            return {};
    }
    return noAnswer();
}

template <typename Begin, typename Take>
Result<void> Magellan::receiveList(std::string_view command, std::string_view kind,
                                   Kind progressKind, const Begin& begin, const Take& take)
{
    Error lastError;
    for (int attempt = 0; attempt < timing().attempts; ++attempt) {
        TransferProgress state{.phase = Phase::Receiving, .kind = progressKind};
        progress(state);
        begin();
        if (attempt > 0)
            makeQuiet(timing().answer);
        forgetLines();
        m_waiting.clear();
        if (isStopped())
            return cancelled();
        m_inList = true;
        if (!write(command))
            return gone();
        for (;;) {
            const auto sentence = readOwn(deadlineIn(timing().answer));
            if (!sentence) {
                lastError = sentence.error();
                break;
            }
            if (sentence->starts_with("$PMGNCMD,END")) {
                m_inList = false;
                return {};
            }
            if (sentence->starts_with("$PMGNCMD,UNABLE")) {
                m_inList = false;
                return failure(Error::Code::Unsupported, "The receiver cannot do what was asked.");
            }
            if (!sentence->starts_with(kind))
                continue;
            if (!take(*sentence)) {
                lastError = badSentence(*sentence).value();
                break;
            }
            progress((++state.done, state));
        }
        const bool again =
            lastError.code == Error::Code::BadSyntax || lastError.code == Error::Code::Truncated;
        if (!again)
            break;
    }
    return tl::unexpected(std::move(lastError));
}

Result<std::vector<Waypoint>> Magellan::receiveWaypoints()
{
    std::vector<Waypoint> waypoints;
    const auto received = receiveList(
        "$PMGNCMD,WAYPOINT", "$PMGNWPL", Kind::Waypoints, [&] { waypoints.clear(); },
        [&](const std::string& sentence) {
            auto waypoint = waypointFromSentence(sentence, m_family);
            if (waypoint)
                waypoints.push_back(std::move(*waypoint));
            return waypoint.has_value();
        });
    return received ? Result<std::vector<Waypoint>>(std::move(waypoints))
                    : tl::unexpected(received.error());
}

Result<RouteParts> Magellan::receiveRoutes()
{
    RouteParts routes;
    auto received = receiveList(
        "$PMGNCMD,ROUTE", "$PMGNRTE", Kind::Routes, [&] { routes = {}; },
        [&](const std::string& sentence) {
            auto part = routeFromSentence(sentence);
            return part && routes.add(std::move(*part));
        });
    if (received && routes.isInMiddle())
        return failure(Error::Code::Truncated, "The receiver did not send all of a route.");
    return received ? Result<RouteParts>(std::move(routes))
                    : tl::unexpected(std::move(received.error()));
}

Result<std::vector<Track>> Magellan::receiveTracks()
{
    std::vector<Track> points;
    TrackLineColors colors;
    std::optional<std::string> line;
    const auto begin = [&] {
        points.clear();
        line.reset();
    };
    const auto take = [&](const std::string& sentence) {
        auto point = trackFromSentence(sentence);
        if (!point)
            return false;
        if (!point->isValid) {
            line.reset();
            return true;
        }
        if (line != point->line)
            colors.startLine();
        line = std::move(point->line);
        point->track.color = colors.color();
        points.push_back(std::move(point->track));
        return true;
    };
    auto received = receiveList("$PMGNCMD,TRACK,2", "$PMGNTRK", Kind::Tracks, begin, take);
    // Older receivers know only tracks without dates.
    if (!received && received.error().code == Error::Code::Unsupported)
        received = receiveList("$PMGNCMD,TRACK", "$PMGNTRK", Kind::Tracks, begin, take);
    return received ? Result<std::vector<Track>>(std::move(points))
                    : tl::unexpected(std::move(received.error()));
}

Result<void> Magellan::receiveRecords(const ExchangeKinds& kinds, ExchangeRecords& records)
{
    if (!write("$PMGNCMD,HANDOFF"))
        return gone();
    m_handShake = HandShake::Off;
    if (kinds.waypoints || kinds.routes) {
        const auto waypoints = receiveWaypoints();
        if (!waypoints)
            return tl::unexpected(waypoints.error());
        if (kinds.waypoints)
            for (const auto& waypoint : *waypoints)
                keepWaypoint(waypoint, records);
        if (kinds.routes) {
            const auto routes = receiveRoutes();
            if (!routes)
                return tl::unexpected(routes.error());
            routes->handOver(*waypoints, records);
        }
    }
    if (kinds.tracks) {
        auto points = receiveTracks();
        if (!points)
            return tl::unexpected(std::move(points.error()));
        for (auto& point : *points)
            keepTrackPoint(std::move(point), records);
    }
    return {};
}

Result<void> Magellan::sendRecords(const ExchangeRecords& records)
{
    leaveOutTracks(records.tracks.size());
    if (records.waypoints.empty() && records.routes.empty())
        return records.tracks.empty()
            ? Result<void>()
            : failure(Error::Code::Unsupported, "This receiver takes no tracks.");
    const NamedRecords named(records, m_family.name, m_family.name);
    addRenamed(named.renamed());
    std::vector<std::string> sentences;
    for (const auto& waypoint : named.allWaypoints())
        sentences.push_back(waypointSentence(waypoint, m_family));
    for (const auto& route : named.routes())
        for (auto& sentence : routeSentences(route, m_family))
            sentences.push_back(std::move(sentence));

    TransferProgress state{.phase = Phase::Sending, .kind = Kind::Any, .total = sentences.size()};
    progress(state);
    m_inList = true;
    for (const auto& sentence : sentences) {
        if (auto sent = sendAcknowledged(sentence, acknowledgeSeconds); !sent)
            return sent;
        progress((++state.done, state));
    }
    auto sent = sendAcknowledged("$PMGNCMD,END", acknowledgeSeconds);
    if (sent)
        m_inList = false;
    return sent;
}

std::string Magellan::waypointSentence(const Waypoint& waypoint, const Family& family)
{
    constexpr std::size_t longestMessage = 30;
    const auto head = fmt::format("$PMGNWPL,{},0,M,{},",
                                  positionFields(waypoint.positionOnGPS(), family.isOld ? 3 : 5),
                                  deviceText(waypoint.name, family.name));
    const auto tail = fmt::format(",{}", lettersOfIcon(waypoint.iconIndex, family));
    const auto room = longestSentence - checksumAndEnd - head.size() - tail.size();
    const TextRule message{.longest = std::min(longestMessage, room),
                           .lowerCase = family.name.lowerCase,
                           .others = " -+/.()",
                           .substitute = '-'};
    return head + deviceText(waypoint.description, message) + tail;
}

std::vector<std::string> Magellan::routeSentences(const ExchangeRecords::NamedRoute& route,
                                                  const Family& family)
{
    constexpr std::size_t pairs = 2; // fit with names of any length
    const auto count = (route.points.size() + pairs - 1) / pairs;
    std::vector<std::string> sentences;
    for (std::size_t i = 0; i < count; ++i) {
        // Without a number the receiver takes the first that is free.
        auto sentence = fmt::format("$PMGNRTE,{},{},c,", count, i + 1);
        if (!family.isOld)
            sentence += "," + deviceText(route.name, family.name);
        for (auto k = i * pairs; k < std::min((i + 1) * pairs, route.points.size()); ++k)
            sentence += fmt::format(",{},{}", deviceText(route.points[k].name, family.name),
                                    lettersOfIcon(route.points[k].iconIndex, family));
        sentences.push_back(std::move(sentence));
    }
    return sentences;
}

std::optional<Waypoint> Magellan::waypointFromSentence(std::string_view sentence,
                                                       const Family& family)
{
    const NmeaFields fields(sentence);
    constexpr std::size_t fewest = 8;
    if (fields.count() < fewest)
        return std::nullopt;
    Waypoint waypoint;
    (void)setPosition(waypoint, fields[1], fields[2], fields[3], fields[4]);
    waypoint.name = textOf(fields[7]);
    waypoint.description = textOf(fields[8]);
    waypoint.iconIndex = iconOfLetters(fields[9], family);
    return waypoint.name.empty() ? std::nullopt : std::optional(std::move(waypoint));
}

std::optional<RoutePart> Magellan::routeFromSentence(std::string_view sentence)
{
    constexpr std::size_t head = 5; // address, count, number, kind, route number
    const NmeaFields fields(sentence);
    if (fields.count() < head)
        return std::nullopt;
    RoutePart part{.count = NMEA::integer(fields[1]),
                   .number = NMEA::integer(fields[2]),
                   .route = {},
                   .names = {}};
    if (fields[3] == "m")
        return part; // a message that goes with the route
    std::size_t at = head;
    // Pairs of waypoint and icon; an odd field before them is the route's name.
    if ((fields.count() - head) % 2 == 1)
        part.route = textOf(fields[at++]);
    for (; at + 1 < fields.count(); at += 2)
        if (auto name = textOf(fields[at]); !name.empty())
            part.names.push_back(std::move(name));
    return part;
}

std::optional<Magellan::TrackPoint> Magellan::trackFromSentence(std::string_view sentence)
{
    const NmeaFields fields(sentence);
    TrackPoint point;
    point.isValid = fields[8] == "A";
    point.line = textOf(fields[9]);
    point.track.date = dateOf(fields[7], fields[10]);
    const bool isPlaced = setPosition(point.track, fields[1], fields[2], fields[3], fields[4]);
    if (fields.count() < 9 || (point.isValid && !isPlaced))
        return std::nullopt;
    return point;
}

} // namespace kelvox
