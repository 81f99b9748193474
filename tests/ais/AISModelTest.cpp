#include "ais/AISFixture.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Column = AISTargetList::Column;
using Order = AISTargetList::Order;

TEST(AISModel, TableIsOrderedByKeyWhateverComesAndGoes)
{
    const ManualClock clock;
    AISModel model(clock);
    for (const int mmsi : {5, 3, 9, -1, 7, 3, 1})
        model.aisPositionWithMMSI(mmsi);
    model.removePosition(5);
    model.removePosition(4); // never was there
    std::string order;
    for (const auto* target : model.positionEnumerator())
        order += std::to_string(target->mmsi()) + " ";
    EXPECT_EQ(order, "-1 1 3 7 9 ");
    EXPECT_EQ(model.indexOfPosition(7), 3U);
    EXPECT_EQ(model.indexOfPosition(5), std::nullopt);
}

TEST(AISModel, AgeingStepByStep)
{
    AISBench bench;
    bench.controller.plotPosition({.longitude = 1, .latitude = 1});
    bench.vessel(10, 1, 1);
    bench.vessel(11, 1, 1);
    bench.sentence("$RATTM,1,1,0,T,,,T,,,N,,T,,,A");
    bench.sentence("$RATTM,2,1,0,T,,,T,,,N,,T,,,A");
    const auto age = [&bench](int seconds) {
        bench.clock.advance(std::chrono::seconds(seconds));
        bench.controller.aisPositionTimer();
        return bench.model.count();
    };
    EXPECT_EQ(age(300), 4U);
    EXPECT_FALSE(bench.model.find(10)->timedOut(bench.clock.now()));
    EXPECT_EQ(age(1), 2U) << "radar targets next to each other go at once";
    EXPECT_TRUE(bench.model.find(10)->timedOut(bench.clock.now()));
    bench.vessel(11, 1, 1); // heard again
    EXPECT_EQ(age(599), 2U);
    bench.controller.setConnectionOpen(false);
    EXPECT_EQ(age(1), 2U) << "no source, no ageing";
    bench.controller.setConnectionOpen(true);
    EXPECT_EQ(age(0), 1U);
    EXPECT_EQ(age(301), 0U);
}

TEST(AISModel, AClockSetBackLeavesNoGhosts)
{
    AISBench bench;
    bench.vessel(10, 1, 1);
    bench.clock.setNow(bench.clock.now() - std::chrono::hours(24));
    bench.controller.aisPositionTimer();
    bench.clock.advance(std::chrono::seconds(901));
    bench.controller.aisPositionTimer();
    EXPECT_EQ(bench.model.count(), 0U);
}

TEST(AISModel, OnlyVisibleChangesAreRedrawn)
{
    AISBench bench;
    int images = 0;
    bench.model.setNeedsDisplayHandler([&images](const AISPosition&) { ++images; });
    bench.vessel(10, 1, 1);
    EXPECT_EQ(images, 2) << "where it was and where it is";
    bench.vessel(10, 1, 1);
    EXPECT_EQ(images, 2) << "nothing changed";
    bench.model.find(10)->setShow(false);
    bench.vessel(10, 2, 1);
    EXPECT_EQ(images, 2) << "not on show";
    EXPECT_NEAR(bench.model.find(10)->positionOnGPS().longitude, 2, 1e-5);
}

TEST(ProximityAlarm, NearestVesselFiresOnceUntilArmedAgain)
{
    AISBench bench;
    const Position own{.longitude = 10, .latitude = 50};
    bench.settings.set("aisProximityDistance", 2.0);
    bench.settings.set("audio", true);
    bench.settings.set("visual", true);
    bench.vessel(1, 10, 50.1);
    bench.vessel(2, 10, 50.02);
    bench.vessel(3, 10, 50.02);
    bench.vessel(4, 10, 50).setOwn(true);
    bench.controller.plotPosition(own);
    EXPECT_TRUE(bench.alarmCalls().empty()) << "not armed";
    EXPECT_NEAR(bench.model.find(1)->distanceFromPosition(), 6, 0.01);

    bool menuItem = false;
    bench.controller.setProximityAlarmHandler([&menuItem](bool on) { menuItem = on; });
    bench.controller.setProximityAlarm(true);
    bench.controller.plotPosition({});
    EXPECT_TRUE(menuItem) << "no own position";
    bench.controller.plotPosition(own);
    const std::vector<std::string> expected = {"beep", "speak Vessel close by",
                                               "show NSAISProximityAlarm|~2|OK"};
    EXPECT_EQ(bench.alarmCalls(), expected) << "the first of two as near as each other";
    EXPECT_EQ(bench.controller.alarmTarget(), 2);
    EXPECT_FALSE(menuItem);
    bench.controller.plotPosition(own);
    EXPECT_EQ(bench.alarmCalls().size(), 3U);

    bench.settings.set("audio", false);
    bench.controller.setProximityAlarm(true);
    bench.controller.plotPosition(own);
    EXPECT_EQ(bench.alarmCalls().size(), 4U);
}

TEST(AISController, BurstsReloadTheListOnce)
{
    AISBench bench;
    int reloads = 0;
    bench.controller.setListHandler([&reloads] { ++reloads; });
    for (std::uint32_t mmsi = 1; mmsi <= 20; ++mmsi)
        bench.vessel(mmsi, 1, 1);
    EXPECT_EQ(bench.controller.list().rowCount(), 0U);
    bench.idle.run();
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(bench.controller.list().rowCount(), 20U);
    EXPECT_EQ(bench.idle.run(), 0U);
    bench.vessel(21, 1, 1);
    auto outliving = std::move(bench.idle);
    {
        AISBench shortLived;
        shortLived.controller.setListHandler([&reloads] { ++reloads; });
        shortLived.vessel(1, 1, 1);
        outliving = std::move(shortLived.idle);
    }
    EXPECT_EQ(outliving.run(), 1U);
    EXPECT_EQ(reloads, 1) << "the work of a controller that is gone does nothing";
}

TEST(AISController, PanelOfTheSelectedTarget)
{
    AISBench bench;
    EXPECT_FALSE(bench.controller.updateAISInfo());
    // Six miles north, coming south at 6 knots; the own vessel lies three miles off its course.
    auto& target = bench.vessel(5, 0.05, 0.1);
    target.setSog(6);
    target.setCog(180);
    bench.controller.list().select(5);
    ASSERT_TRUE(bench.controller.updateAISInfo());
    EXPECT_FALSE(bench.controller.updateAISInfo()->closestApproach);
    bench.controller.plotPosition({.longitude = 0, .latitude = 0});
    bench.controller.plotSpeed(0);
    bench.controller.plotCourse(0);
    auto info = *bench.controller.updateAISInfo();
    EXPECT_NEAR(info.distance, std::hypot(6, 3), 0.01);
    EXPECT_NEAR(info.bearing, 26.565, 0.1);
    ASSERT_TRUE(info.closestApproach);
    EXPECT_NEAR(info.closestApproach->time, 1, 0.01);
    EXPECT_NEAR(info.closestApproach->distance, 3, 0.01);
    EXPECT_NEAR(info.closestApproach->bearing, 90, 0.5);
    target.setCog(0);
    EXPECT_FALSE(bench.controller.updateAISInfo()->closestApproach) << "going away";
}

TEST(AISTargetList, SortsWithUnknownLastAndKeepsTheSelection)
{
    AISBench bench;
    auto& list = bench.controller.list();
    const auto add = [&bench](std::int32_t mmsi, const char* name, float sog) {
        auto& target = *bench.model.aisPositionWithMMSI(mmsi);
        target.setName(name);
        target.setSog(sog);
    };
    add(1, "beta", 5);
    add(2, "Alpha", static_cast<float>(noValue));
    add(3, "GAMMA", 0);
    add(44, "Alpha", 9);
    const auto rows = [&list] {
        std::string text;
        for (std::size_t row = 0; row < list.rowCount(); ++row)
            text += std::to_string(list.at(row)->mmsi()) + " ";
        return text;
    };
    list.select(3);
    list.sortBy(Column::Name, Order::Ascending);
    EXPECT_EQ(rows(), "2 44 1 3 ");
    list.sortBy(Column::Name, Order::Descending);
    EXPECT_EQ(rows(), "3 1 2 44 ");
    EXPECT_EQ(list.selectedRow(), 0U);
    list.sortBy(Column::Speed, Order::Descending);
    EXPECT_EQ(rows(), "44 1 3 2 ");
    list.search("ALPH");
    EXPECT_EQ(rows(), "44 2 ");
    EXPECT_EQ(list.selectedRow(), std::nullopt);
    EXPECT_EQ(list.selected(), 3) << "only hidden by the search";
    list.search("4");
    EXPECT_EQ(rows(), "44 ");
    bench.model.removePosition(44);
    EXPECT_EQ(list.at(0), nullptr);
    list.search("");
    bench.model.removePosition(3);
    list.reload();
    EXPECT_EQ(list.selected(), std::nullopt);
}

} // namespace
} // namespace kelvox
