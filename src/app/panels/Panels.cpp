#include "app/panels/Panels.h"

#include "app/AisLayer.h"
#include "app/ChartTools.h"
#include "app/InstrumentColumn.h"
#include "app/MainWindow.h"
#include "app/Text.h"
#include "app/VesselLayer.h"
#include "app/nav/ImportJob.h"
#include "app/nav/RouteLayer.h"
#include "app/nav/SteeringDisplay.h"
#include "app/nav/TrackLayer.h"
#include "app/panels/AisPanel.h"
#include "app/panels/AlarmsPanel.h"
#include "app/panels/ConnectionsPanel.h"
#include "app/panels/DevicesPanel.h"
#include "app/panels/GpsPanel.h"
#include "app/panels/InstrumentsPanel.h"
#include "app/panels/RoutesPanel.h"
#include "app/panels/TracksPanel.h"
#include "app/panels/WaypointsPanel.h"

#include <QSet>

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

void addLiveLayers(MainWindow& window)
{
    window.addLayer(std::make_unique<AisLayer>(window.program().live(), window));
    window.addLayer(std::make_unique<VesselLayer>(window));
    const LiveData& live = window.program().live();
    for (const auto signal :
         {&LiveData::staleChanged, &LiveData::anchorChanged, &LiveData::selectionChanged})
        QObject::connect(&live, signal, &window.chart(), qOverload<>(&QWidget::update));
    static const QSet<QString> drawn{
        QStringLiteral("showUnderway"),         QStringLiteral("showStationary"),
        QStringLiteral("showVesselNames"),      QStringLiteral("showAISClassB"),
        QStringLiteral("aisVectorMinutes"),     QStringLiteral("vesselLength"),
        QStringLiteral("vesselBeam"),           QStringLiteral("antennaFromBow"),
        QStringLiteral("antennaFromStarboard"), QStringLiteral("vesselVectorMinutes"),
        QStringLiteral("showHeadingLine"),      QStringLiteral("anchorDragDistance")};
    QObject::connect(&window.program(), &Program::settingChanged, &window.chart(),
                     [&chart = window.chart()](const QString& key) {
                         if (drawn.contains(key))
                             chart.update();
                     });
}

void addLiveCommands(MainWindow& window)
{
    Program& program = window.program();
    auto* anchor = window.commands().addSwitch(
        "vessel.anchorWatch", "NSMenuVessel", QKeySequence(Qt::Key_A), [&window](bool on) {
            GPSController& gps = window.program().live().gps();
            gps.setAnchorAlarm(on);
            if (on && !gps.anchorAlarm())
                window.showNote(text("NSNoGPSPositionData"));
        });
    QObject::connect(&program.live(), &LiveData::anchorChanged, anchor, [&program, anchor] {
        anchor->setChecked(program.live().gps().anchorAlarm());
    });
    auto* proximity =
        window.commands().addSwitch("ais.proximityAlarm", "NSMenuVessel", {}, [&program](bool on) {
            program.live().ais().setProximityAlarm(on);
        });
    QObject::connect(
        &program.live(), &LiveData::proximityAlarmChanged, proximity,
        [&program, proximity] { proximity->setChecked(program.live().ais().proximityAlarm()); });
}
} // namespace

void addPanelsAndLayers(MainWindow& window)
{
    addChartTools(window); // its layers lie lowest
    NavActions& navigation = addNavigation(window);
    addLiveLayers(window);
    addLiveCommands(window);
    window.addPanel(new GpsPanel(window));
    window.addPanel(new InstrumentsPanel(window));
    window.addPanel(new AisPanel(window));
    window.addPanel(new WaypointsPanel(navigation));
    window.addPanel(new RoutesPanel(navigation));
    window.addPanel(new TracksPanel(navigation));
    window.addPanel(new ConnectionsPanel(window));
    window.addPanel(new DevicesPanel(navigation));
    window.addPanel(new AlarmsPanel(window));
}

} // namespace kelvox
