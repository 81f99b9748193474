#include "chartview/ChartSettingsController.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvox {

TEST(ChartSettingsController, ClassifiesScales)
{
    struct {
        long long scale;
        int type;
        const char* name;
    } const rows[] = {
        {0, 6, "NSBerthing"},          {5'000, 6, "NSBerthing"},     {5'001, 5, "NSHarbor"},
        {50'000, 5, "NSHarbor"},       {50'001, 4, "NSApproach"},    {150'000, 4, "NSApproach"},
        {150'001, 3, "NSCoastal"},     {500'000, 3, "NSCoastal"},    {500'001, 2, "NSGeneral"},
        {1'500'000, 2, "NSGeneral"},   {1'500'001, 1, "NSOverview"}, {20'000'000, 1, "NSOverview"},
        {20'000'001, 6, "NSOverview"}, {-1, 6, "NSOverview"}};
    for (const auto& row : rows) {
        EXPECT_EQ(ChartSettingsController::cellType(row.scale), row.type) << row.scale;
        EXPECT_EQ(ChartSettingsController::cellTypeNameKey(row.scale), row.name) << row.scale;
    }
    ChartSettingsController settings;
    EXPECT_EQ(settings.cellTypeForScale(), 6); // nothing selected
    settings.onZoom(7);
    EXPECT_EQ(settings.cellTypeForScale(), 4); // 1:150,000
}

TEST(ChartSettingsController, FindsTheStepThatShowsAnExtent)
{
    const Size view{1000, 500};
    const auto scaleFor = [&](Size extent, int current) {
        return ChartSettingsController::zoomSteps[ChartSettingsController::bestStep(view, extent,
                                                                                    current)];
    };
    // Sizes at 1:100,000: an extent of 500 points shrinks to the view's 1000 at 1:50,000.
    EXPECT_EQ(scaleFor({500, 1}, 100'000), 75'000); // 50,000 shows it edge to edge: not smaller
    EXPECT_EQ(scaleFor({499, 1}, 100'000), 50'000);
    EXPECT_EQ(scaleFor({499, 500}, 100'000), 150'000); // the height asks for more
    EXPECT_EQ(scaleFor({1, 1}, 100'000), 2'500);
    EXPECT_EQ(scaleFor({1e9, 1}, 100'000), 20'000'000); // wider than any step
}

TEST(ChartSettingsController, TellsTheViewBeforeAndAfter)
{
    ChartSettingsController settings;
    std::string told;
    settings.chartViewWillZoomToScale = [&](int scale) {
        told += " will " + std::to_string(scale);
    };
    settings.chartViewDidZoomToScale = [&](int scale) { told += " did " + std::to_string(scale); };
    settings.zoomIn(); // nothing selected yet
    EXPECT_TRUE(told.empty());
    settings.onZoom(1);
    settings.zoomIn();
    EXPECT_FALSE(settings.canZoomIn());
    settings.zoomIn();
    settings.onZoom(99);
    EXPECT_EQ(told, " will 5000 did 5000 will 2500 did 2500");

    EXPECT_TRUE(settings.canReturn());
    settings.previousZoom();
    EXPECT_EQ(settings.selectedStep(), 1U);
    settings.previousZoom();
    EXPECT_EQ(settings.selectedStep(), 0U); // there and back
    settings.onZoom(1);
    settings.onZoom(15);
    EXPECT_FALSE(settings.canZoomOut());
    settings.zoomOut();
    settings.previousZoom();
    EXPECT_EQ(settings.selectedStep(), 1U);
}

} // namespace kelvox
