#include "demo/DemoCharts.h"

#include "demo/DemoScene.h"
#include "s57/ISO8211Wrap.h"

namespace kelvox {

namespace {
std::vector<DemoChart> charts(int size)
{
    std::vector<DemoChart> all{
        {"KV1K0001",
         1,
         700'000,
         {-112'000, -110'000, 112'000, 50'000},
         400,
         {-100, -50, -20, -10, 4},
         9'000},
        {"KV3K0010",
         3,
         180'000,
         {-34'560, -38'880, 34'560, 12'960},
         90,
         {-100, -50, -20, -10, -5, 0, 4},
         2'000},
        {"KV4K0101",
         4,
         50'000,
         {-14'000, -12'500, 14'000, 7'500},
         25,
         {-50, -20, -10, -5, -2, 0, 4},
         560},
        {"KV5K1011", 5, 12'000, {-4'800, -3'000, 0, 3'400}, 8, {-50, -20, -10, -5, -2, 0, 4}, 130},
        {"KV5K1012", 5, 12'000, {0, -3'000, 4'800, 3'400}, 8, {-50, -20, -10, -5, -2, 0, 4}, 130},
    };
    (void)size;
    return all;
}
} // namespace

Result<void> DemoCharts::write(const std::filesystem::path& folder, int size)
{
    for (const DemoChart& chart : charts(size)) {
        DemoCell cell(chart);
        const auto works = demoWorks(chart.usageBand);
        if (!cell.addGround(works))
            return failure(Error::Code::OutOfRange, chart.name + ": its contours contradict");
        cell.addSoundings(works);
        addSeaways(cell);
        addDangers(cell);
        addAids(cell);
        addLand(cell);
        addHarbour(cell);
        addNames(cell);
        if (auto saved = cell.writer().save(folder); !saved)
            return saved;
    }
    ISO8211Wrap::Catalog catalog;
    const auto saved = ISO8211Wrap::save(folder / "CATALOG.031", catalog);
    if (!saved)
        return tl::unexpected(saved.error());
    if (!saved->empty())
        return tl::unexpected(saved->front());
    return {};
}

} // namespace kelvox
