// kelvox-demo: writes the demo charts.

#include "demo/DemoCharts.h"

#include <CLI/CLI.hpp>

#include <cstdio>

int main(int argc, char** argv)
{
    CLI::App app("Writes the demo charts: an invented coast as S-57 cells.", "kelvox-demo");
    std::string folder;
    int size = 1;
    app.add_option("--size", size, "1 for usual charts, more for larger ones to measure speed with")
        ->check(CLI::Range(1, kelvox::DemoCharts::largest));
    int cells = 0;
    app.add_option("--cells", cells, "Instead: so many small cells side by side and an overview")
        ->check(CLI::Range(1, kelvox::DemoCharts::mostCells));
    app.add_option("folder", folder, "Where to write them")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    const auto written = cells > 0 ? kelvox::DemoCharts::writeGrid(folder, cells)
                                   : kelvox::DemoCharts::write(folder, size);
    if (!written) {
        std::fprintf(stderr, "kelvox-demo: %s\n", written.error().message.c_str());
        return 1;
    }
    return 0;
}
