#include "raster/Polynomial.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace kelvox {

namespace {
/// One equation: the value wanted at (x, y).
struct Sample {
    double x;
    double y;
    double value;
};

/// Maps an input to about -1 .. 1, so that squares of longitudes do not drown the solution.
struct Scaling {
    double mean = 0;
    double unit = 1;
    [[nodiscard]] double operator()(double value) const { return (value - mean) / unit; }
};

Scaling scalingOf(std::span<const Sample> samples, double Sample::*input)
{
    Scaling scaling;
    for (const Sample& sample : samples)
        scaling.mean += sample.*input / static_cast<double>(samples.size());
    double largest = 0;
    for (const Sample& sample : samples)
        largest = std::max(largest, std::abs(sample.*input - scaling.mean));
    if (largest > 0)
        scaling.unit = largest;
    return scaling;
}

constexpr std::size_t maximumTerms = 6;
using Terms = std::array<double, maximumTerms>;

Terms termsAt(double x, double y)
{
    return {1, x, y, x * x, x * y, y * y};
}

/// Gaussian elimination with row pivoting on the first count unknowns.
std::optional<Terms> solve(std::array<Terms, maximumTerms> matrix, Terms right, std::size_t count)
{
    double largestPivot = 0;
    for (std::size_t column = 0; column < count; ++column) {
        std::size_t pivot = column;
        for (std::size_t row = column + 1; row < count; ++row)
            if (std::abs(matrix[row][column]) > std::abs(matrix[pivot][column]))
                pivot = row;
        const double size = std::abs(matrix[pivot][column]);
        largestPivot = std::max(largestPivot, size);
        if (!(size > largestPivot * 1e-12) || !std::isfinite(size))
            return std::nullopt;
        std::swap(matrix[pivot], matrix[column]);
        std::swap(right[pivot], right[column]);
        for (std::size_t row = column + 1; row < count; ++row) {
            const double factor = matrix[row][column] / matrix[column][column];
            for (std::size_t k = column; k < count; ++k)
                matrix[row][k] -= factor * matrix[column][k];
            right[row] -= factor * right[column];
        }
    }
    Terms solution{};
    for (std::size_t row = count; row-- > 0;) {
        double rest = right[row];
        for (std::size_t k = row + 1; k < count; ++k)
            rest -= matrix[row][k] * solution[k];
        solution[row] = rest / matrix[row][row];
    }
    return solution;
}

/// From terms of the scaled inputs to terms of the inputs themselves.
Terms expanded(const Terms& scaled, const Scaling& x, const Scaling& y)
{
    const double b = scaled[1] / x.unit;
    const double c = scaled[2] / y.unit;
    const double d = scaled[3] / (x.unit * x.unit);
    const double e = scaled[4] / (x.unit * y.unit);
    const double f = scaled[5] / (y.unit * y.unit);
    return {scaled[0] - b * x.mean - c * y.mean + d * x.mean * x.mean + e * x.mean * y.mean
                + f * y.mean * y.mean,
            b - 2 * d * x.mean - e * y.mean,
            c - e * x.mean - 2 * f * y.mean,
            d,
            e,
            f};
}

Polynomial leastSquares(std::span<const Sample> samples, int level)
{
    const std::size_t count = level == 1 ? 3 : 6;
    const Scaling scaleX = scalingOf(samples, &Sample::x);
    const Scaling scaleY = scalingOf(samples, &Sample::y);
    std::array<Terms, maximumTerms> matrix{};
    Terms right{};
    for (const Sample& sample : samples) {
        const Terms terms = termsAt(scaleX(sample.x), scaleY(sample.y));
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t k = 0; k < count; ++k)
                matrix[i][k] += terms[i] * terms[k];
            right[i] += terms[i] * sample.value;
        }
    }
    Polynomial result;
    const auto solution = solve(matrix, right, count);
    if (!solution)
        return result;
    result.level = level;
    const Terms plain = expanded(*solution, scaleX, scaleY);
    std::copy(plain.begin(), plain.end(), result.coefficients.begin());
    return result;
}

GeoPolynomials throughTwoPoints(const ReferencePoint& first, const ReferencePoint& second)
{
    // WPY and PWY begin at the second point's plain value: their intercept is computed with the
    // coefficient of x, still 0, instead of that of y. On purpose, as are the longitudes without
    // phase shift.
    const auto line = [](double constant, double slopeX, double slopeY) {
        const bool sound = std::isfinite(constant + slopeX + slopeY);
        return sound ? Polynomial{1, {constant, slopeX, slopeY}} : Polynomial{};
    };
    const auto alongX = [&](double slope, double x, double value) {
        return line(value - slope * x, slope, 0);
    };
    const auto alongY = [&](double slope, double value) { return line(value, 0, slope); };
    const double dx = second.x - first.x;
    const double dy = second.y - first.y;
    const double dLatitude = second.latitude - first.latitude;
    const double dLongitude = second.longitude - first.longitude;
    return {.wpx = alongX(dx / dLongitude, second.longitude, second.x),
            .wpy = alongY(dy / dLatitude, second.y),
            .pwx = alongX(dLongitude / dx, second.x, second.longitude),
            .pwy = alongY(dLatitude / dy, second.latitude)};
}
} // namespace

double Polynomial::at(double x, double y) const
{
    if (level < 1 || level > 5)
        return 0;
    const auto& c = coefficients;
    double sum = c[0] + c[1] * x + c[2] * y;
    if (level >= 2)
        sum += c[3] * x * x + c[4] * x * y + c[5] * y * y;
    if (level >= 3)
        sum += c[6] * x * x * x + c[7] * x * x * y + c[8] * x * y * y + c[9] * y * y * y;
    // The two highest powers are of y alone: that is how the format defines them.
    if (level >= 4)
        sum += c[10] * y * y * y * y;
    if (level >= 5)
        sum += c[11] * y * y * y * y * y;
    return sum;
}

double shiftedLongitude(double longitude, double phaseShift)
{
    const double shifted = longitude + phaseShift;
    return shifted > 180 ? shifted - 360 : shifted;
}

GeoPolynomials fitPolynomials(std::span<const ReferencePoint> points, double phaseShift)
{
    if (points.size() < 2)
        return {};
    if (points.size() == 2)
        return throughTwoPoints(points[0], points[1]);

    const int level = points.size() < 9 ? 1 : 2;
    std::vector<Sample> samples(points.size());
    const auto fit = [&](auto&& sampleOf) {
        std::transform(points.begin(), points.end(), samples.begin(), sampleOf);
        return leastSquares(samples, level);
    };
    const auto longitude = [&](const ReferencePoint& point) {
        return shiftedLongitude(point.longitude, phaseShift);
    };
    using Reference = const ReferencePoint&;
    return {
        .wpx = fit([&](Reference p) {
            return Sample{longitude(p), p.latitude, p.x};
        }),
        .wpy = fit([&](Reference p) {
            return Sample{longitude(p), p.latitude, p.y};
        }),
        .pwx = fit([&](Reference p) {
            return Sample{p.x, p.y, longitude(p)};
        }),
        .pwy = fit([&](Reference p) {
            return Sample{p.x, p.y, p.latitude};
        }),
    };
}

} // namespace kelvox
