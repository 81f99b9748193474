#pragma once

#include "base/Position.h"
#include "base/Result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// A vessel that the simulator lets sail about and report by AIS.
struct TrafficVessel {
    std::uint32_t mmsi = 0;
    bool classB = false;
    std::string name;
    std::string callSign;
    std::string destination;
    int shipType = 0; ///< ship and cargo type of the AIS, 0 to 255
    int lengthMetres = 0;
    int beamMetres = 0;
    Position start;
    float speedKnots = 0;
    float courseDegrees = 0; ///< true; turns back after half an hour, to and fro
};

/// What a simulation starts from, as a JSON file says it:
///
///     { "start": {"latitude": 59.9, "longitude": 10.7}, "speed": 6, "heading": 180,
///       "variation": 4.5, "route": [{"latitude": ..., "longitude": ...}, ...], "loop": true,
///       "traffic": [{"mmsi": 257000001, "name": "SEA FOX", "callSign": "LAAA",
///                    "destination": "OSLO", "class": "A", "type": 70, "length": 120, "beam": 18,
///                    "latitude": ..., "longitude": ..., "speed": 12, "course": 15}, ...] }
///
/// Every member may be missing; the boat then keeps what it had.
struct SimulatorDescription {
    std::optional<Position> start;
    std::optional<float> speedKnots;
    std::optional<float> headingDegrees;
    std::optional<float> variationDegrees;
    std::vector<Position> route;
    bool loop = false; ///< from the last point of the route back to the first
    std::vector<TrafficVessel> traffic;
};

/// The error names the member that is wrong.
[[nodiscard]] Result<SimulatorDescription> parseSimulatorDescription(std::string_view json);

} // namespace kelvox
