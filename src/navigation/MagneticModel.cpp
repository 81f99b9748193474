#include "navigation/MagneticModel.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr double equatorialRadius = 6378.137; // km, WGS-84
constexpr double flattening = 1 / 298.257223563;
constexpr double referenceRadius = 6371.2; // km, geomagnetic

/// Schmidt semi-normalised Legendre functions of the colatitude, and their derivatives by it.
struct Legendre {
    static constexpr std::size_t side = magneticModelDegree + 1;
    std::array<std::array<double, side>, side> value{};
    std::array<std::array<double, side>, side> slope{};

    Legendre(double cosine, double sine, int degree)
    {
        value[0][0] = 1;
        for (int n = 1; n <= degree; ++n) {
            for (int m = 0; m < n; ++m)
                recur(n, m, cosine, sine);
            const double factor = n == 1 ? 1 : std::sqrt((2.0 * n - 1) / (2.0 * n));
            value[n][n] = factor * sine * value[n - 1][n - 1];
            slope[n][n] = factor * (sine * slope[n - 1][n - 1] + cosine * value[n - 1][n - 1]);
        }
    }

private:
    void recur(int n, int m, double cosine, double sine)
    {
        const double norm = std::sqrt(static_cast<double>(n * n - m * m));
        const double below =
            n - 1 > m ? std::sqrt(static_cast<double>((n - 1) * (n - 1) - m * m)) : 0;
        const double olderValue = n > 1 ? value[n - 2][m] : 0;
        const double olderSlope = n > 1 ? slope[n - 2][m] : 0;
        const double step = 2.0 * n - 1;
        value[n][m] = (step * cosine * value[n - 1][m] - below * olderValue) / norm;
        slope[n][m] =
            (step * (cosine * slope[n - 1][m] - sine * value[n - 1][m]) - below * olderSlope)
            / norm;
    }
};
} // namespace

const MagneticCoefficients& magneticCoefficientsFor(double decimalYear)
{
    return decimalYear >= magneticCoefficients2025.epoch ? magneticCoefficients2025
                                                         : magneticCoefficients2020;
}

double MagneticField::declination() const
{
    return std::atan2(east, north);
}

MagneticField magneticField(double decimalYear, double latitude, double longitude,
                            double heightKilometres, int degree)
{
    degree = std::clamp(degree, 1, magneticModelDegree);
    const auto& coefficients = magneticCoefficientsFor(decimalYear);
    const double years = decimalYear - coefficients.epoch;

    constexpr double eccentricity2 = flattening * (2 - flattening);
    const double sinLatitude = std::sin(latitude);
    const double curvature =
        equatorialRadius / std::sqrt(1 - eccentricity2 * sinLatitude * sinLatitude);
    const double across = (curvature + heightKilometres) * std::cos(latitude);
    const double along = (curvature * (1 - eccentricity2) + heightKilometres) * sinLatitude;
    const double radius = std::hypot(across, along);
    const double geocentricLatitude = std::asin(along / radius);
    const double cosine = along / radius; // of the colatitude
    const double sine = std::max(across / radius, 1e-10); // keeps P/s finite at the poles

    const Legendre legendre(cosine, sine, degree);
    MagneticField field; // geocentric until turned below
    double power = (referenceRadius / radius) * (referenceRadius / radius);
    for (int n = 1; n <= degree; ++n) {
        power *= referenceRadius / radius;
        for (int m = 0; m <= n; ++m) {
            const auto& term = coefficients.term(n, m);
            const double g = term.g + years * term.gRate;
            const double h = term.h + years * term.hRate;
            const double cosOrder = std::cos(m * longitude);
            const double sinOrder = std::sin(m * longitude);
            const double inPhase = g * cosOrder + h * sinOrder;
            field.north += power * inPhase * legendre.slope[n][m];
            field.east += power * m * (g * sinOrder - h * cosOrder) * legendre.value[n][m] / sine;
            field.down -= power * (n + 1) * inPhase * legendre.value[n][m];
        }
    }
    const double turn = geocentricLatitude - latitude;
    return {.north = field.north * std::cos(turn) - field.down * std::sin(turn),
            .east = field.east,
            .down = field.north * std::sin(turn) + field.down * std::cos(turn)};
}

int julianDayNumber(int year, int month, int day)
{
    const int shift = (month - 14) / 12; // truncates towards zero, as the formula asks
    return 1461 * (year + 4800 + shift) / 4 + 367 * (month - 2 - 12 * shift) / 12
        - 3 * ((year + 4900 + shift) / 100) / 4 + day - 32075;
}

double decimalYear(int julianDay)
{
    return 2000 + (julianDay - 2451545) / 365.25;
}

} // namespace kelvox
