#pragma once

#include <string>

namespace kelvox {

/// The frame that switches a SiRF receiver from its binary protocol to NMEA at the given rate:
/// GGA, GLL, GSA, RMC and VTG every second, GSV every five. Harmless when it already talks NMEA.
[[nodiscard]] std::string sirfToNmea(int bitsPerSecond);

/// The sentence that puts the receiver back to its binary protocol, complete.
[[nodiscard]] std::string sirfToBinary(int bitsPerSecond);

} // namespace kelvox
