#include "app/AisImages.h"
#include "app/AisLayer.h"
#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/Commands.h"
#include "app/Gauges.h"
#include "app/LiveScene.h"
#include "app/Program.h"
#include "app/VesselLayer.h"
#include "support/AISWriter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
constexpr Position boat{.longitude = 10.5, .latitude = 59.9};

/// The whole program in a folder of its own, and a window that only notes what it is asked.
class TrafficTest : public testing::Test, public ChartHost {
protected:
    [[nodiscard]] Program& program() override { return m_program; }
    [[nodiscard]] ChartView& chart() override { return m_chart; }
    [[nodiscard]] Commands& commands() override { return m_commands; }
    [[nodiscard]] ChartSet& charts() override { return m_charts; }
    [[nodiscard]] QWidget& window() override { return m_window; }
    SidePanel* openPanel(const QString& name) override
    {
        opened = name;
        return nullptr;
    }
    void showPosition(Position position) override { shown = position; }
    void showNote(const QString& /*text*/) override { }
    void showCard(const QString& title, QWidget* content) override
    {
        card = title;
        delete content;
    }
    void setTool(ChartLayer* /*tool*/) override { }
    [[nodiscard]] ChartLayer* tool() const override { return nullptr; }
    void openFiles(const std::vector<std::filesystem::path>& /*files*/) override { }
    void setChartPlaces(const std::vector<std::filesystem::path>& /*places*/) override { }
    void openDemo() override { }

    void hear(unsigned mmsi, double longitude, double latitude, int speed = 100)
    {
        const RawReport report{.mmsi = mmsi,
                               .longitude = RawReport::raw(longitude),
                               .latitude = RawReport::raw(latitude),
                               .speed = speed,
                               .course = 450};
        live().gps().processRawSentence(report.classA().sentence());
    }
    [[nodiscard]] LiveData& live() { return m_program.live(); }
    [[nodiscard]] QImage paint(ChartLayer& layer)
    {
        QImage image(800, 600, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        layer.paint(painter, frame, {.portrayal = portrayal, .scale = 1});
        return image;
    }
    [[nodiscard]] ChartPointer pointerAt(Position position) const
    {
        const Point p = frame.pixelOf(frame.view.positionToPoint(position));
        return {.at = {p.x, p.y}, .position = position, .modifiers = {}};
    }

    QString opened;
    QString card;
    std::optional<Position> shown;
    ViewFrame frame = ViewFrame::at(boat, 50'000, 0, 800, 600, 1, S57Controller::maximumDpi);
    Portrayal portrayal;

private:
    TemporaryFolder m_folder;
    Program m_program{{.configuration = m_folder.path() / "c",
                       .data = m_folder.path() / "d",
                       .cache = m_folder.path() / "ca",
                       .state = m_folder.path() / "s",
                       .resources = m_folder.path() / "r"}};
    ChartView m_chart{m_program.pool()};
    ChartSet m_charts{m_program.executor(), m_program.library(), m_program.chartSharing(), {}};
    QWidget m_window;
    Commands m_commands{m_window, m_program.settings()};
};

TEST_F(TrafficTest, AClickOpensTheTargetADoubleClickCentresAndTheSeaIsLeftToTheChart)
{
    live().gps().processRawSentence(LiveScene::rmc("5954.000"));
    hear(211'000'001, 10.52, 59.905);
    hear(211'000'002, 10.48, 59.905);
    AisLayer layer(live(), *this);
    (void)paint(layer);
    const auto first = pointerAt({.longitude = 10.52, .latitude = 59.905});
    ASSERT_TRUE(layer.itemAt(first, frame));
    EXPECT_EQ(layer.itemAt(first, frame)->name, QStringLiteral("~211000001"));
    EXPECT_TRUE(layer.click(first, frame));
    EXPECT_EQ(live().selectedTarget(), 211'000'001);
    EXPECT_EQ(card, QStringLiteral("~211000001"));
    EXPECT_TRUE(layer.doubleClick(first, frame));
    ASSERT_TRUE(shown);
    EXPECT_NEAR(shown->longitude, 10.52, 1e-5);
    EXPECT_FALSE(layer.click(pointerAt({.longitude = 10.5, .latitude = 59.89}), frame));

    // What the filters hide cannot be clicked either.
    program().settings().set("showUnderway", false);
    (void)paint(layer);
    EXPECT_FALSE(layer.click(first, frame));
}

TEST_F(TrafficTest, ManyTargetsArePaintedAsideAndAreWhereTheyAreSeen)
{
    live().gps().processRawSentence(LiveScene::rmc("5954.000"));
    const Position north{.longitude = 10.52, .latitude = 59.905};
    hear(211'000'001, north.longitude, north.latitude);
    for (unsigned i = 0; i < 300; ++i) // away from it, in the south
        hear(211'001'000 + i, 10.48 + 0.0002 * i, 59.9);
    program().settings().set("showVesselNames", false);
    program().settings().set("aisVectorMinutes", 0LL);
    AisLayer layer(live(), *this);
    const auto inkAt = [&](Position position) {
        const QImage image = paint(layer);
        const QPoint at = pointerAt(position).at.toPoint();
        int count = 0;
        for (int x = -9; x <= 9; ++x)
            for (int y = -9; y <= 9; ++y)
                count += image.pixelColor(at + QPoint(x, y)) != QColor(Qt::white) ? 1 : 0;
        return count;
    };
    ASSERT_TRUE(runUntil([&] { return inkAt(north) > 0; }));
    EXPECT_EQ(layer.shownTargets(), 301U);

    // Dragged and zoomed: at once in its new place, for the eye and for a click.
    const auto expectThere = [&] {
        EXPECT_GT(inkAt(north), 0);
        ASSERT_TRUE(layer.itemAt(pointerAt(north), frame));
        EXPECT_EQ(layer.itemAt(pointerAt(north), frame)->name, QStringLiteral("~211000001"));
    };
    frame = ViewFrame::at(Position{.longitude = 10.53, .latitude = 59.9}, 50'000, 0, 800, 600, 1,
                          S57Controller::maximumDpi);
    expectThere();
    frame = ViewFrame::at(Position{.longitude = 10.53, .latitude = 59.9}, 30'000, 40, 800, 600, 1,
                          S57Controller::maximumDpi);
    expectThere();

    // The selected one is where it says it is before there is another picture.
    EXPECT_TRUE(layer.click(pointerAt(north), frame));
    const Position farther{.longitude = 10.52, .latitude = 59.91};
    hear(211'000'001, farther.longitude, farther.latitude);
    EXPECT_GT(inkAt(farther), 0);
    EXPECT_TRUE(runUntil([&] { return inkAt(north) == 0; }));

    // Few again: nothing is left of the picture.
    live().ais().model().removeAll();
    hear(211'000'002, north.longitude, north.latitude);
    EXPECT_GT(inkAt(north), 0);
    EXPECT_EQ(layer.shownTargets(), 1U);
    EXPECT_EQ(inkAt(Position{.longitude = 10.51, .latitude = 59.9}), 0);
}

TEST_F(TrafficTest, TrafficIsSeenAcrossTheDateLine)
{
    hear(211'000'001, -179.99, 10);
    AisLayer layer(live(), *this);
    frame = ViewFrame::at(Position{.longitude = 179.99, .latitude = 10}, 50'000, 0, 800, 600, 1,
                          S57Controller::maximumDpi);
    (void)paint(layer);
    EXPECT_EQ(layer.shownTargets(), 1U);
}

TEST_F(TrafficTest, TheOwnVesselIsDrawnToScaleOnceItsSizeIsKnown)
{
    live().gps().processRawSentence(LiveScene::rmc("5954.000"));
    VesselLayer layer(*this);
    EXPECT_TRUE(layer.click(pointerAt(boat), frame));
    EXPECT_EQ(opened, QStringLiteral("gps"));

    // 60 m at 1:5000 are 12 mm; the antenna is all the way aft, so the hull lies ahead, in the
    // east.
    frame = ViewFrame::at(boat, 5'000, 0, 800, 600, 1, S57Controller::maximumDpi);
    program().settings().set("vesselVectorMinutes", 0LL);
    program().settings().set("showHeadingLine", false);
    const auto inkAt = [&](int x) {
        const QImage image = paint(layer);
        int count = 0;
        for (int y = 250; y < 350; ++y)
            count += image.pixelColor(x, y) != QColor(Qt::white) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(inkAt(420), 0);
    program().settings().set("vesselLength", 200.0);
    program().settings().set("vesselBeam", 50.0);
    program().settings().set("antennaFromBow", 200.0);
    program().settings().set("antennaFromStarboard", 25.0);
    EXPECT_GT(inkAt(420), 0);
    EXPECT_EQ(inkAt(380), 0);
}

TEST_F(TrafficTest, TheAnchorWatchDrawsItsCircleAndItsRadiusFollowsTheSetting)
{
    live().gps().processRawSentence(LiveScene::rmc("5954.000"));
    VesselLayer layer(*this);
    frame = ViewFrame::at(boat, 10'000, 0, 800, 600, 1, S57Controller::maximumDpi);
    const auto ink = [&] {
        const QImage image = paint(layer);
        int reach = 0;
        for (int x = 400; x < 800; ++x)
            for (int y = 0; y < 300; ++y)
                if (image.pixelColor(x, y) != QColor(Qt::white))
                    reach = std::max(reach, 300 - y);
        return reach;
    };
    const int without = ink();
    live().gps().setAnchorAlarm(true);
    program().settings().set("anchorDragDistance", 0.05);
    const int near = ink();
    program().settings().set("anchorDragDistance", 0.1);
    const int far = ink();
    EXPECT_GT(near, without);
    EXPECT_NEAR(far, 2 * near, 4);
}

TEST_F(TrafficTest, GaugesShowTheUsersChoiceWithUnknownIdsLeftOut)
{
    program().settings().set("instruments.shown", std::string("depth, sog,depth,sextant"));
    EXPECT_EQ(chosenGauges(program().settings()),
              (std::vector{GaugeKind::Depth, GaugeKind::SpeedOverGround}));
    chooseGauges(program().settings(), {GaugeKind::Wind, GaugeKind::Heading});
    EXPECT_EQ(program().settings().text("instruments.shown"), "wind,heading");

    EXPECT_TRUE(readGauge(program(), GaugeKind::Depth).number.isEmpty());
    live().instruments().setDepth(41.5F);
    const auto depth = readGauge(program(), GaugeKind::Depth);
    EXPECT_EQ(depth.number, QStringLiteral("41.5"));
    EXPECT_EQ(depth.unit, QStringLiteral("'"));
    EXPECT_FALSE(depth.stale);
    EXPECT_EQ(depth.samples, 1U);
    live().instruments().setWindAngle(-35);
    EXPECT_EQ(readGauge(program(), GaugeKind::Wind).degrees, -35.0F);
}

TEST(LabelRoom, NamesDoNotLieOnEachOther)
{
    LabelRoom room(200, 100);
    EXPECT_TRUE(room.take({10, 10, 60, 12}));
    EXPECT_FALSE(room.take({40, 14, 60, 12}));
    EXPECT_TRUE(room.take({40, 40, 60, 12}));
    EXPECT_TRUE(room.take({170, 80, 60, 12})); // half outside is still read
    EXPECT_FALSE(room.take({250, 80, 60, 12}));
}
} // namespace
} // namespace kelvox
