#pragma once

#include "base/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

/// One packet of the link protocol L001 of the published Garmin Device Interface.
struct GarminPacket {
    enum Id : std::uint8_t {
        Acknowledge = 6,
        Command = 10,
        TransferComplete = 12,
        Refuse = 21,
        Records = 27, ///< how many follow
        RouteHeader = 29,
        RouteWaypoint = 30,
        TrackPoint = 34,
        WaypointData = 35,
        RouteLink = 98,
        TrackHeader = 99,
        ExtendedProductData = 248,
        ProtocolArray = 253,
        ProductRequest = 254,
        ProductData = 255
    };
    static constexpr std::size_t largestData = 255;

    std::uint8_t id = 0;
    std::string data;

    friend bool operator==(const GarminPacket&, const GarminPacket&) = default;
};

/// The packet as it goes over the wire: DLE, id, size, data, checksum, DLE, ETX, with every 16 in
/// size, data and checksum doubled. At most GarminPacket::largestData bytes of data.
[[nodiscard]] std::string garminFrame(std::uint8_t id, std::string_view data);

/// The next byte off the line; nothing when none came in time.
using NextByte = std::function<std::optional<std::uint8_t>()>;

/// Reads one packet. Fails with Truncated where the line fell silent, with BadSyntax where framing
/// or checksum are wrong; the bytes until there are gone.
[[nodiscard]] Result<GarminPacket> readGarminPacket(const NextByte& nextByte);

} // namespace kelvox
