#include "scenarios/Scenario.h"

#include "navigation/SharedModels.h"

namespace kelvox {

TEST_F(Scenario, FirstStartShowsTheDemoWatersWithTheVesselUnderWay)
{
    start();
    waitFor([this] { return program().live().gps().position().isKnown(); }, "a position");
    waitFor([this] { return program().live().ais().model().count() > 3; }, "traffic");
    const QImage picture = shot(QStringLiteral("first-start"));
    EXPECT_GT(colorCount(picture), 100) << "an empty chart";
    // The vessel is in the middle: the chart follows it.
    const QPoint vessel = at(program().live().gps().position());
    EXPECT_LT((vessel - chart().rect().center()).manhattanLength(), 12);
}

TEST_F(Scenario, ZoomPanAndRotateLeaveAFinishedPictureBehind)
{
    start();
    const int before = chart().scale();
    key(Qt::Key_Plus);
    EXPECT_LT(chart().scale(), before);
    const Position middle = chart().center();
    dragChart({400, 300}, {250, 220});
    EXPECT_GT(chart().center().longitude, middle.longitude);
    EXPECT_LT(chart().center().latitude, middle.latitude);
    EXPECT_FALSE(window().commands().action("chart.follow")->isChecked())
        << "a dragged chart must not jump back to the vessel";
    chart().setRotation(40);
    waitForPicture();
    const QImage turned = shot(QStringLiteral("rotated"));
    EXPECT_GT(colorCount(turned), 100);
    run("chart.northUp");
    EXPECT_EQ(chart().rotation(), 0);
}

TEST_F(Scenario, NightLeavesNothingBright)
{
    start();
    run("view.night");
    window().openPanel(QStringLiteral("alarms"));
    waitForPicture();
    const QImage night = shot(QStringLiteral("night"));
    // The brightest colour of the night table, 5 of 80 cd/m2, is grey 71 on the screen.
    EXPECT_LT(brighterThan(night, 90), 0.002);
    run("view.day");
    waitForPicture();
    EXPECT_GT(brighterThan(shot(QStringLiteral("day")), 200), 0.3);
}

TEST_F(Scenario, ManOverboardByOneKeyMarksThePlaceAndSaysSoUntilAcknowledged)
{
    start();
    waitFor([this] { return program().live().gps().position().isKnown(); }, "a position");
    const auto before = program().waypoints().count();
    key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(program().waypoints().count(), before + 1);
    EXPECT_TRUE(program().waypointController().hasActiveWaypoint());
    EXPECT_TRUE(program().alarms().isShown("NSManOverboard"));
    shot(QStringLiteral("man-overboard"));
    click(QStringLiteral("alarmButton"));
    EXPECT_FALSE(program().alarms().isShown("NSManOverboard"));
}

TEST_F(Scenario, WhatWasSetAndMadeIsThereAfterTheNextStart)
{
    start();
    waitFor([this] { return program().live().gps().position().isKnown(); }, "a position");
    run("view.dusk");
    run("vessel.manOverboard");
    const auto name = program().waypoints().waypoint(0)->name;
    quit();
    start();
    EXPECT_EQ(program().scheme(), ColorScheme::Dusk);
    ASSERT_GT(program().waypoints().count(), 0U);
    EXPECT_TRUE(program().waypoints().waypointFromName(name));
    ASSERT_FALSE(program().alarms().history().empty()) << "alarms of the last time";
    EXPECT_TRUE(program().alarms().active().empty());
}

} // namespace kelvox
