#pragma once

#include <array>
#include <span>

namespace kelvox {

/// A place on the chart's picture whose position is printed in the header.
/// x to the right and y DOWNWARD from the top left pixel; degrees in the chart's own datum.
struct ReferencePoint {
    double x = 0;
    double y = 0;
    double latitude = 0;
    double longitude = 0;
};

/// One polynomial of two variables, as the header gives it or as fitted.
struct Polynomial {
    int level = 0; ///< 1 to 5; anything else evaluates to 0
    std::array<double, 12> coefficients{};

    [[nodiscard]] double at(double x, double y) const;
};

/// The four polynomials between the picture and the earth. Pixel y runs downward here; longitudes
/// carry the phase shift; all in the chart's own datum.
struct GeoPolynomials {
    Polynomial wpx; ///< pixel x from (longitude, latitude)
    Polynomial wpy; ///< pixel y from (longitude, latitude)
    Polynomial pwx; ///< longitude from pixel (x, y)
    Polynomial pwy; ///< latitude from pixel (x, y)

    [[nodiscard]] bool allHaveLevel() const
    {
        return wpx.level && wpy.level && pwx.level && pwy.level;
    }
};

/// Longitude with the phase shift added, brought back below 180 from above.
[[nodiscard]] double shiftedLongitude(double longitude, double phaseShift);

/// Fits all four polynomials to the reference points.
///
/// Fewer than two points: nothing is fitted, the levels stay 0. Two points: straight lines, level
/// 1, with the intercepts that charts of this kind are known to be read with (see the source).
///
/// Three points and more: least squares, level 1 (three terms) below nine points and level 2 (six
/// terms) from nine on. The longitudes go in with the phase shift added as in shiftedLongitude(),
/// for the inverse polynomials as results and for the others as input, since the conversions add
/// and subtract it outside the polynomials. Each input is centred on its mean and divided by its
/// largest deviation; the normal equations are solved by elimination with row pivoting, then the
/// terms are expanded back to plain powers. A pivot below 1e-12 of the largest one (all points on
/// a line, on a conic for level 2, or fewer different points than terms) leaves level 0.
[[nodiscard]] GeoPolynomials fitPolynomials(std::span<const ReferencePoint> points,
                                            double phaseShift);

} // namespace kelvox
