#pragma once

#include "devices/GPSTransfer.h"
#include "devices/GarminPacket.h"
#include "devices/GarminRecords.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvox {

/// Garmin receivers in their own interface mode, over the published Device Interface (link L001).
///
/// The receiver is passive: everything begins here, each packet is answered by an acknowledgement.
/// A packet that was damaged or lost on its way is asked for, or sent, again.
class Garmin final : public GPSTransfer {
public:
    Garmin(const Clock& clock, Hooks hooks, const Timing& timing)
        : GPSTransfer(clock, std::move(hooks), timing)
    {
    }
    Garmin(const Clock& clock, Hooks hooks)
        : Garmin(clock, std::move(hooks), Timing())
    {
    }

    [[nodiscard]] Result<void> startPrivate() override;
    void stopPrivate() override;

    /// Ends what was left unfinished on the line and asks once what the receiver is; one that does
    /// not answer stays without ident().
    void initialise();

    /// Asks what the receiver is and can do. One that falls silent after its name is of the time
    /// before capability arrays: it uses D100 and D300.
    [[nodiscard]] Result<void> getIdent();
    [[nodiscard]] const GarminCapabilities& capabilities() const { return m_capabilities; }

    [[nodiscard]] Result<void> receiveWaypoints(ExchangeRecords& records);
    [[nodiscard]] Result<void> receiveRoutes(ExchangeRecords& records);
    [[nodiscard]] Result<void> receiveTracks(ExchangeRecords& records);
    /// Names as they are to stand in the receiver.
    [[nodiscard]] Result<void> sendWaypoints(std::span<const Waypoint> waypoints);
    [[nodiscard]] Result<void> sendRoute(std::uint8_t number,
                                         const ExchangeRecords::NamedRoute& route);
    [[nodiscard]] Result<void> sendTracks(const std::vector<Track>& points);

    // The link.
    /// Frames and writes one packet; true when all of it was written.
    [[nodiscard]] bool sendCommand(std::uint8_t id, std::string_view data);
    /// The data of the next packet with one of the ids. Others are acknowledged and passed over,
    /// but a refusal where an acknowledgement is awaited is a failure.
    [[nodiscard]] Result<std::string> getResponse(std::uint8_t expected, std::uint8_t alternative,
                                                  std::uint8_t& received);
    /// Sends and waits, up to three times. An acknowledgement of another packet does not count.
    [[nodiscard]] Result<std::string>
    sendCommandWaitForResponse(std::uint8_t id, std::string_view data, std::uint8_t expected,
                               std::uint8_t alternative, std::uint8_t& received);

private:
    enum CommandCode : std::uint16_t { Abort = 0, Routes = 4, TrackLog = 6, Waypoints = 7 };
    using Ids = std::span<const std::uint8_t>;

    void prepareToReceive(const ExchangeKinds& kinds) override;
    [[nodiscard]] Result<void> receiveRecords(const ExchangeKinds& kinds,
                                              ExchangeRecords& records) override;
    [[nodiscard]] Result<void> sendRecords(const ExchangeRecords& records) override;

    void readIdentity(std::string_view productData);
    [[nodiscard]] Result<std::string> awaitProtocolArray();
    void startAfresh(); ///< after a fault: throws away what is still on its way
    [[nodiscard]] Result<GarminPacket> readPacket(double deadline);
    [[nodiscard]] Result<GarminPacket> readOneOf(Ids ids);
    /// As readOneOf(), and has damaged and lost packets sent again.
    [[nodiscard]] Result<GarminPacket> receiveOneOf(Ids ids);
    void acknowledge(std::uint8_t id);
    [[nodiscard]] Result<void> sendAcknowledged(std::uint8_t id, std::string_view data);
    /// Has a list sent; take() gets each of its packets and says whether it is understood.
    template <typename Take>
    [[nodiscard]] Result<void> receiveList(CommandCode command, TransferProgress::Kind kind,
                                           Ids ids, const Take& take);
    [[nodiscard]] Result<void> sendList(CommandCode command, TransferProgress::Kind kind,
                                        std::span<const GarminPacket> packets);

    [[nodiscard]] std::optional<Waypoint> makeWaypoint(std::string_view record) const;
    [[nodiscard]] std::string makeWaypointType(const Waypoint& waypoint) const;
    [[nodiscard]] const TextRule& nameRule() const;

    GarminCapabilities m_capabilities;
    std::string m_unread; ///< read off the line, not yet looked at
    std::size_t m_read = 0; ///< of m_unread
    bool m_inList = false; ///< the receiver is in the middle of a list
};

} // namespace kelvox
