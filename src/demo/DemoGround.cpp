#include "demo/DemoGround.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace kelvox {

namespace {
constexpr double highest = 30; ///< metres; the land's own forms are not modelled
constexpr Position origin{.longitude = -27.4, .latitude = 47.6};
// Units of 1e-7 degrees in a metre: 60 nautical miles of 1852 m make a degree of latitude, and
// cos 47.6 degrees = 0.674302 a degree of longitude shorter.
constexpr double unitsNorth = 10'000'000.0 / (60 * 1852);
constexpr double unitsEast = unitsNorth / 0.674302;

std::uint32_t hash(int x, int y, unsigned seed)
{
    std::uint32_t value = static_cast<std::uint32_t>(x) * 374761393U
        + static_cast<std::uint32_t>(y) * 668265263U + seed * 2246822519U;
    value = (value ^ (value >> 13U)) * 1274126177U;
    value = (value ^ (value >> 15U)) * 2654435761U;
    return value ^ (value >> 16U);
}

/// Gradient noise after Perlin, about -0.7..0.7.
double noise(double x, double y, unsigned seed)
{
    static constexpr std::array<Point, 8> gradients{{{1, 0},
                                                     {0.7071, 0.7071},
                                                     {0, 1},
                                                     {-0.7071, 0.7071},
                                                     {-1, 0},
                                                     {-0.7071, -0.7071},
                                                     {0, -1},
                                                     {0.7071, -0.7071}}};
    const double floorX = std::floor(x);
    const double floorY = std::floor(y);
    const int column = static_cast<int>(floorX);
    const int row = static_cast<int>(floorY);
    const double fx = x - floorX;
    const double fy = y - floorY;
    const auto corner = [&](int dx, int dy) {
        const Point g = gradients[hash(column + dx, row + dy, seed) & 7U];
        return g.x * (fx - dx) + g.y * (fy - dy);
    };
    const auto fade = [](double t) { return t * t * t * (t * (t * 6 - 15) + 10); };
    const double sx = fade(fx);
    const double bottom = corner(0, 0) + sx * (corner(1, 0) - corner(0, 0));
    const double top = corner(0, 1) + sx * (corner(1, 1) - corner(0, 1));
    return bottom + fade(fy) * (top - bottom);
}

double smooth(double from, double to, double x)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// The greater of two, rounded off over a width where they come near each other.
double blended(double a, double b, double width)
{
    const double h = std::max(width - std::abs(a - b), 0.0) / width;
    return std::max(a, b) + h * h * width / 4;
}

double distance(Point a, Point b)
{
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

/// An island, or shallow ground from which the fractal raises skerries.
struct Island {
    Point center;
    double length = 0; ///< half axes in metres
    double width = 0;
    Point along; ///< unit vector of the longer axis
    double top = 0; ///< highest value of the shore distance; negative for shallow ground
};
constexpr std::array<Island, 10> islands{{
    {{-9'000, -6'300}, 2'300, 1'000, {0.94, 0.342}, 900}, // Great Sorrel
    {{-12'100, -7'900}, 800, 520, {0.8, -0.6}, 420}, // Little Sorrel
    {{3'600, -8'300}, 210, 150, {0.8, 0.6}, 150}, // Hern Rock
    {{6'400, -6'300}, 2'600, 1'500, {0.96, -0.28}, -200}, // The Tithings
    {{-2'500, -1'750}, 260, 160, {0.6, 0.8}, 120}, // Monk's Isle
    {{21'500, -9'500}, 3'100, 1'700, {0.8, 0.6}, 1'300}, // Carrow
    {{-27'000, -9'000}, 3'600, 1'500, {0.28, 0.96}, 1'100}, // Long Drummel
    {{-66'000, -34'000}, 15'000, 8'000, {0.94, 0.342}, 6'000}, // Brannay
    {{58'000, -46'000}, 11'000, 7'000, {0.8, -0.6}, -700}, // The Farrows
    {{14'000, -62'000}, 9'000, 4'700, {1, 0}, -2'900}, // Lantern Bank
}};

/// Where the fractal is held back, so that what was built there keeps its place.
struct Calm {
    Point center;
    double inner = 0;
    double outer = 0;
    double least = 0; ///< factor inside
};
constexpr std::array<Calm, 5> calms{{
    {{700, 6'300}, 2'600, 6'000, 0.08},
    {{200, 400}, 2'300, 7'500, 0.1},
    {{3'600, -8'300}, 500, 1'900, 0.06},
    {{-2'500, -1'750}, 500, 1'200, 0.05},
    {{-300, -4'000}, 1'200, 5'000, 0.25},
}};

/// The river from its source to the sea: place and half the width.
struct Reach {
    Point place;
    double halfWidth = 0;
};
constexpr std::array<Reach, 7> river{{{{900, 8'300}, 90},
                                      {{1'000, 6'600}, 190},
                                      {{100, 4'500}, 280},
                                      {{-330, 2'700}, 450},
                                      {{-40, 1'200}, 680},
                                      {{0, -200}, 1'150},
                                      {{-500, -3'500}, 2'600}}};

/// Metres inside the water of the river, negative outside.
double insideRiver(Point p)
{
    double best = -1e9;
    for (std::size_t i = 0; i + 1 < river.size(); ++i) {
        const Point a = river[i].place;
        const Point ab = river[i + 1].place - a;
        const Point ap = p - a;
        const double t =
            std::clamp((ap.x * ab.x + ap.y * ab.y) / (ab.x * ab.x + ab.y * ab.y), 0.0, 1.0);
        const double halfWidth =
            river[i].halfWidth + t * (river[i + 1].halfWidth - river[i].halfWidth);
        best = std::max(best, halfWidth - distance(p, a + ab * t));
    }
    return best;
}

/// Depth below datum over the distance from the shore, in metres, joined by straight lines.
constexpr std::array<Point, 9> seabed{{{0, -4},
                                       {70, 0},
                                       {190, 2},
                                       {420, 5},
                                       {900, 10},
                                       {2'300, 20},
                                       {10'000, 50},
                                       {32'000, 120},
                                       {90'000, 260}}};

double seabedDepth(double offshore)
{
    for (std::size_t i = 1; i < seabed.size(); ++i)
        if (offshore < seabed[i].x || i + 1 == seabed.size()) {
            const double t = (offshore - seabed[i - 1].x) / (seabed[i].x - seabed[i - 1].x);
            return seabed[i - 1].y + t * (seabed[i].y - seabed[i - 1].y);
        }
    return 0;
}
} // namespace

double demoRandom(int x, int y, unsigned seed)
{
    return static_cast<double>(hash(x, y, seed) >> 8U) / 16'777'216.0;
}

double DemoGround::fractal(Point p, double wave, double shortest, double gain, unsigned seed) const
{
    double sum = 0;
    double amplitude = 1;
    p = {0.8 * p.x + 0.6 * p.y, -0.6 * p.x + 0.8 * p.y};
    for (unsigned octave = 0; wave > std::max(m_detail, shortest); ++octave) {
        // The last octave fades in, so that charts of different detail differ by small forms only.
        const double share = std::min(1.0, wave / m_detail - 1);
        sum += share * amplitude * noise(p.x / wave, p.y / wave, seed + octave);
        wave *= 0.47;
        p = {0.8 * p.x - 0.6 * p.y, 0.6 * p.x + 0.8 * p.y}; // else the lattice shows
        amplitude *= gain;
    }
    return sum;
}

double DemoGround::shore(Point p)
{
    // The mainland lies to the north, its coast receding in the bay.
    const double bay = 1 / (1 + (p.x / 3'300) * (p.x / 3'300));
    double inland = p.y - (-2'300 + 3'900 * bay * bay + 0.05 * p.x);
    inland = -blended(-inland, insideRiver(p), 500);
    for (const Island& island : islands) {
        const Point d = p - island.center;
        const double along = (d.x * island.along.x + d.y * island.along.y) / island.length;
        const double across = (d.y * island.along.x - d.x * island.along.y) / island.width;
        const double q = std::sqrt(along * along + across * across);
        // A cone that ends in the slope of the seabed.
        const double height = q < 1 ? island.top * (1 - q) : (1 - q) * island.width;
        const double at =
            island.top > 0 ? height : island.top - std::max(0.0, q - 0.7) * island.width;
        inland = blended(inland, at, 0.25 * island.width);
    }
    return inland;
}

double DemoGround::elevation(Point p) const
{
    double calm = 1;
    for (const Calm& one : calms) {
        const double d = distance(p, one.center);
        calm = std::min(calm, one.least + (1 - one.least) * smooth(one.inner, one.outer, d));
    }
    // Bending the plane first takes the ruler out of the shapes.
    const double bend = 300 + 900 * calm;
    const Point bent = p
        + Point{noise(p.x / 3'100, p.y / 3'100, 91), noise(p.x / 3'100, p.y / 3'100, 92)} * bend
        + Point{noise(p.x / 900, p.y / 900, 93), noise(p.x / 900, p.y / 900, 94)}
            * (90 + 220 * calm);
    double inland = shore(bent);
    const double wide = smooth(8'000, 30'000, distance(p, {0, 0}));
    if (inland > 3'600 + 9'000 * wide)
        return highest; // no inlet reaches here
    inland += calm * 3'300 * fractal(p, 8'300, 700, 0.6, 1);
    if (wide > 0)
        inland += calm * 10'500 * wide * fractal(p, 47'000, 9'000, 0.62, 21);
    if (inland > 1'200)
        return highest;
    inland += (0.5 + 0.5 * calm) * 430 * fractal(p, 1'500, 0, 0.58, 31);
    if (inland >= 0)
        return std::min(highWater + inland * 0.035, highest);
    // Flats here, steep-to there.
    double offshore =
        -inland + std::min(-inland, 700.0) * 1.5 * noise(p.x / 2'300, p.y / 2'300, 61);
    offshore *= 0.4 + 0.6 * smooth(900, 6'000, distance(p, {0, 700})); // the river's silt
    const double plain = seabedDepth(offshore);
    const double relief =
        fractal(p, 5'200, 0, 0.55, 40) + 2.2 * wide * noise(p.x / 17'000, p.y / 17'000, 62);
    const double roughness = std::clamp((plain + 1) * 0.5, 0.0, 10.0) * (0.35 + 0.65 * calm);
    // The seabed stays below high water: the coastline is the fractal's alone.
    return std::min(-(plain + roughness * relief), highWater * 0.98);
}

Position DemoGround::position(Point place)
{
    constexpr double units = 10'000'000;
    return {(std::floor(origin.longitude * units + 0.5) + std::floor(place.x * unitsEast + 0.5))
                / units,
            (std::floor(origin.latitude * units + 0.5) + std::floor(place.y * unitsNorth + 0.5))
                / units};
}

} // namespace kelvox
