#include "app/panels/Panels.h"

#include "app/InstrumentColumn.h"
#include "app/MainWindow.h"
#include "app/nav/ImportJob.h"
#include "app/nav/RouteLayer.h"
#include "app/nav/SteeringDisplay.h"
#include "app/nav/TrackLayer.h"
#include "app/panels/AlarmsPanel.h"
#include "app/panels/RoutesPanel.h"
#include "app/panels/TracksPanel.h"
#include "app/panels/WaypointsPanel.h"

namespace kelvox {

namespace {
/// Waypoints, routes and tracks: what is drawn of them, and what ties chart and panels together.
NavActions& addNavigation(MainWindow& window)
{
    auto* selection = new NavSelection(window.program(), &window);
    auto* actions = new NavActions(window, *selection, &window);
    window.addLayer(std::make_unique<TrackLayer>(*actions));
    auto routes = std::make_unique<RouteLayer>(*actions);
    actions->setWaypointFinder(
        [layer = routes.get()](QPointF at) { return layer->waypointAt(at); });
    window.addLayer(std::move(routes));
    window.instruments().setFooter(new SteeringDisplay(*actions, &window.instruments()));
    window.fileOpener().add(&ImportJob::canRead, [actions](const FileOpener::Files& files) {
        ImportJob::start(*actions, files);
    });
    return *actions;
}
} // namespace

void addPanelsAndLayers(MainWindow& window)
{
    NavActions& navigation = addNavigation(window);
    window.addPanel(new WaypointsPanel(navigation));
    window.addPanel(new RoutesPanel(navigation));
    window.addPanel(new TracksPanel(navigation));
    window.addPanel(new AlarmsPanel(window));
}

} // namespace kelvox
