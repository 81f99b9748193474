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

/// A depth as a chart prints it.
struct S57DepthText {
    std::string figure; ///< empty when the depth is no number
    std::string subscript; ///< the tenth of a metre, or the feet of a fathom; empty when it is zero
    float size = 0; ///< height of the figure in display points
    bool dries = false; ///< a height above the sounding datum, underlined on a chart

    friend bool operator==(const S57DepthText&, const S57DepthText&) = default;
};

/// A sounding: a place with its depth in metres, positive downwards.
///
/// The texts are cut towards the shoaler value, never rounded up: a drying height goes up instead.
struct S57Depth : S57Coordinate {
    enum class Form { Small, Large };

    float depth = 0;

    /// Whole feet.
    [[nodiscard]] S57DepthText depthInFeet(Form form) const;
    /// Metres, with a tenth down to 31 m.
    [[nodiscard]] S57DepthText depthInMetres(Form form) const;
    /// Fathoms, with the feet down to 11 fathoms.
    [[nodiscard]] S57DepthText depthInFathoms(Form form) const;

    friend bool operator==(const S57Depth&, const S57Depth&) = default;
};

} // namespace kelvox
