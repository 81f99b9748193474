#include "app/nav/NavActions.h"

#include "app/ChartView.h"
#include "app/Commands.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/ExportDialog.h"
#include "app/nav/ImportJob.h"
#include "app/nav/NavRecords.h"
#include "app/nav/NavText.h"
#include "app/nav/PrintJob.h"
#include "app/nav/RouteTool.h"
#include "app/panels/DevicesPanel.h"
#include "app/panels/RoutesPanel.h"
#include "app/panels/TracksPanel.h"
#include "app/panels/WaypointsPanel.h"
#include "navigation/NavMath.h"
#include "navigation/TrackLines.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr const char* menuGroup = "NSMenuNavigation";

/// A box of degrees around positions, the short way round the earth.
Rect boundsOf(const std::vector<Position>& positions)
{
    Rect box;
    double before = 0;
    for (const Position& position : positions) {
        double longitude = position.longitude;
        if (!box.isEmpty())
            longitude += 360 * std::round((before - longitude) / 360);
        before = longitude;
        box.include(Point{longitude, position.latitude});
    }
    return box;
}

std::vector<std::filesystem::path> filesToImport(QWidget& window)
{
    std::vector<std::filesystem::path> files;
    for (const QString& name : askForFiles(window, text("NSImportTitle"), text("NSImportFilter")))
        files.emplace_back(name.toStdString());
    return files;
}
} // namespace

NavActions::NavActions(ChartHost& host, NavSelection& selection, QObject* parent)
    : QObject(parent)
    , m_host(host)
    , m_selection(selection)
    , m_editor(host.program().waypoints(), host.program().routes())
{
    m_routeTool = std::make_unique<RouteTool>(
        host, [this](QPointF at) { return m_waypointAt ? m_waypointAt(at) : nullptr; });
    const auto redraw = [this] { m_host.chart().update(); };
    connect(&selection, &NavSelection::changed, this, redraw);
    connect(&selection, &NavSelection::hoverChanged, this, redraw);
    addCommands();
}

NavActions::~NavActions() = default;

void NavActions::addCommands()
{
    Commands& c = m_host.commands();
    c.add("nav.dropAtVessel", menuGroup, QKeySequence(Qt::Key_Space), [this] {
        // Space also presses buttons; a button with the focus comes first.
        if (auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget()))
            button->click();
        else if (auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget()))
            box->showPopup();
        else
            dropAtVessel();
    });
    c.add("nav.startRoute", menuGroup, QKeySequence(Qt::Key_R), [this] { startRoute(); });
    c.add("nav.stop", menuGroup, QKeySequence(Qt::CTRL | Qt::Key_Period),
          [this] { stopNavigating(); });
    c.add("nav.newTrackLine", menuGroup, {}, [this] { newTrackLine(); });
    const std::tuple<const char*, const char*, bool> switches[] = {
        {"nav.showWaypoints", "showWaypoints", true},
        {"nav.showNames", "showWaypointNames", true},
        {"nav.showRoutes", "showRoutes", true},
        {"nav.showTracks", "showTracks", true},
        {"nav.lock", "lockWaypoints", false},
        {"nav.simulatorSteers", "simulatorSteersToWaypoint", false}};
    for (const auto& [id, setting, standard] : switches)
        addSwitch(id, setting, standard);
    const std::tuple<const char*, const char*, QKeySequence> panels[] = {
        {"nav.waypoints", "waypoints", QKeySequence(Qt::CTRL | Qt::Key_1)},
        {"nav.routes", "routes", QKeySequence(Qt::CTRL | Qt::Key_2)},
        {"nav.tracks", "tracks", QKeySequence(Qt::CTRL | Qt::Key_3)}};
    for (const auto& [id, panel, key] : panels)
        c.add(id, menuGroup, key,
              [this, name = QString::fromLatin1(panel)] { m_host.openPanel(name); });
    // Both lead to where the receiver and what to send are chosen.
    for (const char* id : {"device.receive", "device.send"})
        c.add(id, "NSMenuFile", {}, [this] { m_host.openPanel(QStringLiteral("devices")); });
    c.add("file.import", "NSMenuFile", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I),
          [this] { importFiles(); });
    c.add("file.export", "NSMenuFile", QKeySequence(Qt::CTRL | Qt::Key_E),
          [this] { exportRecords(); });
    c.add("file.print", "NSMenuFile", QKeySequence::Print, [this] { printChart(); });
    c.add("file.printRoute", "NSMenuFile", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P),
          [this] { printRoute(m_selection.route()); });
}

void NavActions::addSwitch(const std::string& id, const char* setting, bool standard)
{
    auto* action = m_host.commands().addSwitch(
        id, menuGroup, {}, [this, setting](bool on) { program().settings().set(setting, on); });
    const auto update = [this, action, setting, standard] {
        action->setChecked(program().settings().boolean(setting, standard));
    };
    update();
    connect(&program(), &Program::settingChanged, action,
            [this, update, setting](const QString& key) {
                if (key != QLatin1String(setting))
                    return;
                update();
                m_host.chart().update();
            });
}

bool NavActions::isLocked()
{
    return program().settings().boolean("lockWaypoints");
}

WaypointPointer NavActions::dropWaypoint(Position position)
{
    auto waypoint = m_editor.dropWaypoint(position);
    if (!waypoint)
        return nullptr;
    m_selection.selectWaypoint(waypoint);
    m_host.showNote(text("NSWaypointDropped",
                         {QString::fromStdString(waypoint->name), navtext::position(position)}));
    return waypoint;
}

void NavActions::dropAtVessel()
{
    const Position position = program().live().gps().position();
    if (!position.isKnown())
        m_host.showNote(text("NSNoPositionForWaypoint"));
    else
        dropWaypoint(position);
}

void NavActions::gotoWaypoint(const WaypointPointer& waypoint)
{
    if (!waypoint)
        return;
    if (program().waypointController().isGotoWaypointFromGPS()) {
        notFollowing();
        return;
    }
    program().routeController().cancelRoute();
    if (program().waypointController().onWaypointGoto(waypoint))
        m_host.showNote(text("NSGoingTo", {QString::fromStdString(waypoint->name)}));
}

void NavActions::notFollowing()
{
    m_host.showNote(
        text("NSReceiverSteers",
             {QString::fromStdString(program().waypointController().activeWaypointName())}));
}

void NavActions::gotoPosition(Position position)
{
    gotoWaypoint(dropWaypoint(position));
}

void NavActions::removeWaypoints(const std::vector<WaypointPointer>& waypoints)
{
    if (waypoints.empty())
        return;
    const QString first = QString::fromStdString(waypoints.front()->name);
    const auto& active = program().waypointController().gotoWaypoint();
    if (active && std::ranges::find(waypoints, active) != waypoints.end())
        stopNavigating();
    m_editor.removeWaypoints(waypoints);
    m_host.showNote(countedText("NSWaypointsDeleted", waypoints.size(), {first}));
}

void NavActions::openWaypoint(const WaypointPointer& waypoint)
{
    m_host.showCard({}, nullptr);
    if (auto* panel = dynamic_cast<WaypointsPanel*>(m_host.openPanel(QStringLiteral("waypoints"))))
        panel->show(waypoint);
}

void NavActions::showWaypointCard(const WaypointPointer& waypoint)
{
    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    QString words = navtext::position(waypoint->positionOnGPS());
    if (const Position vessel = program().live().gps().position(); vessel.isKnown()) {
        const Position there = waypoint->positionOnGPS();
        words += QLatin1Char('\n')
            + text("NSFromVessel",
                   {navtext::distance(NavMath::distanceFromPoint(vessel, there)),
                    navtext::bearing(program(), NavMath::bearingFromPoint(vessel, there))});
    }
    if (!waypoint->description.empty())
        words += QLatin1Char('\n') + QString::fromStdString(waypoint->description);
    auto* label = new QLabel(words, content);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    rows->addWidget(label);
    auto* buttons = new FlowLayout;
    const auto add = [&](const char* key, auto run) {
        auto* button = new QPushButton(text(key), content);
        button->setMinimumHeight(Theme::theme().px(40));
        connect(button, &QPushButton::clicked, this, run);
        buttons->add(button, FlowLayout::Grow::Yes);
    };
    const bool isActive = program().waypointController().gotoWaypoint() == waypoint;
    add(isActive ? "NSStopNavigating" : "NSGoto", [this, waypoint, isActive] {
        m_host.showCard({}, nullptr);
        if (isActive)
            stopNavigating();
        else
            gotoWaypoint(waypoint);
    });
    add("NSEdit", [this, waypoint] { openWaypoint(waypoint); });
    add("NSDelete", [this, waypoint] {
        m_host.showCard({}, nullptr);
        removeWaypoints({waypoint});
    });
    rows->addLayout(buttons);
    m_host.showCard(QString::fromStdString(waypoint->name), content);
}

void NavActions::startRoute()
{
    m_routeTool->begin({}, 0, [this](const std::vector<RoutePlace>& places) {
        openRoute(m_editor.makeRoute(places));
    });
}

void NavActions::startRouteAt(const RoutePlace& place)
{
    m_routeTool->begin({place}, 0, [this](const std::vector<RoutePlace>& places) {
        openRoute(m_editor.makeRoute(places));
    });
}

void NavActions::extendRoute(const RoutePointer& route)
{
    if (!route)
        return;
    std::vector<RoutePlace> start;
    for (const auto& reference : route->waypointReferences())
        if (reference->waypoint && reference->waypoint->hasPosition())
            start.push_back({reference->waypoint->positionOnGPS(), reference->waypoint});
    const auto fixed = start.size();
    m_routeTool->begin(
        std::move(start), fixed, [this, route, fixed](const std::vector<RoutePlace>& places) {
            m_editor.extend(route,
                            {places.begin() + static_cast<std::ptrdiff_t>(fixed), places.end()});
            openRoute(route);
        });
}

void NavActions::followRoute(const RoutePointer& route, std::size_t index)
{
    if (!route)
        return;
    RouteController& controller = program().routeController();
    if (program().waypointController().isGotoWaypointFromGPS()) {
        notFollowing();
        return;
    }
    if (!controller.onRouteGoto(route, route->waypointReference(index))) {
        m_host.showNote(text("NSRouteIsEmpty"));
        return;
    }
    controller.setAutoNext(program().settings().boolean("routeAutoNext", true));
    m_host.showNote(
        text("NSFollowingRoute",
             {QString::fromStdString(route->name),
              QString::fromStdString(program().waypointController().activeWaypointName())}));
}

void NavActions::stopNavigating()
{
    program().routeController().cancelRoute();
}

void NavActions::removeRoutes(const std::vector<RoutePointer>& routes)
{
    if (routes.empty())
        return;
    const QString first = QString::fromStdString(routes.front()->name);
    const auto& active = program().routeController().gotoRoute();
    if (active && std::ranges::find(routes, active) != routes.end())
        stopNavigating();
    m_editor.removeRoutes(routes);
    m_host.showNote(countedText("NSRoutesDeleted", routes.size(), {first}));
}

void NavActions::openRoute(const RoutePointer& route, std::size_t index)
{
    if (!route)
        return;
    if (auto* panel = dynamic_cast<RoutesPanel*>(m_host.openPanel(QStringLiteral("routes"))))
        panel->show(route, index);
}

void NavActions::reverseRoute(const RoutePointer& route)
{
    if (route)
        program().routeController().onRouteInvert(route);
}

void NavActions::splitRoute(const RoutePointer& route, std::size_t index)
{
    if (const auto second = m_editor.split(route, index))
        m_host.showNote(
            text("NSRouteSplit",
                 {QString::fromStdString(route->name), QString::fromStdString(second->name)}));
    else
        m_host.showNote(text("NSCannotSplit"));
}

void NavActions::copyRoute(const RoutePointer& route)
{
    openRoute(m_editor.copy(route));
}

void NavActions::routeFromTrack(std::size_t firstOfLine)
{
    const TracksModel& tracks = program().tracks();
    std::vector<TrackPointer> points;
    for (const TrackLine& line : trackLines(tracks))
        if (line.first == firstOfLine)
            for (std::size_t i = 0; i < line.count; ++i)
                points.push_back(tracks.track(line.first + i));
    const auto route = program().routeController().onRouteNewFromTrack(points);
    if (!route) {
        m_host.showNote(text("NSTrackTooShort"));
        return;
    }
    openRoute(route);
    m_host.showNote(
        countedText("NSRouteMadeFromTrack", route->count(), {QString::fromStdString(route->name)}));
}

void NavActions::newTrackLine()
{
    program().trackController().onTrackNew();
    m_host.showNote(text("NSNewTrackLineBegins"));
}

void NavActions::removeTrackLines(std::vector<std::size_t> firstPoints)
{
    if (firstPoints.empty())
        return;
    TracksModel& tracks = program().tracks();
    std::size_t removed = 0;
    {
        const EditHistory::Group step(tracks.history());
        auto lines = trackLines(tracks);
        std::ranges::reverse(lines); // from the end, so that the indexes before stay right
        for (const TrackLine& line : lines)
            if (std::ranges::find(firstPoints, line.first) != firstPoints.end()) {
                tracks.remove(line.first, line.count);
                removed += line.count;
            }
    }
    m_host.showNote(countedText("NSTrackPointsDeleted", removed));
}

void NavActions::openTrack(std::size_t firstOfLine)
{
    if (auto* panel = dynamic_cast<TracksPanel*>(m_host.openPanel(QStringLiteral("tracks"))))
        panel->show(firstOfLine);
}

void NavActions::showOnChart(const std::vector<Position>& positions)
{
    std::vector<Position> known;
    for (const Position& position : positions)
        if (position.isKnown())
            known.push_back(position);
    if (known.empty())
        return;
    const Rect box = boundsOf(known);
    constexpr double aboutAMile = 1.0 / 60;
    m_host.showPosition(known.front()); // ends following
    if (box.width() < aboutAMile / 20 && box.height() < aboutAMile / 20)
        return;
    m_host.chart().showBounds(box.grownBy(box.width() * 0.1, box.height() * 0.1));
}

void NavActions::showRoute(const RoutePointer& route)
{
    if (!route)
        return;
    std::vector<Position> positions;
    for (const auto& reference : route->waypointReferences())
        if (reference->waypoint)
            positions.push_back(reference->waypoint->positionOnGPS());
    showOnChart(positions);
}

void NavActions::addWaypointToMenu(QMenu& menu, const WaypointPointer& waypoint)
{
    const QString name = QString::fromStdString(waypoint->name);
    menu.addAction(text("NSGotoNamed", {name}), this, [this, waypoint] { gotoWaypoint(waypoint); });
    menu.addAction(text("NSEditNamed", {name}), this, [this, waypoint] { openWaypoint(waypoint); });
    menu.addAction(text("NSSendNamed", {name}), this, [this, waypoint, name] {
        ExchangeRecords records;
        records.waypoints.push_back(*waypoint);
        sendToReceiver(name, std::move(records));
    });
    menu.addAction(text("NSDeleteNamed", {name}), this,
                   [this, waypoint] { removeWaypoints({waypoint}); });
}

void NavActions::addRouteToMenu(QMenu& menu, const RoutePointer& route, std::size_t index)
{
    const QString name = QString::fromStdString(route->name);
    menu.addAction(text("NSFollowNamed", {name}), this,
                   [this, route, index] { followRoute(route, index); });
    menu.addAction(text("NSOpenNamed", {name}), this,
                   [this, route, index] { openRoute(route, index); });
    menu.addAction(text("NSExtendRoute"), this, [this, route] { extendRoute(route); });
    menu.addAction(text("NSReverseRoute"), this, [this, route] { reverseRoute(route); });
    menu.addAction(text("NSSendNamed", {name}), this, [this, route, name] {
        ExchangeRecords records;
        addRoute(*route, records);
        sendToReceiver(name, std::move(records));
    });
    menu.addAction(text("NSDeleteNamed", {name}), this, [this, route] { removeRoutes({route}); });
}

void NavActions::sendToReceiver(const QString& name, ExchangeRecords records)
{
    if (auto* panel = dynamic_cast<DevicesPanel*>(m_host.openPanel(QStringLiteral("devices"))))
        panel->choose(name, std::move(records));
}

void NavActions::importFiles()
{
    if (auto files = filesToImport(m_host.window()); !files.empty())
        ImportJob::start(*this, std::move(files));
}

void NavActions::importRoutes()
{
    if (auto files = filesToImport(m_host.window()); !files.empty())
        ImportJob::start(*this, std::move(files), ImportJob::As::Routes);
}

void NavActions::importTracks()
{
    if (auto files = filesToImport(m_host.window()); !files.empty())
        ImportJob::start(*this, std::move(files), ImportJob::As::Tracks);
}

void NavActions::exportRecords()
{
    ExportDialog dialog(*this);
    dialog.exec();
}

void NavActions::printRoute(const RoutePointer& route)
{
    if (!route || route->count() == 0)
        m_host.showNote(text("NSSelectRouteFirst"));
    else
        PrintJob::askAndStart(*this, route);
}

void NavActions::printChart()
{
    PrintJob::askAndStart(*this, nullptr);
}

} // namespace kelvox
