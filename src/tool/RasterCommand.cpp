// raster: what a raster chart's header says, and converting between its pixels and positions.

#include "tool/Command.h"
#include "tool/RasterInfo.h"

#include "raster/BSBChart.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace kelvox {

namespace {
struct RasterOptions {
    std::string file;
    std::vector<double> pixel; ///< x, y downward from the upper left corner
    std::vector<double> position; ///< latitude, longitude
};

void runRaster(Tool& tool, const RasterOptions& options)
{
    BSBChart chart;
    if (const auto read = chart.loadHeader(options.file); !read) {
        tool.fail(read.error().message);
        return;
    }
    if (options.pixel.empty() && options.position.empty()) {
        std::printf("%s\n", rasterInfo(chart).dump().c_str());
        return;
    }
    if (!chart.hasCalibration()) {
        tool.fail(options.file + ": the header does not say where the chart lies");
        return;
    }
    const double bottomRow = chart.size().height - 1;
    if (!options.pixel.empty()) {
        const Position position =
            chart.pointToPosition({options.pixel[0], bottomRow - options.pixel[1]});
        std::printf("%.7f %.7f\n", position.latitude, position.longitude);
        return;
    }
    const Point point =
        chart.positionToPoint({.longitude = options.position[1], .latitude = options.position[0]});
    if (std::isfinite(point.x) && std::isfinite(point.y))
        std::printf("%.3f %.3f\n", point.x, bottomRow - point.y);
    else
        tool.fail(options.file + ": the position is beyond the chart's polynomials");
}
} // namespace

void addRasterCommand(Tool& tool)
{
    const auto options = std::make_shared<RasterOptions>();
    auto* command = tool.command(
        "raster", "Converts between pixels and positions of a raster chart, or describes it.");
    command->add_option("FILE", options->file, "Chart in BSB/KAP form")->required();
    auto* pixel = command
                      ->add_option("--pixel", options->pixel,
                                   "X,Y from the upper left corner; prints latitude longitude")
                      ->delimiter(',')
                      ->expected(2);
    command
        ->add_option("--position", options->position,
                     "LAT,LON in degrees; prints x y from the upper left corner")
        ->delimiter(',')
        ->expected(2)
        ->excludes(pixel);
    command->callback([&tool, options] { runRaster(tool, *options); });
}

} // namespace kelvox
