#pragma once

#include "navigation/TracksModel.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace kelvox {

/// One line of the recorded track: a run of points between two pauses or changes of colour.
struct TrackLine {
    std::size_t first = 0; ///< index of its first point in the model
    std::size_t count = 0;
    std::optional<Date> begin; ///< of the first point that has a date
    std::optional<Date> end; ///< of the last one
    float miles = 0; ///< NM along the points
    TrackColor color;

    [[nodiscard]] float hours() const; ///< from begin to end; `noValue` when not known
    [[nodiscard]] float knots() const; ///< mean speed; `noValue` when not known
};

/// Oldest first; together they hold every point once.
[[nodiscard]] std::vector<TrackLine> trackLines(const TracksModel& tracks);

} // namespace kelvox
