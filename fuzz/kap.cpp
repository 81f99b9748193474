// A raster chart from its first byte to a drawn picture.

#include "raster/RasterRenderer.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    const int file = ::memfd_create("chart", 0);
    if (file < 0 || ::write(file, data, size) != static_cast<ssize_t>(size))
        return 0;
    BSBChart chart("/proc/self/fd/" + std::to_string(file));
    if (chart.loadChart(1 << 20)) {
        constexpr int side = 96;
        std::vector<std::uint32_t> pixels(std::size_t{side} * side);
        const ArgbImage image{pixels, side, side, side};
        const double height = chart.size().height;
        for (const double reduction : {std::max(chart.size().width, height) / side, 1.3, 0.4}) {
            std::fill(pixels.begin(), pixels.end(), 0U);
            RasterRenderer::draw(
                chart,
                [&](Point p) {
                    return Point{p.x * reduction, height - p.y * reduction};
                },
                PaletteScheme::Dusk, RasterRenderer::Borders::Respect, image);
        }
        std::fill(pixels.begin(), pixels.end(), 0U);
        const Position origin = chart.originOnGPSPosition();
        const Position extent = chart.extentOnGPSPosition();
        RasterRenderer::drawByPosition(
            chart,
            [&](Point p) {
                const auto between = [](double a, double b, double share) {
                    return a + (b - a) * share / side;
                };
                return Position{.longitude = between(origin.longitude, extent.longitude, p.x),
                                .latitude = between(extent.latitude, origin.latitude, p.y)};
            },
            PaletteScheme::Night, RasterRenderer::Borders::Ignore, image);
        chart.setRotate(30);
        (void)chart.rotatedPoint({1, 1});
        (void)chart.contains(origin);
    }
    ::close(file);
    return 0;
}
