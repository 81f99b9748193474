#include "chartview/S57Controller.h"

#include "raster/RasterChart.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {

namespace {
/// Ten by twenty pixels over one degree of longitude and latitude, printed turned by `printed`.
class FakeRaster final : public RasterChart {
public:
    Size size() const override { return {10, 20}; }
    Position originOnGPSPosition() const override { return {10, 0}; }
    Position extentOnGPSPosition() const override { return {11, 1}; }
    Point positionToPoint(Position p) const override
    {
        return {(p.longitude - 10) * 10, p.latitude * 20};
    }
    Position pointToPosition(Point p) const override { return {10 + p.x / 10, p.y / 20}; }
    float angle() const override { return printed; }
    void setRotate(float degrees) override
    {
        calls += "rotate " + std::to_string(int(degrees)) + ' ';
    }
    void resetAngleTransform() override { calls += "reset "; }
    Point rotatedPoint(Point p) const override
    {
        asked = p;
        ++mappings;
        return {-p.x, p.y};
    }

    float printed = 0;
    std::string calls;
    mutable Point asked;
    mutable int mappings = 0;
};
} // namespace

TEST(S57Controller, SizesTheSheetByResolutionAndScale)
{
    S57Controller view(72);
    EXPECT_EQ(view.dpi(), 66U);
    EXPECT_EQ(S57Controller(60).dpi(), 60U);
    EXPECT_EQ(view.scale(), 200'000);
    // 66 * 1,577,762,304 / 200,000 and 66 * 1,575,118,208 / 200,000
    EXPECT_NEAR(view.sheet().width, 520'661.56, 0.05);
    EXPECT_NEAR(view.sheet().height, 519'789.01, 0.05);
    view.setScale(400'000); // waits for chartSize()
    EXPECT_NEAR(view.sheet().width, 520'661.56, 0.05);
    view.chartSize();
    EXPECT_NEAR(view.sheet().width, 260'330.78, 0.05);
}

TEST(S57Controller, LaysTheMercatorGrid)
{
    const S57Controller view(66);
    const auto [width, height] = view.sheet();
    EXPECT_EQ(view.positionToPoint({-180, 0}).x, 0);
    EXPECT_NEAR(view.positionToPoint({0, 0}).y, height / 2, 1e-6);
    EXPECT_NEAR(view.positionToPoint({180, 85}).y, height, 0.1);
    // Single precision costs more in the south, where 1/cos and tan cancel out.
    EXPECT_NEAR(view.positionToPoint({180, -85}).y, 0, 2);
    EXPECT_GT(view.positionToPoint({0, 86}).y, height); // not clamped
    // asinh(tan 60°) = 1.3169578969
    EXPECT_NEAR(view.positionToPoint({90, 60}).y, height * (1.3169578969 / 3.1313007 + 1) / 2, 0.1);
    EXPECT_EQ(view.positionToPoint({90, 60}).x, width * 0.75);
}

TEST(S57Controller, ComesBackWithinSinglePrecision)
{
    S57Controller view(66);
    view.setScale(10'000);
    view.chartSize();
    for (const float turn : {0.0F, 37.0F, 180.0F})
        for (int step = -34; step <= 34; ++step) {
            const double latitude = 2.5 * step;
            view.setRotatePosition(10, 50);
            view.setRotate(turn);
            const auto back = view.pointToPosition(view.positionToPoint({12.25, latitude}));
            EXPECT_NEAR(back.latitude, latitude, std::abs(latitude) <= 70 ? 5e-5 : 2e-4);
            EXPECT_NEAR(back.longitude, 12.25, 2e-4);
        }
}

TEST(S57Controller, QuarterTurnSendsEastOfThePivotToNorthOfIt)
{
    S57Controller view(66);
    view.setRotatePosition(10.75, 59.9);
    const Point pivot = view.positionToPoint({10.75, 59.9});
    const Point east = view.positionToPoint({10.76, 59.9});
    view.setRotate(90);
    const Point turned = view.positionToPoint({10.76, 59.9});
    EXPECT_NEAR(turned.x, pivot.x, 0.01);
    EXPECT_NEAR(turned.y - pivot.y, east.x - pivot.x, 0.01);
    EXPECT_NEAR(view.pointToPosition(turned).longitude, 10.76, 1e-6);
    // The pivot is taken unrotated, whatever the rotation.
    view.setRotatePosition(10.75, 59.9);
    EXPECT_EQ(view.rotatePoint(), pivot);
    // The transform that keeps the logarithm says the same.
    const Point same = view.mercatorTransform().map({10.76, S57Controller::mercatorOrdinate(59.9)});
    EXPECT_NEAR(same.x, turned.x, 1e-6);
    EXPECT_NEAR(same.y, turned.y, 1e-6);
    view.setRotate(0);
    EXPECT_EQ(view.positionToPoint({10.76, 59.9}), east);
}

TEST(S57Controller, ShowsARasterChart)
{
    S57Controller view(66);
    const Point origin = view.mercatorPositionToPoint({10, 0});
    const Point extent = view.mercatorPositionToPoint({11, 1});
    const auto raster = std::make_shared<FakeRaster>();
    view.setBSBChart(raster);
    EXPECT_EQ(raster->calls, "rotate 0 reset ");
    const double dx = extent.x - origin.x + 1;
    const double dy = extent.y - origin.y + 1;
    EXPECT_NEAR(raster->asked.x, dx, 0.01);
    EXPECT_NEAR(view.bsbScale(), (dx / 10 + dy / 20) / 2, 1e-3);
    // Half a degree east and a quarter north is pixel (5, 5).
    const Point p = view.positionToPoint({10.5, 0.25});
    EXPECT_NEAR(p.x, origin.x + 5 * view.bsbScale(), 1e-3);
    EXPECT_NEAR(p.y, origin.y + 5 * view.bsbScale(), 1e-3);
    EXPECT_NEAR(view.pointToPosition(p).latitude, 0.25, 1e-9);

    // The chart's own angle and the view's rotation add up: 270 + 180 turns by 90.
    raster->printed = 270;
    view.setRotatePoint(origin);
    view.setRotate(180);
    const Point turned = view.positionToPoint({10.5, 0});
    EXPECT_NEAR(turned.x, origin.x, 1e-3);
    EXPECT_NEAR(turned.y, origin.y + 5 * view.bsbScale(), 1e-3);
    EXPECT_NEAR(view.pointToPosition(turned).longitude, 10.5, 1e-9);
    const int mappings = raster->mappings;
    view.setRotate(180); // the same again
    EXPECT_EQ(raster->mappings, mappings);
    view.setBSBChart(nullptr);
    EXPECT_NEAR(view.positionToPoint({10, 0}).x, origin.x, 1e-6);
}

} // namespace kelvox
