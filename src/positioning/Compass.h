#pragma once

#include "base/NoValue.h"

namespace kelvox {

/// What the compass shows, fed by receiver and instruments alike. Main thread.
struct Compass {
    float variation = 0; ///< degrees, east positive; 0 until a sentence brings one
    float headingMagnetic = static_cast<float>(noValue); ///< degrees
    float headingTrue = static_cast<float>(noValue); ///< degrees
};

} // namespace kelvox
