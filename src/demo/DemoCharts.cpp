#include "demo/DemoCharts.h"

#include "demo/DemoScene.h"
#include "s57/ISO8211Wrap.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

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
    // Larger charts: contours every few metres, soundings in proportion, and a finer lattice where
    // the scale is large.
    for (DemoChart& chart : all) {
        if (size == 1)
            break;
        const int step = chart.usageBand == 1 ? 5 : chart.usageBand == 3 ? 2 : 1;
        chart.levels.clear();
        for (int depth = 100; depth >= 0; depth -= step) {
            chart.levels.push_back(-depth);
            if (size >= 4 && chart.usageBand == 4 && depth > 0 && depth <= 25)
                chart.levels.push_back(0.5 - depth);
        }
        chart.levels.push_back(DemoGround::highWater);
        for (int finer = size; finer > 1 && chart.usageBand >= 4; finer /= 2)
            chart.spacing /= 2;
        chart.soundingSpacing /= 1.25 * size;
    }
    return all;
}

Result<DemoCell> draw(const DemoChart& chart)
{
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
    return cell;
}

/// A month later: a buoy is gone, a wreck is found, a light stands elsewhere, a contour was
/// surveyed anew, a jetty was lengthened.
S57CellWriter updateOf(const DemoCell& cell)
{
    S57CellWriter update = cell.writer().update("20260218");
    if (const auto buoy = cell.named("Kelmouth 12"))
        for (const auto feature : cell.withEquipment(*buoy))
            update.removeFeature(feature);
    update.addPoint("WRECKS", DemoGround::position({-1'480, -2'020}),
                    {{"CATWRK", "2"},
                     {"WATLEV", "3"},
                     {"VALSOU", "4.6"},
                     {"QUASOU", "6"},
                     {"OBJNAM", "Harvest Moon"}});
    if (const auto head = cell.named("West Breakwater Head")) {
        // All that stands there shares the node.
        update.changePlaces(update.isolatedNode(DemoGround::position({-333, -420})), {3, 1},
                            {DemoGround::position({-352, -417})});
        update.changeAttributes(cell.withEquipment(*head).back(),
                                {{"SIGPER", "10"}, {"VALNMR", "9"}});
        const auto horn = update.addPoint("FOGSIG", DemoGround::position({-352, -417}),
                                          {{"CATFOG", "10"}, {"SIGGRP", "(2)"}, {"SIGPER", "30"}});
        update.changeRelations(
            *head, {1, static_cast<std::uint32_t>(cell.withEquipment(*head).size())}, {horn});
    }
    // Seven points in the middle of one contour give way to a straight run; another gets one more.
    const auto straight = [](const std::vector<S57Place>& places, std::size_t first,
                             std::size_t count, std::size_t steps) {
        const S57Place from = places[first - 1];
        const S57Place to = places[first + count];
        S57CellWriter::Line line;
        for (std::size_t i = 1; i <= steps; ++i) {
            const double share = static_cast<double>(i) / static_cast<double>(steps + 1);
            const auto between = [&](std::int32_t a, std::int32_t b) {
                return (a + share * (double{1} * b - a)) / S57CellWriter::coordinateMultiplier;
            };
            line.push_back({between(from.x, to.x), between(from.y, to.y)});
        }
        return line;
    };
    // An edge's record leaves out its first node, and its points count from 1: the same number.
    if (const auto* contour = cell.contourEdge(-5, 60)) {
        const std::size_t middle = contour->places.size() / 2;
        update.changePlaces(contour->edge, {3, static_cast<std::uint32_t>(middle)},
                            straight(contour->places, middle, 7, 7));
    }
    if (const auto* contour = cell.contourEdge(-10, 60)) {
        const std::size_t middle = contour->places.size() / 2;
        update.changePlaces(contour->edge, {1, static_cast<std::uint32_t>(middle)},
                            straight(contour->places, middle, 0, 1));
    }
    if (const auto jetty = cell.named("Town Steps"))
        update.changeSpatials(*jetty, {1, 2},
                              update.edges({DemoGround::position({-540, 1'310}),
                                            DemoGround::position({-505, 1'290})}));
    return update;
}
} // namespace

Result<void> DemoCharts::write(const std::filesystem::path& folder, int size)
{
    for (const DemoChart& chart : charts(std::clamp(size, 1, largest))) {
        const auto cell = draw(chart);
        if (!cell)
            return tl::unexpected(cell.error());
        if (auto saved = cell->writer().save(folder); !saved)
            return saved;
        if (chart.name == updatedChart)
            if (auto saved = updateOf(*cell).save(folder); !saved)
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

Result<void> DemoCharts::writeGrid(const std::filesystem::path& folder, int cells)
{
    constexpr double side = 4'800; // metres
    const int columns = static_cast<int>(std::ceil(std::sqrt(cells)));
    const double west = -side * std::floor(columns / 2.0);
    for (int i = 0; i < std::clamp(cells, 0, mostCells); ++i) {
        const double left = west + side * (i % columns);
        const double bottom = west + side * std::floor(i / columns);
        DemoChart chart{fmt::format("KV5G{:04}", i + 1),
                        5,
                        22'000,
                        {left, bottom, left + side, bottom + side},
                        24,
                        {-50, -20, -10, -5, -2, 0, 4},
                        400};
        const auto cell = draw(chart);
        if (!cell)
            return tl::unexpected(cell.error());
        if (auto saved = cell->writer().save(folder); !saved)
            return saved;
    }
    constexpr double overviewSpacing = 400;
    const double reach = overviewSpacing * std::ceil((side * columns / 2 + side) / overviewSpacing);
    const auto overview = draw({"KV1G0000",
                                1,
                                700'000,
                                {-reach, -reach, reach, reach},
                                overviewSpacing,
                                {-100, -50, -20, -10, 4},
                                9'000});
    if (!overview)
        return tl::unexpected(overview.error());
    return overview->writer().save(folder);
}

} // namespace kelvox
