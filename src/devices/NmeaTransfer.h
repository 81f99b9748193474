#pragma once

#include "devices/SentenceTransfer.h"

#include <optional>
#include <set>

namespace kelvox {

/// One part of a route as NMEA 0183 receivers send it, "RTE"; the makers' own ones are alike.
struct RoutePart {
    int count = 0; ///< parts of the route
    int number = 0; ///< of this one, from 1
    std::string route; ///< its number or name
    std::vector<std::string> names; ///< of waypoints
};

/// Puts routes together from their parts.
class RouteParts {
public:
    /// False for a part that does not follow the one before.
    [[nodiscard]] bool add(RoutePart part);
    /// Whether a route still lacks its end.
    [[nodiscard]] bool isInMiddle() const { return m_next != 1; }
    [[nodiscard]] const std::vector<RoutePart>& routes() const { return m_routes; }
    /// Makes the routes of the waypoints of the names; those that are not known are passed over.
    void handOver(const std::vector<Waypoint>& waypoints, ExchangeRecords& records) const;

private:
    std::vector<RoutePart> m_routes;
    int m_next = 1;
};

/// Any receiver or instrument that knows waypoints and routes in NMEA 0183: WPL and RTE sentences.
///
/// Nothing is acknowledged. When receiving, the user starts the sending at the receiver, or it
/// sends round and round: what came is complete when nothing new comes for some seconds.
class NmeaTransfer : public SentenceTransfer {
public:
    NmeaTransfer(const Clock& clock, Hooks hooks, const Timing& timing)
        : SentenceTransfer(clock, std::move(hooks), timing)
    {
    }
    [[nodiscard]] Result<void> startPrivate() override;
    void stopPrivate() override;

    /// Complete with checksum and line end.
    [[nodiscard]] static std::string waypointSentence(const Waypoint& waypoint);
    [[nodiscard]] static std::vector<std::string>
    routeSentences(const std::string& name, const std::vector<std::string>& waypoints);
    /// Of a sentence without checksum; nothing when it does not read as one.
    [[nodiscard]] static std::optional<Waypoint> waypointFromSentence(std::string_view sentence);
    [[nodiscard]] static std::optional<RoutePart> routeFromSentence(std::string_view sentence);

protected:
    [[nodiscard]] Result<void> receiveRecords(const ExchangeKinds& kinds,
                                              ExchangeRecords& records) override;
    [[nodiscard]] Result<void> sendRecords(const ExchangeRecords& records) override;

private:
    struct Received;
    [[nodiscard]] static Result<bool> take(const std::string& sentence, Received& received);
};

/// A receiver with a SiRF chip. It is brought to its binary protocol and from there to NMEA, which
/// it hears whatever it spoke before; then as any NMEA receiver. The chips themselves keep no
/// waypoints.
class Sirf final : public NmeaTransfer {
public:
    /// @param bitsPerSecond of the port
    Sirf(const Clock& clock, Hooks hooks, const Timing& timing, int bitsPerSecond)
        : NmeaTransfer(clock, std::move(hooks), timing)
        , m_bitsPerSecond(bitsPerSecond)
    {
    }
    [[nodiscard]] Result<void> startPrivate() override;

private:
    int m_bitsPerSecond;
};

} // namespace kelvox
