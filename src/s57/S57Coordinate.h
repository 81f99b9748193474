#pragma once

#include "base/Position.h"

#include <cstdint>
#include <string>

namespace kelvox {

class S57Controller;

/// A place of the cell model: degrees in single precision, which bounds its resolution to about
/// seven significant digits.
struct S57Coordinate {
    float latitude = 0;
    float longitude = 0;

    [[nodiscard]] Position positionOnGPS() const { return {longitude, latitude}; }
    /// The place on the chart view.
    [[nodiscard]] Point coordinateToPoint(const S57Controller& view) const;

    friend bool operator==(const S57Coordinate&, const S57Coordinate&) = default;
};

/// A sounding: a place with its depth in metres, positive downwards.
struct S57Depth : S57Coordinate {
    float depth = 0;

    friend bool operator==(const S57Depth&, const S57Depth&) = default;
};

} // namespace kelvox
