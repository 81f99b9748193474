#include "app/NavScene.h"

#include "app/panels/RoutesPanel.h"
#include "app/panels/WaypointsPanel.h"
#include "navigation/TrackLines.h"

#include <QCheckBox>
#include <QLineEdit>

#include <iomanip>
#include <sstream>

namespace kelvox {
namespace {

/// Every edit that a window offers is one step: taken back it leaves exactly what was there before,
/// brought back exactly what it made.
class UndoTest : public NavScene {
protected:
    UndoTest()
    {
        a = waypoint("A", {300, 300});
        b = waypoint("B", {600, 300});
        c = waypoint("C", {600, 500});
        alone = waypoint("ALONE", {400, 600});
        trip = route("Trip", {a, b, c});
        other = route("Other", {c, alone});
        for (int i = 0; i < 6; ++i) {
            Track point;
            point.set(at({300.0 + 20 * i, 200}),
                      Date(std::chrono::sys_days(std::chrono::year(2024) / 5 / 1)
                           + std::chrono::minutes(i) + std::chrono::hours(i < 3 ? 0 : 5)),
                      20, 6, 20, 6, 40, 60, 30, 12, {}, {});
            program.tracks().add(std::move(point), std::chrono::seconds(1));
        }
        sharedEditHistory().clear();
        settle();
    }

    /// All that the user could see of the records.
    [[nodiscard]] std::string state()
    {
        std::ostringstream words;
        words << std::setprecision(12);
        for (const auto& it : program.waypoints().objectEnumerator()) {
            words << it->name << ' ' << it->latitude << ' ' << it->longitude << ' ' << it->iconIndex
                  << ' ' << it->show << " '" << it->description << "'";
            for (const auto& group : it->groups)
                words << " [" << group << ']';
            words << '\n';
        }
        for (const auto& it : program.routes().objectEnumerator())
            words << it->name << ": " << through(it) << '\n';
        for (const auto& it : program.tracks().objectEnumerator())
            words << it->name << ' ' << it->latitude << ' ' << it->longitude << '\n';
        return words.str();
    }

    template <class Panel> Panel* panel(const char* name)
    {
        auto* opened = dynamic_cast<Panel*>(window.openPanel(QLatin1String(name)));
        EXPECT_TRUE(opened) << name;
        return opened;
    }
    /// Types into a field of a panel and leaves it.
    static void enter(QWidget* panel, const char* field, const char* words)
    {
        for (auto* edit : panel->findChildren<QLineEdit*>())
            if (edit->accessibleName() == QLatin1String(field)) {
                edit->setText(QString::fromUtf8(words));
                edit->setModified(true);
                emit edit->editingFinished();
                return;
            }
        ADD_FAILURE() << "no field " << field;
    }
    void enterWaypoint(const char* field, const char* words)
    {
        auto* editor = panel<WaypointsPanel>("waypoints");
        editor->show(b);
        enter(editor, field, words);
    }
    [[nodiscard]] std::size_t secondLine()
    {
        return trackLines(program.tracks()).back().first;
    }

    WaypointPointer a, b, c, alone;
    RoutePointer trip, other;
};

TEST_F(UndoTest, EveryEditIsOneStepThatIsTakenBackWhole)
{
    const std::pair<const char*, std::function<void()>> edits[] = {
        {"a waypoint dropped",
         [this] {
             (void)actions().dropWaypoint(at({200, 200}));
         }},
        {"a waypoint dragged",
         [this] {
             drag({400, 600}, {450, 620});
         }},
        {"a waypoint of routes dragged",
         [this] {
             drag({600, 500}, {640, 540});
         }},
        {"a name", [this] { enterWaypoint("Name", "GREEN"); }},
        {"a latitude", [this] { enterWaypoint("Latitude", "55°01.000'N"); }},
        {"a longitude", [this] { enterWaypoint("Longitude", "010°01.000'E"); }},
        {"groups", [this] { enterWaypoint("Groups", "Buoys, Summer"); }},
        {"hidden",
         [this] {
             auto* editor = panel<WaypointsPanel>("waypoints");
             editor->show(b);
             for (auto* box : editor->findChildren<QCheckBox*>())
                 box->click();
         }},
        {"an icon",
         [this] { program.waypoints().edit(b, [](Waypoint& it) { it.iconIndex = 7; }); }},
        {"waypoints deleted",
         [this] {
             actions().removeWaypoints({alone, b});
         }},
        {"a route made",
         [this] {
             (void)actions().editor().makeRoute({{{}, a}, {{}, alone}});
         }},
        {"a route renamed",
         [this] {
             auto* routes = panel<RoutesPanel>("routes");
             routes->show(trip);
             enter(routes, "Name of the route", "Voyage");
         }},
        {"a route extended",
         [this] {
             actions().editor().extend(trip, {{at({700, 550}), nullptr}});
         }},
        {"a point pulled out of a leg",
         [this] {
             actions().selection().selectRoute(trip);
             settle();
             drag({450, 300}, {450, 380});
         }},
        {"a point moved up", [this] { actions().editor().moveUp(trip, 1); }},
        {"a point moved down", [this] { actions().editor().moveDown(trip, 1); }},
        {"a point removed", [this] { actions().editor().removeFromRoute(trip, 1); }},
        {"a route reversed", [this] { actions().reverseRoute(trip); }},
        {"a route split", [this] { actions().splitRoute(trip, 1); }},
        {"routes joined", [this] { EXPECT_TRUE(actions().editor().join(trip, other)); }},
        {"a route copied", [this] { actions().copyRoute(trip); }},
        {"routes deleted",
         [this] {
             actions().removeRoutes({trip, other});
         }},
        {"a route from a track", [this] { actions().routeFromTrack(secondLine()); }},
        {"a line of the track deleted", [this] { actions().removeTrackLines({secondLine()}); }},
        {"all lines deleted",
         [this] {
             std::vector<std::size_t> lines;
             for (const TrackLine& line : trackLines(program.tracks()))
                 lines.push_back(line.first);
             actions().removeTrackLines(lines);
         }},
    };
    const std::string before = state();
    ASSERT_EQ(trackLines(program.tracks()).size(), 2U);
    for (const auto& [what, edit] : edits) {
        SCOPED_TRACE(what);
        chart().centerOn({.longitude = 10, .latitude = 55});
        settle();
        edit();
        QApplication::processEvents();
        const std::string after = state();
        EXPECT_NE(after, before) << "it did nothing";
        window.commands().action("edit.undo")->trigger();
        EXPECT_EQ(state(), before) << "not taken back whole, or more than one step";
        EXPECT_FALSE(sharedEditHistory().canUndo()) << "more than one step";
        window.commands().action("edit.redo")->trigger();
        EXPECT_EQ(state(), after) << "not brought back";
        window.commands().action("edit.undo")->trigger();
        ASSERT_EQ(state(), before);
        actions().selection().selectRoute(nullptr);
        sharedEditHistory().clear();
    }
}

TEST_F(UndoTest, ManyEditsComeBackInTheirOrder)
{
    std::vector<std::string> states{state()};
    actions().reverseRoute(trip);
    states.push_back(state());
    actions().removeWaypoints({b});
    states.push_back(state());
    actions().removeTrackLines({secondLine()});
    states.push_back(state());
    actions().removeRoutes({trip});
    for (auto it = states.rbegin(); it != states.rend(); ++it) {
        program.undo();
        EXPECT_EQ(state(), *it);
    }
    EXPECT_FALSE(sharedEditHistory().canUndo());
}

} // namespace
} // namespace kelvox
