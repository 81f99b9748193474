#pragma once

#include "base/Position.h"

#include <algorithm>
#include <limits>

namespace kelvox {

/// An axis-parallel box with its edges included. A default box is empty and grows by include().
struct Rect {
    double left = std::numeric_limits<double>::infinity();
    double bottom = std::numeric_limits<double>::infinity();
    double right = -std::numeric_limits<double>::infinity();
    double top = -std::numeric_limits<double>::infinity();

    [[nodiscard]] constexpr bool isEmpty() const { return !(left <= right && bottom <= top); }
    [[nodiscard]] constexpr double width() const { return isEmpty() ? 0 : right - left; }
    [[nodiscard]] constexpr double height() const { return isEmpty() ? 0 : top - bottom; }
    [[nodiscard]] constexpr Point center() const
    {
        return {(left + right) / 2, (bottom + top) / 2};
    }
    [[nodiscard]] constexpr bool contains(Point p) const
    {
        return p.x >= left && p.x <= right && p.y >= bottom && p.y <= top;
    }
    [[nodiscard]] constexpr bool intersects(const Rect& other) const
    {
        return left <= other.right && other.left <= right && bottom <= other.top
            && other.bottom <= top;
    }
    constexpr void include(Point p)
    {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        bottom = std::min(bottom, p.y);
        top = std::max(top, p.y);
    }
    constexpr void include(const Rect& other)
    {
        left = std::min(left, other.left);
        right = std::max(right, other.right);
        bottom = std::min(bottom, other.bottom);
        top = std::max(top, other.top);
    }
    [[nodiscard]] constexpr Rect grownBy(double x, double y) const
    {
        return {left - x, bottom - y, right + x, top + y};
    }
    friend constexpr bool operator==(const Rect&, const Rect&) = default;
};

} // namespace kelvox
