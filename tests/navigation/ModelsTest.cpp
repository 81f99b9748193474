#include "Scene.h"
#include "base/Strings.h"
#include "navigation/TextSearch.h"
#include "navigation/WaypointIcons.h"

#include <gtest/gtest.h>

#include <set>

namespace kelvox {
namespace {

using namespace std::chrono_literals;

TEST(WaypointsModel, FindsAndMakesNames)
{
    Scene scene;
    scene.waypoint("WP0001");
    scene.waypoint("WP0003");
    EXPECT_EQ(scene.waypoints.uniqueName(), "WP0002");
    EXPECT_EQ(scene.waypoints.waypointFromName(" WP0001\t")->name, "WP0001");
    EXPECT_FALSE(scene.waypoints.waypointFromName("wp0001"));
    EXPECT_EQ(scene.waypoint("")->name, "WP0002");
    EXPECT_EQ(scene.waypoints.uniqueName(), "WP0004");
    scene.waypoints.remove(scene.waypoints.waypointFromName("WP0002"));
    EXPECT_EQ(scene.waypoints.uniqueName(), "WP0002");
    // Files know records by name, so a second one of a name gets a number.
    EXPECT_EQ(scene.waypoint(" WP0003 ")->name, "WP0003 2");
    const auto one = scene.waypoints.waypointFromName("WP0001");
    EXPECT_FALSE(scene.waypoints.edit(one, [](Waypoint& it) { it.name = "WP0003"; }));
    EXPECT_FALSE(scene.waypoints.edit(one, [](Waypoint& it) { it.name = " "; }));
    EXPECT_EQ(one->name, "WP0001");
    for (int i = 0; i < 10'000; ++i)
        scene.waypoint("");
    EXPECT_EQ(scene.waypoints.uniqueName(), std::nullopt);
}

TEST(WaypointsModel, SearchesAsTheListDoes)
{
    Scene scene;
    const auto named = [&](const char* name, const char* description, const char* group) {
        Waypoint made;
        made.name = name;
        made.description = description;
        if (*group)
            made.groups.insert(group);
        scene.waypoints.add(std::move(made));
    };
    named("Buoy 4", "", "Fjord");
    named("Green buoy", "", "Fjord");
    named("\u00C6r\u00F8", "harbour with Bakery", "");
    const auto found = [&](std::optional<std::string_view> text) {
        std::string names;
        scene.waypoints.setMatch(text);
        for (std::size_t i = 0; i < scene.waypoints.countMatch(); ++i)
            names += scene.waypoints.waypointMatch(i)->name + ";";
        return names;
    };
    EXPECT_EQ(found(std::nullopt), "Buoy 4;Green buoy;\u00C6r\u00F8;");
    EXPECT_EQ(found(""), "Buoy 4;Green buoy;\u00C6r\u00F8;");
    EXPECT_EQ(found("b"), "Buoy 4;"); // one letter looks at beginnings only
    EXPECT_EQ(found("bu"), "Buoy 4;Green buoy;");
    EXPECT_EQ(found("BAK"), "\u00C6r\u00F8;");
    EXPECT_EQ(found("h"), "\u00C6r\u00F8;"); // the description begins with it
    EXPECT_EQ(found("\u00E6"), "\u00C6r\u00F8;"); // one letter of two bytes, small for capital
    EXPECT_EQ(found("xyz"), "");
    scene.waypoints.setSelectedGroup("Fjord");
    EXPECT_EQ(found(""), "Buoy 4;Green buoy;");

    scene.route("Trip", "Buoy 4");
    Route trip;
    trip.name = "Home";
    trip.addWaypointReference(scene.waypoints.waypointFromName("Green buoy"));
    scene.routes.add(trip);
    EXPECT_EQ(scene.routes.routesThatMatch("green").size(), 1U); // by its waypoint
    EXPECT_EQ(scene.routes.routesThatMatch("ri").front()->name, "Trip");

    scene.waypoints.renameGroupsInWaypoints("Fjord", "Sound");
    EXPECT_EQ(scene.waypoints.selectedGroup(), "Sound");
    EXPECT_EQ(scene.waypoints.createGroupsFromWaypoints(), std::vector<std::string>{"Sound"});
    scene.history.undo();
    EXPECT_EQ(scene.waypoints.waypointsForGroup("Fjord").size(), 2U);

    EXPECT_TRUE(naturalLess("Buoy 4", "buoy 10"));
    EXPECT_FALSE(naturalLess("Buoy 10", "Buoy 4"));
}

TEST(RoutesModel, FollowsItsWaypoints)
{
    Scene scene;
    for (const char* name : {"A", "B", "C", "D"})
        scene.waypoint(name, {10.0 + (*name - 'A'), 0});
    const auto lost = scene.waypoint("E", Position{});
    const auto route = scene.route("Trip", "A B C B");
    EXPECT_NEAR(route->distance(0, 2), 120, 0.05);
    EXPECT_NEAR(route->distance(2, 0), 120, 0.05);
    EXPECT_EQ(route->distance(0, 4), 0);
    EXPECT_NEAR(route->bearing(1), 90, 0.1);
    EXPECT_NEAR(route->bearing(3), 270, 0.1);

    scene.routes.edit(route, [&](Route& it) {
        it.insertWaypointReference(std::make_shared<WaypointReference>(WaypointReference{lost}), 1);
    });
    EXPECT_NEAR(route->distance(0, 2), 60, 0.05); // a waypoint without position does not count
    EXPECT_EQ(Scene::through(*route), "A E B C B");

    scene.waypoints.edit(scene.waypoints.waypointFromName("B"), [](Waypoint& it) {
        it.setPositionOnGPS({11, 1});
        it.name = "Bee";
    });
    EXPECT_EQ(Scene::through(*route), "A E Bee C Bee");
    scene.waypoints.setMatch("Bee");
    EXPECT_TRUE(scene.waypoints.removeMatch(0));
    EXPECT_EQ(Scene::through(*route), "A E C");
    EXPECT_TRUE(scene.history.undo());
    EXPECT_EQ(Scene::through(*route), "A E Bee C Bee");
    EXPECT_TRUE(scene.history.undo());
    EXPECT_EQ(Scene::through(*route), "A E B C B");
    EXPECT_NEAR(route->bearing(3), 90, 0.1); // moved back as well
    EXPECT_TRUE(scene.history.redo());
    EXPECT_EQ(Scene::through(*route), "A E Bee C Bee");

    scene.route("Home", "A D");
    EXPECT_EQ(scene.routes.rename(route, "Home"), RoutesModel::Renamed::AlreadyExists);
    EXPECT_EQ(scene.routes.rename(route, "Away"), RoutesModel::Renamed::Done);
    EXPECT_EQ(scene.routes.uniqueName(), "RT0001");
    const auto third = route->waypointReference(2);
    EXPECT_EQ(route->nextWaypointReference(third)->waypoint->name, "C");
    EXPECT_EQ(route->previousWaypointReference(third)->waypoint->name, "E");
    EXPECT_EQ(route->indexOf(route->lastWaypointReference()), 4U); // not the other B
}

TEST(TracksModel, RecordsByIntervalAndImportsByDate)
{
    Scene scene;
    auto& tracks = scene.tracks;
    EXPECT_TRUE(tracks.add(trackPoint(0), 30s));
    EXPECT_FALSE(tracks.add(trackPoint(10), 30s));
    tracks.addNext();
    EXPECT_TRUE(tracks.add(trackPoint(10), 30s));
    EXPECT_FALSE(tracks.add(trackPoint(39), 30s)); // only one was free
    EXPECT_TRUE(tracks.add(trackPoint(40), 30s));
    EXPECT_TRUE(tracks.isChanged());

    tracks.setChanged(false);
    auto same = trackPoint(10);
    same.sog = 7;
    EXPECT_TRUE(tracks.add(same, 0s));
    EXPECT_EQ(tracks.count(), 3U);
    EXPECT_EQ(tracks.track(1)->sog, 7);
    EXPECT_TRUE(tracks.add(trackPoint(11), 0s));
    EXPECT_EQ(tracks.count(), 4U);
    EXPECT_FALSE(tracks.isChanged()); // the importer marks it once
    std::set<std::string> names;
    for (const auto& point : tracks.objectEnumerator())
        names.insert(point->name);
    EXPECT_EQ(names.size(), 4U);
    EXPECT_TRUE(scene.history.undo()); // imports can be taken back, recordings cannot
    EXPECT_TRUE(scene.history.undo());
    EXPECT_FALSE(scene.history.undo());
    EXPECT_EQ(tracks.track(1)->sog, noValue);
    EXPECT_EQ(tracks.count(), 3U);
}

TEST(TracksModel, StartsLinesAtPausesAndColours)
{
    Scene scene;
    auto& tracks = scene.tracks;
    auto red = trackPoint(2862);
    red.color = {1, 0, 0};
    for (auto& point : {trackPoint(0), trackPoint(930), trackPoint(1861), red})
        tracks.add(point, 1s);
    const auto starts = [&] {
        std::string text;
        for (std::size_t i = 0; i < tracks.count(); ++i)
            text += tracks.isStart(i) ? 'S' : '.';
        return text;
    };
    EXPECT_EQ(starts(), "S.SS"); // 900 seconds and 30 of grace
    tracks.setStartTrackInterval(10'799);
    EXPECT_EQ(starts(), "S..S");
    tracks.add(trackPoint(100'000'000), 1s);
    tracks.setStartTrackInterval(10'800); // from here on no pause splits
    tracks.edit(tracks.track(4), [](Track& it) { it.color = {1, 0, 0}; });
    EXPECT_EQ(starts(), "S..S.");
}

TEST(TracksModel, KeepsTheNewestFiftyThousand)
{
    Scene scene;
    const EditHistory::Group import(scene.history);
    for (int i = 0; i < 50'001; ++i)
        scene.tracks.add(trackPoint(i), 0s);
    EXPECT_EQ(scene.tracks.count(), 50'000U);
    EXPECT_EQ(scene.tracks.firstTrack()->date, trackPoint(1).date);
    scene.tracks.add(trackPoint(0), 0s); // the dropped one is not found by its date
    EXPECT_EQ(scene.tracks.lastTrack()->date, trackPoint(0).date);
    EXPECT_EQ(scene.tracks.count(), 50'000U);
}

TEST(TracksModel, PicksTheNearestPointWithinAQuarterMile)
{
    Scene scene;
    scene.tracks.add(trackPoint(0, {10, 50}), 1s);
    scene.tracks.add(trackPoint(1, Position{}), 1s);
    scene.tracks.add(trackPoint(2, {10, 50 + 0.3 / 60}), 1s);
    EXPECT_EQ(scene.tracks.trackAt({10, 50 + 0.2 / 60}), scene.tracks.track(2));
    EXPECT_EQ(scene.tracks.trackAt({10, 50 - 0.24 / 60}), scene.tracks.track(0));
    EXPECT_EQ(scene.tracks.trackAt({10, 50 - 0.26 / 60}), nullptr);
}

TEST(WaypointsModel, TakesAnImportedWaypointForTheOneItIs)
{
    Scene scene;
    const auto first = scene.waypoints.createWaypointFromGPS("Pier", {10, 50}, "", 3);
    EXPECT_TRUE(first->groups.contains(WaypointsModel::importedGroup));
    EXPECT_EQ(scene.waypoints.createWaypointFromGPS("Pier", {10.00001, 50}, "fuel"), first);
    EXPECT_EQ(first->description, "fuel");
    EXPECT_EQ(first->iconIndex, 3);
    EXPECT_EQ(scene.waypoints.createWaypointFromGPS("Pier", {10.1, 50}, "")->name, "Pier 2");
    EXPECT_EQ(scene.waypoints.waypointForPosition({10, 50}), first);
    EXPECT_FALSE(scene.waypoints.waypointForPosition({10.00001, 50}));
}

TEST(WaypointIcons, KnowNamesSymbolsAndCodes)
{
    EXPECT_EQ(iconIndex("WAYPOINT"), 0);
    EXPECT_EQ(iconIndex("no such thing"), 0);
    EXPECT_EQ(waypointIcon(iconIndex("navaid, red/green"))->name, "NAVAIDREDGREEN");
    EXPECT_EQ(waypointIcon(iconIndex("Man Overboard"))->name, "MOB");
    EXPECT_EQ(waypointIcon(iconIndexForDeviceCode(150))->name, "BOATRAMP");
    EXPECT_EQ(waypointIcon(-1), nullptr);
    std::set<std::string_view> names;
    for (const auto& icon : waypointIcons()) {
        EXPECT_TRUE(names.insert(icon.name).second) << icon.name;
        EXPECT_EQ(waypointIcon(iconIndex(icon.gpxSymbol))->name, icon.name);
    }
}

} // namespace
} // namespace kelvox
