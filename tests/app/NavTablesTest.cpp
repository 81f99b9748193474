#include "app/NavScene.h"

#include "app/panels/ListView.h"
#include "app/panels/RouteTables.h"
#include "app/panels/RoutesPanel.h"
#include "app/panels/TrackTable.h"
#include "app/panels/WaypointTable.h"
#include "app/panels/WaypointsPanel.h"

#include <QLabel>
#include <QLineEdit>

namespace kelvox {
namespace {

class NavTables : public NavScene {
protected:
    static QStringList names(const QAbstractItemModel& model)
    {
        QStringList result;
        for (int row = 0; row < model.rowCount(); ++row)
            result << model.index(row, 0).data().toString();
        return result;
    }
    QLineEdit* field(const QWidget* panel, const char* accessibleName)
    {
        for (auto* edit : panel->findChildren<QLineEdit*>())
            if (edit->accessibleName() == QLatin1String(accessibleName))
                return edit;
        ADD_FAILURE() << accessibleName;
        return nullptr;
    }
    static void enter(QLineEdit* edit, const QString& words)
    {
        edit->setText(words);
        edit->setModified(true);
        emit edit->editingFinished();
    }
};

TEST_F(NavTables, SelectionStaysWithItsWaypointWhateverArrives)
{
    waypoint("Buoy 10", {500, 300});
    waypoint("Buoy 4", {450, 300});
    WaypointTable table(program);
    EXPECT_EQ(names(table), QStringList({"Buoy 4", "Buoy 10"}));
    const QPersistentModelIndex kept = table.index(1, 0);
    waypoint("Anchorage", {400, 300});
    table.refresh();
    EXPECT_EQ(kept.row(), 2);
    EXPECT_EQ(kept.data().toString(), "Buoy 10");
    table.sort(WaypointTable::Name, Qt::DescendingOrder);
    EXPECT_EQ(kept.row(), 0);
    table.setSearch(QStringLiteral("anch"));
    EXPECT_FALSE(kept.isValid()) << "it is not found by the search";
    EXPECT_EQ(names(table), QStringList({"Anchorage"}));
}

TEST_F(NavTables, WaypointFieldsAreTakenOrToldWhyNot)
{
    const auto buoy = waypoint("BUOY", {500, 300});
    waypoint("OTHER", {450, 300});
    auto* panel = dynamic_cast<WaypointsPanel*>(window.openPanel(QStringLiteral("waypoints")));
    ASSERT_TRUE(panel);
    panel->show(buoy);
    const auto reason = [&]() -> QString {
        for (auto* label : panel->findChildren<QLabel*>())
            if (label->property("role") == QStringLiteral("bad") && label->isVisible())
                return label->text();
        return {};
    };
    enter(field(panel, "Latitude"), QStringLiteral("55°30.000'N"));
    EXPECT_NEAR(buoy->latitude, 55.5, 1e-5);
    EXPECT_EQ(reason(), QString());
    enter(field(panel, "Latitude"), QStringLiteral("95°30.000'N"));
    EXPECT_NEAR(buoy->latitude, 55.5, 1e-5) << "refused";
    EXPECT_FALSE(reason().isEmpty());
    EXPECT_EQ(field(panel, "Latitude")->text(), "95°30.000'N") << "to be mended, not typed again";
    enter(field(panel, "Name"), QStringLiteral("OTHER"));
    EXPECT_EQ(buoy->name, "BUOY");
    EXPECT_FALSE(reason().isEmpty());
    enter(field(panel, "Name"), QStringLiteral("  GREEN 1 "));
    EXPECT_EQ(buoy->name, "GREEN 1");
}

TEST_F(NavTables, AClickOnTheChartSelectsInTheListAndTheOtherWayRound)
{
    const auto a = waypoint("A", {400, 300});
    const auto b = waypoint("B", {600, 300});
    auto* panel = window.openPanel(QStringLiteral("waypoints"));
    settle();
    auto* list = panel->findChild<ListView*>();
    click({600, 300});
    ASSERT_EQ(list->selectedRows(), QList<int>({1}));
    list->setCurrentIndex(list->model()->index(0, 0));
    EXPECT_EQ(actions().selection().waypoint(), a);
    program.waypoints().remove(a);
    QApplication::processEvents();
    EXPECT_EQ(actions().selection().waypoint(), nullptr);
}

TEST_F(NavTables, RoutePointsShowLegsOrSums)
{
    const auto trip = route(
        "Trip", {waypoint("A", {300, 300}), waypoint("B", {400, 300}), waypoint("C", {500, 300})});
    RoutePointTable table(program);
    table.show(trip, 5);
    if (!program.routes().showsCumulativeDistance())
        program.routes().toggleDistance();
    const auto distance = [&](int row) {
        return table.index(row, RoutePointTable::Distance).data().toString();
    };
    const QString sum = distance(2);
    program.routes().toggleDistance();
    EXPECT_EQ(distance(1), distance(2)) << "legs of the same length";
    EXPECT_NE(sum, distance(2));
    program.routes().toggleDistance();
    EXPECT_EQ(distance(0), QString());
}

} // namespace
} // namespace kelvox
