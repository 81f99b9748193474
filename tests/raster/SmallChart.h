#pragma once

#include "base/File.h"
#include "raster/BSBChart.h"
#include "raster/KapWriter.h"
#include "support/TemporaryFolder.h"

#include <string>

namespace kelvox {

/// Ten pixels a degree, 20 E to 30 E and 60 N down to 50 N, 100 x 100 pixels, linear; black is
/// colour 1, white 2, red 3, blue 4.
inline KapDescription smallChart()
{
    KapDescription chart;
    chart.name = "SMALL";
    chart.width = chart.height = 100;
    chart.colors = {{}, {0, 0, 0}, {255, 255, 255}, {255, 0, 0}, {0, 0, 255}};
    chart.referencePoints = {
        {0, 0, 60, 20}, {99, 0, 60, 29.9}, {99, 99, 50.1, 29.9}, {0, 99, 50.1, 20}};
    return chart;
}

inline void white(int /*row*/, std::span<std::uint8_t> colors)
{
    std::fill(colors.begin(), colors.end(), std::uint8_t{2});
}

/// A chart written to a folder of its own and opened.
struct OpenedChart {
    explicit OpenedChart(const KapDescription& description, const KapRow& row = white,
                         const std::string& name = "chart.kap")
        : OpenedChart(writeKap(description, row), name)
    {
    }
    explicit OpenedChart(const std::string& bytes, const std::string& name = "chart.kap")
    {
        const auto path = folder.path() / name;
        if (writeFileAtomically(path, bytes))
            result = chart.loadHeader(path);
        if (result)
            result = chart.loadChart();
    }
    TemporaryFolder folder;
    BSBChart chart;
    Result<void> result = failure(Error::Code::CannotOpen, "not written");
};

} // namespace kelvox
