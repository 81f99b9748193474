#include "library/ChartSelection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

namespace kelvox {
namespace {

using Chart = std::shared_ptr<const ChartRecord>;

Chart chart(const std::string& name, int scale, Rect box, ChartKind kind = ChartKind::Cell)
{
    auto record = std::make_shared<ChartRecord>();
    record->path = "/charts/" + name + (kind == ChartKind::Cell ? ".000" : ".KAP");
    record->kind = kind;
    record->name = name;
    record->scale = scale;
    record->bounds = box;
    record->stamp.size = 1'000'000;
    record->coverage = {{{box.left, box.bottom},
                         {box.right, box.bottom},
                         {box.right, box.top},
                         {box.left, box.top}}};
    return record;
}

std::string names(const ChartRecords& charts)
{
    std::string text;
    for (const auto& record : charts)
        text += (text.empty() ? "" : " ") + record->name;
    return text;
}

std::string select(const ChartRecords& charts, ChartArea view,
                   ChartChoice choice = ChartChoice::Both)
{
    ChartSelection selection;
    selection.update(charts, view, choice);
    return names(selection.cells())
        + (selection.rasters().empty() ? "" : " | " + names(selection.rasters()));
}

/// A coast: two harbours side by side, an approach around them, a coastal and an overview chart.
ChartRecords coast()
{
    return {chart("west", 12'000, {10.0, 59.0, 10.1, 59.1}),
            chart("east", 12'000, {10.1, 59.0, 10.2, 59.1}),
            chart("approach", 50'000, {9.8, 58.8, 10.6, 59.4}),
            chart("coastal", 200'000, {8, 57, 13, 61}),
            chart("overview", 1'500'000, {0, 50, 20, 70})};
}

TEST(ChartSelection, TakesTheBestScaleAndCoarserOnesOnlyWhereItEnds)
{
    const struct {
        const char* why;
        Rect view;
        double scale;
        const char* expected;
    } cases[] = {
        {"inside one harbour", {10.02, 59.02, 10.08, 59.08}, 12'000, "west"},
        {"across the border of two", {10.07, 59.02, 10.13, 59.08}, 12'000, "east west"},
        {"reaching out of the harbours",
         {10.05, 58.95, 10.15, 59.05},
         20'000,
         "east west approach"},
        {"in the middle of nothing finer", {3, 53, 3.1, 53.1}, 12'000, "overview"},
        {"too far out for harbours", {9.9, 58.9, 10.5, 59.3}, 100'000, "approach"},
        {"too far out for the approach", {9, 58, 11, 60}, 400'000, "coastal"},
        {"all of it", {0, 50, 20, 70}, 5'000'000, "overview"},
        {"beyond all charts", {30, 50, 31, 51}, 100'000, ""},
    };
    for (const auto& [why, view, scale, expected] : cases)
        EXPECT_EQ(select(coast(), {view, scale}), expected) << why;
}

TEST(ChartSelection, DetailRunTogetherIsBetterThanNoChart)
{
    const ChartRecords harbours{coast()[0], coast()[1]};
    EXPECT_EQ(select(harbours, {{9, 58, 11, 60}, 400'000}), "east west");
    // A world chart magnified a hundred times says less than a harbour reduced eight times.
    const ChartRecords mixed{coast()[0], chart("world", 10'000'000, {-180, -80, 180, 80})};
    EXPECT_EQ(select(mixed, {{9.5, 58.5, 10.5, 59.5}, 100'000}), "west world");
}

TEST(ChartSelection, MeetsViewsAndChartsAcrossTheDateLine)
{
    const ChartRecords charts{chart("west", 50'000, {179, -20, 180, -19}),
                              chart("east", 50'000, {-180, -20, -179, -19}),
                              chart("across", 200'000, {178, -21, 183, -18})};
    EXPECT_EQ(select(charts, {{179.9, -19.6, 180.1, -19.4}, 50'000}), "east west");
    EXPECT_EQ(select(charts, {{-180.1, -19.6, -179.9, -19.4}, 50'000}), "east west");
    EXPECT_EQ(select(charts, {{-178, -19.6, -177.8, -19.4}, 50'000}), "across");
    EXPECT_EQ(select(charts, {{-177.5, -19.6, -177.4, -19.4}, 50'000}), "across");
}

TEST(ChartSelection, SmallStepsChangeNothing)
{
    ChartSelection selection;
    const auto at = [&](double longitude, double scale) {
        selection.update(coast(), {{longitude, 59.04, longitude + 0.04, 59.06}, scale},
                         ChartChoice::Both);
        return names(selection.cells());
    };
    EXPECT_EQ(at(10.02, 20'000), "west");
    EXPECT_EQ(at(10.058, 20'000), "east west"); // comes near the eastern one
    EXPECT_EQ(at(10.054, 20'000), "east west"); // and stays near it
    EXPECT_EQ(at(10.02, 20'000), "west"); // until it is far away
    EXPECT_EQ(at(10.02, 47'000), "west");
    EXPECT_EQ(at(10.02, 52'000), "west"); // a fresh choice would take the approach
    EXPECT_EQ(at(10.02, 70'000), "approach");
    EXPECT_EQ(at(10.02, 52'000), "approach");
}

TEST(ChartSelection, CoarserChartsStandInWhereTheLimitIsReached)
{
    ChartRecords charts{chart("coastal", 40'000, {0, 0, 10, 10})};
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 40; ++y)
            charts.push_back(chart("h" + std::to_string(x) + "-" + std::to_string(y), 12'000,
                                   {x * 0.1, y * 0.1, x * 0.1 + 0.1, y * 0.1 + 0.1}));
    ChartSelection selection({.charts = 100, .fileBytes = std::uint64_t{1} << 40});
    selection.update(charts, {{0.5, 0.5, 3.5, 3.5}, 40'000}, ChartChoice::Cells);
    EXPECT_EQ(names(selection.cells()), "coastal");

    charts.erase(charts.begin()); // nothing coarser: as many as may be, about the middle
    selection.update(charts, {{0.5, 0.5, 3.5, 3.5}, 40'000}, ChartChoice::Cells);
    EXPECT_LE(selection.cells().size(), 100U);
    EXPECT_GE(selection.cells().size(), 50U);
    const auto& shown = selection.cells();
    EXPECT_TRUE(std::any_of(shown.begin(), shown.end(),
                            [](const Chart& c) { return c->name == "h20-20"; }));
}

TEST(ChartSelection, RastersFillInOrStandAloneAsChosen)
{
    auto charts = coast();
    charts.push_back(chart("map", 50'000, {9, 58, 12, 60}, ChartKind::Raster));
    charts.push_back(chart("sea", 50'000, {20, 58, 22, 60}, ChartKind::Raster));
    const ChartArea harbour{{10.02, 59.02, 10.08, 59.08}, 12'000};
    EXPECT_EQ(select(charts, harbour), "west");
    EXPECT_EQ(select(charts, harbour, ChartChoice::Rasters), " | map");
    const ChartArea sea{{20.5, 58.5, 20.6, 58.6}, 50'000};
    EXPECT_EQ(select(charts, sea), " | sea");
    EXPECT_EQ(select(charts, sea, ChartChoice::Cells), "");
}

TEST(ChartSelection, OfSeveralCopiesTheNewestCounts)
{
    const auto copy = [](const char* path, const char* edition, int update) {
        auto record = std::make_shared<ChartRecord>(*coast()[0]);
        record->path = path;
        record->edition = edition;
        record->update = update;
        return record;
    };
    const auto left =
        ChartSelection::usable({copy("/a/west.000", "9", 5), copy("/b/west.000", "10", 1),
                                copy("/c/west.000", "10", 3), copy("/d/west.000", "10", 2)});
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left.front()->path, "/c/west.000");
}

/// Whatever the folders hold: where any chart covers a place of the view, the selection does; the
/// one on top is never much coarser or much finer than the best chart of that place.
TEST(ChartSelection, LeavesNoHolesInAnyMixture)
{
    std::mt19937 random(20260115);
    const auto number = [&](double from, double to) {
        return std::uniform_real_distribution(from, to)(random);
    };
    for (int round = 0; round < 60; ++round) {
        ChartRecords charts;
        for (int i = 0; i < 40; ++i) {
            const double scale = std::exp(number(std::log(5'000.0), std::log(3'000'000.0)));
            const double side = scale / 100'000 * number(0.5, 1.5);
            const double x = number(-2, 4);
            const double y = number(-2, 4);
            charts.push_back(chart("c" + std::to_string(i), static_cast<int>(scale),
                                   {x - side, y - side, x + side, y + side}));
        }
        const ChartArea view{{0, 0, 2, 1.5}, std::exp(number(std::log(1e4), std::log(2e6)))};
        ChartSelection selection;
        selection.update(charts, view, ChartChoice::Cells);
        for (int i = 0; i < 200; ++i) {
            const Point place{number(0, 2), number(0, 1.5)};
            const auto covers = [&](const Chart& c) {
                return c->bounds.grownBy(-0.02, -0.02).contains(place);
            };
            if (std::none_of(charts.begin(), charts.end(), covers))
                continue;
            const auto& cells = selection.cells();
            const auto top = std::find_if(cells.begin(), cells.end(), [&](const Chart& c) {
                return c->bounds.contains(place);
            });
            ASSERT_NE(top, cells.end()) << "round " << round << " at " << place.x << " " << place.y;
            const auto off = [&](const Chart& c) {
                const double doublings = std::abs(std::log2(view.scale / c->scale));
                return doublings <= 2 ? 0 : doublings;
            };
            double best = 100;
            for (const Chart& c : charts)
                if (covers(c))
                    best = std::min(best, off(c));
            EXPECT_LE(off(*top), best + 1e-9) << "round " << round;
        }
    }
}

} // namespace
} // namespace kelvox
