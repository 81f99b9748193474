#pragma once

#include "base/NoValue.h"

namespace kelvox {

/// A place on the earth in decimal degrees, east and north positive.
struct Position {
    double longitude = noCoordinate;
    double latitude = noCoordinate;

    /// False for the marker of an unknown position, which has both ordinates at noCoordinate.
    [[nodiscard]] constexpr bool isKnown() const
    {
        return !(longitude == noCoordinate && latitude == noCoordinate);
    }
    friend constexpr bool operator==(const Position&, const Position&) = default;
};

/// A point or a vector in a plane; the owner says which plane and which unit.
struct Point {
    double x = 0;
    double y = 0;

    friend constexpr bool operator==(const Point&, const Point&) = default;
    friend constexpr Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
    friend constexpr Point operator*(Point a, double factor)
    {
        return {a.x * factor, a.y * factor};
    }
};

struct Size {
    double width = 0;
    double height = 0;

    friend constexpr bool operator==(const Size&, const Size&) = default;
};

} // namespace kelvox
