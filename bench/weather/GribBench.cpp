// Decoding and drawing weather. With KELVOX_DATA the real files are used too; where ecCodes is
// installed it decodes the same bytes in the same run, for the ratio.

#include "base/File.h"
#include "support/GribWriter.h"
#include "support/RealData.h"
#include "weather/GribContours.h"
#include "weather/GribMarkers.h"

#include <benchmark/benchmark.h>

#ifdef KELVOX_WITH_ECCODES
#include <eccodes.h>
#endif

#include <cmath>

namespace {
using namespace kelvox;

/// Half-degree winds and pressure around the earth.
std::string syntheticFile()
{
    std::string bytes;
    for (const int parameter : {33, 34, 2}) {
        GribSpec spec{.parameter = parameter,
                      .columns = 720,
                      .rows = 361,
                      .latitude = 90000,
                      .longitude = 0,
                      .lastLatitude = -90000,
                      .lastLongitude = 359500,
                      .decimalScale = parameter == 2 ? 0 : 1,
                      .bits = 13,
                      .values = {}};
        for (int row = 0; row < 361; ++row)
            for (int column = 0; column < 720; ++column) {
                const double wave = std::sin(row / 20.0) * std::cos(column * 3.14159265 / 60);
                spec.values.emplace_back(parameter == 2 ? 101300 + 2500 * wave : 15 * wave);
            }
        bytes += GribWriter::message(spec);
    }
    return bytes;
}

/// The bytes of the given file below KELVOX_DATA, or of the synthetic one for an empty name.
std::string fileBytes(const char* name)
{
    if (*name == '\0')
        return syntheticFile();
    const auto path = realData(name);
    return path ? readFile(*path).value_or("") : "";
}

void decode(benchmark::State& state, const char* name)
{
    const std::string bytes = fileBytes(name);
    if (bytes.empty()) {
        state.SkipWithError("not below KELVOX_DATA");
        return;
    }
    const std::span octets(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::int64_t points = 0;
    for (auto _ : state) {
        std::size_t offset = 0;
        while (const auto message = readGribMessage(octets, offset)) {
            if (!*message)
                continue;
            const auto values = unpackGribValues(**message);
            benchmark::DoNotOptimize(values->data());
            points += static_cast<std::int64_t>(values->size());
        }
    }
    state.SetItemsProcessed(points);
}

#ifdef KELVOX_WITH_ECCODES
void decodeWithEcCodes(benchmark::State& state, const char* name)
{
    const std::string bytes = fileBytes(name);
    if (bytes.empty()) {
        state.SkipWithError("not below KELVOX_DATA");
        return;
    }
    const std::span octets(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::int64_t points = 0;
    for (auto _ : state) {
        std::size_t offset = 0;
        // Our reader only finds the messages; the time of that counts against ecCodes, but it is
        // under a hundredth.
        while (const auto message = readGribMessage(octets, offset)) {
            if (!*message)
                continue;
            const std::size_t start = (*message)->offset;
            codes_handle* handle =
                codes_handle_new_from_message(nullptr, bytes.data() + start, offset - start);
            std::size_t count = 0;
            codes_get_size(handle, "values", &count);
            std::vector<double> values(count);
            codes_get_double_array(handle, "values", values.data(), &count);
            benchmark::DoNotOptimize(values.data());
            codes_handle_delete(handle);
            points += static_cast<std::int64_t>(count);
        }
    }
    state.SetItemsProcessed(points);
}
BENCHMARK_CAPTURE(decodeWithEcCodes, halfDegreeGlobe, "");
BENCHMARK_CAPTURE(decodeWithEcCodes, sailorsForecast, "grib/20190823_071554_.grb");
BENCHMARK_CAPTURE(decodeWithEcCodes, globe, "grib/gfs_global_2p5_f072_ed1.grb");
BENCHMARK_CAPTURE(decodeWithEcCodes, currentsAndWaves, "grib/bug3246.grb");
#endif
BENCHMARK_CAPTURE(decode, halfDegreeGlobe, "");
BENCHMARK_CAPTURE(decode, sailorsForecast, "grib/20190823_071554_.grb");
BENCHMARK_CAPTURE(decode, globe, "grib/gfs_global_2p5_f072_ed1.grb");
BENCHMARK_CAPTURE(decode, currentsAndWaves, "grib/bug3246.grb");

/// A view of 1920 x 1080 points; the argument is degrees of longitude across it.
GribView view(double degrees)
{
    const double scale = 1920 / degrees;
    return {.positionToPoint =
                [scale](Position p) {
                    return Point{p.longitude,
                                 57.29578 * std::asinh(std::tan(p.latitude / 57.29578))}
                    * scale;
                },
            .pointToPosition =
                [scale](Point p) {
                    return Position{p.x / scale,
                                    57.29578 * std::atan(std::sinh(p.y / scale / 57.29578))};
                },
            .visible = {-960, -540, 960, 540}};
}

template <typename Draw> void draw(benchmark::State& state, Draw&& work)
{
    const UnitsModel units;
    GribModel model(units);
    (void)model.loadBytes(syntheticFile(), "synthetic");
    const GribView shown = view(static_cast<double>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(work(model, shown));
}
void drawWind(benchmark::State& state)
{
    draw(state, [](const auto& model, const auto& v) { return drawGribWind(model, v, {}); });
}
void drawContours(benchmark::State& state)
{
    draw(state, [](const auto& model, const auto& v) { return drawGribContours(model, v, {}); });
}
BENCHMARK(drawWind)->Arg(360)->Arg(40)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(drawContours)->Arg(360)->Arg(40)->Arg(2)->Unit(benchmark::kMicrosecond);
} // namespace

BENCHMARK_MAIN();
