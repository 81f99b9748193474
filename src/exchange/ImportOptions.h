#pragma once

#include "base/Clock.h"
#include "navigation/ChartMarker.h"

#include <chrono>
#include <cstdint>
#include <stop_token>

namespace kelvox {

/// What a reader of exchange files takes from the program around it.
struct ImportOptions {
    /// The first of the numbers that name track points and date those without a time: the current
    /// time in whole seconds since 1970.
    std::int64_t key = 0;
    /// Added to the dates of GPX files.
    std::chrono::seconds timeZoneOffset{0};
    std::stop_token stop = {}; ///< gives up a file that is being read
    TrackColor trackColor; ///< that of lines that bring none; segments of GPX are lighter by steps

    /// As the program imports: the current second and the local time zone's offset from GMT now.
    [[nodiscard]] static ImportOptions now(const Clock& clock);
};

/// The place of two texts in decimal degrees, as a marker keeps it. Longitudes up to 360 are
/// brought round.
/// @return false, the marker as it was, when they are no place on the earth
[[nodiscard]] bool setPlace(ChartMarker& marker, std::string_view latitude,
                            std::string_view longitude);

} // namespace kelvox
