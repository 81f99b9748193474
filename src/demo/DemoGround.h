#pragma once

#include "base/Position.h"
#include "base/Rect.h"

namespace kelvox {

/// The invented ground of the demo waters: one height field that every chart is drawn from.
///
/// Places are in metres east (x) and north (y) of the entrance of Kelmouth harbour, which lies in
/// the open ocean of the real world, so that no real chart is ever hidden. Only additions,
/// multiplications, divisions and square roots are used: all machines agree to the last bit.
class DemoGround {
public:
    static constexpr double highWater = 4; ///< metres above chart datum: the coastline

    /// @param detail metres; forms smaller than this are left out, which generalises the ground
    explicit DemoGround(double detail)
        : m_detail(detail)
    {
    }
    /// Metres above chart datum, negative below; more than 30 m above is not told apart.
    [[nodiscard]] double elevation(Point place) const;
    [[nodiscard]] double depth(Point place) const { return -elevation(place); }

    /// Degrees, on the grid of 1e-7 degrees that charts use.
    [[nodiscard]] static Position position(Point place);

private:
    [[nodiscard]] static double shore(Point place);
    /// Noise of ever shorter waves, from the given one down to the shortest.
    [[nodiscard]] double fractal(Point place, double wave, double shortest, double gain,
                                 unsigned seed) const;

    double m_detail;
};

/// A repeatable number in 0..1 for two whole numbers and a seed.
[[nodiscard]] double demoRandom(int x, int y, unsigned seed);

} // namespace kelvox
