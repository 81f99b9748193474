#pragma once

#include "base/NoValue.h"

#include <string>
#include <vector>

namespace kelvox {

struct Satellite {
    int number = 0; ///< PRN
    int elevationDegrees = 0;
    int azimuthDegrees = 0; ///< true
    int signal = 0; ///< dB-Hz, 0 when not tracked
    friend bool operator==(const Satellite&, const Satellite&) = default;
};

/// What the receiver says about its satellites.
struct SatelliteView {
    std::vector<Satellite> satellites; ///< in the order of the sentences, at most 128
    std::vector<int> inUse; ///< numbers of those the fix uses
    std::string mode; ///< field 1 of GSA: M or A
    int fixType = 0; ///< 1 none, 2 2D, 3 3D; 0 not said yet
    float pdop = static_cast<float>(noValue);
    float hdop = static_cast<float>(noValue);
    float vdop = static_cast<float>(noValue);
    std::string status; ///< text of GSS
};

} // namespace kelvox
