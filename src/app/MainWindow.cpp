#include "app/MainWindow.h"

#include "app/AlarmBanner.h"
#include "app/Dialogs.h"
#include "app/FirstStartCard.h"
#include "app/FurnitureLayer.h"
#include "app/InstrumentColumn.h"
#include "app/Rail.h"
#include "app/SettingsDialog.h"
#include "app/StatusLine.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/TopBar.h"
#include "app/nav/NavText.h"
#include "app/panels/Panels.h"
#include "app/panels/WeatherPanel.h"
#include "base/Reversed.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace kelvox {

namespace {
constexpr auto rememberDelay = std::chrono::milliseconds(700); ///< after the last move of a drag

std::vector<std::filesystem::path> toPaths(const QStringList& names)
{
    std::vector<std::filesystem::path> paths;
    for (const QString& name : names)
        paths.emplace_back(name.toStdString());
    return paths;
}
} // namespace

MainWindow::MainWindow(Program& program)
    : m_program(program)
    , m_commands(*this, program.settings())
    , m_charts(program.executor(), program.library(), program.chartSharing(),
               program.places().cache / "charts.sqlite")
    , m_area(new QWidget(this))
    , m_chart(new ChartView(program.pool(), m_area))
    , m_topBar(new TopBar(program, m_commands, this))
    , m_rail(new Rail(this))
    , m_statusLine(new StatusLine(program, *m_chart, m_charts, this))
    , m_instruments(new InstrumentColumn(program, this))
    , m_panels(new PanelHost(*this, *m_area, program.settings()))
    , m_banner(new AlarmBanner(program.alarms(), *m_area))
    , m_overlays(*m_area, *m_chart, *m_panels, *m_banner)
    , m_openCharts(*this)
{
    setWindowTitle(QStringLiteral("Kelvox"));
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    setMinimumSize(QSize(640, 480).boundedTo(screen()->availableSize()));

    buildWindow();
    m_fileOpener.add(&isWeatherFile, [this](const FileOpener::Files& files) {
        if (auto* panel = qobject_cast<WeatherPanel*>(openPanel(QStringLiteral("weather"))))
            panel->open(files.back());
    });
    m_fileOpener.setFallback([this](const FileOpener::Files& files) { open(files); });
    buildCommands();
    m_rail->addAction(m_commands.action("chart.follow"), QStringLiteral("follow"),
                      QStringLiteral("follow"));
    connect(m_rail, &Rail::manOverboard, this, &MainWindow::manOverboard);
    connect(m_topBar, &TopBar::alarmsClicked, this,
            [this] { m_panels->toggle(QStringLiteral("alarms")); });
    m_layers.push_back(std::make_unique<FurnitureLayer>([this] { m_chart->northUp(); }));
    addPanelsAndLayers(*this);
    m_panels->arrange({"gps", "instruments", "ais", "waypoints", "routes", "tracks", "weather",
                       "charts", "display", "connections", "devices", "alarms"});
    m_rail->addPanels(*m_panels);
    addPanelCommands();
    m_topBar->buildMenu();
    setTool(nullptr);

    connectChart();
    connectProgram();
    m_rememberTimer.setSingleShot(true);
    m_rememberTimer.setInterval(rememberDelay);
    connect(&m_rememberTimer, &QTimer::timeout, this, &MainWindow::rememberWindow);
    connect(m_panels, &PanelHost::changed, &m_rememberTimer, qOverload<>(&QTimer::start));
    qApp->installEventFilter(this);
    m_chart->setFocus();
    restyle();
    restoreView();
    m_panels->restore();
    restoreState(
        QByteArray::fromBase64(QByteArray::fromStdString(program.settings().text("window.state"))));
    updateAlarms();
    for (const QString& message : program.startMessages())
        showNote(message);
}

MainWindow::~MainWindow()
{
    if (m_tool)
        m_tool->cancel(); // while there is a whole window to put it away in
    m_chart->setLayers({});
    m_panels->disconnect(this); // the panels go after this
}

void MainWindow::buildWindow()
{
    auto* central = new QWidget(this);
    auto* rows = new QVBoxLayout(central);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    auto* columns = new QHBoxLayout;
    columns->setSpacing(0);
    columns->addWidget(m_rail);
    columns->addWidget(m_area, 1);
    columns->addWidget(m_instruments);
    rows->addWidget(m_topBar);
    rows->addLayout(columns, 1);
    rows->addWidget(m_statusLine);
    setCentralWidget(central);
}

void MainWindow::connectProgram()
{
    for (const auto signal :
         {&LiveData::vesselChanged, &LiveData::staleChanged, &LiveData::connectionsChanged})
        connect(&m_program.live(), signal, this, &MainWindow::updateVessel);
    // What a fix brings comes one after the other: one picture for all of it, so this waits a
    // little longer than the vessel's own signal.
    m_redrawTimer.setSingleShot(true);
    m_redrawTimer.setInterval(std::chrono::milliseconds(30));
    connect(&m_redrawTimer, &QTimer::timeout, m_chart, qOverload<>(&QWidget::update));
    connect(&m_program.live(), &LiveData::targetsMoved, this, &MainWindow::redrawSoon);
    for (const auto signal : {&Program::tracksChanged, &Program::steeringChanged})
        connect(&m_program, signal, this, &MainWindow::redrawSoon);
    for (const auto signal :
         {&Program::waypointsChanged, &Program::routesChanged, &Program::weatherChanged})
        connect(&m_program, signal, m_chart, qOverload<>(&QWidget::update));
    connect(&m_program, &Program::schemeChanged, this, &MainWindow::restyle);
    connect(&m_program, &Program::settingChanged, this, &MainWindow::settingChanged);
    connect(&m_program, &Program::baseMapChanged, this, &MainWindow::updateScene);
    connect(&m_program, &Program::unitsChanged, this, [this] {
        updateScene();
        m_statusLine->updateView();
        m_statusLine->updateCursor();
        m_chart->update();
    });
    connect(&m_program.alarms(), &AlarmCenter::changed, this, &MainWindow::updateAlarms);
    connect(m_panels, &PanelHost::changed, this, &MainWindow::updateRail);
}

void MainWindow::buildCommands()
{
    Commands& c = m_commands;
    const std::string file = "NSMenuFile";
    const std::string view = "NSMenuView";
    const std::string edit = "NSMenuEdit";
    c.add("file.open", file, QKeySequence::Open, [this] { chooseFiles(); });
    c.add("file.openFolder", file, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
          [this] { chooseFolder(); });
    c.add("file.closeCharts", file, {}, [this] { m_openCharts.close(); });
    c.add("file.newWindow", file, QKeySequence::New, [this] {
        auto* other = new MainWindow(m_program);
        other->setAttribute(Qt::WA_DeleteOnClose);
        other->m_openCharts.takeOver(m_openCharts);
        other->m_chart->centerOn(m_chart->center());
        other->m_chart->setScale(m_chart->scale());
        // Side by side where the screen has room for both.
        const QRect room = screen()->availableGeometry();
        const int half = room.width() / 2;
        if (half >= minimumWidth() && !isFullScreen()) {
            showNormal();
            setGeometry(room.x(), room.y(), half, room.height());
            other->setGeometry(room.x() + half, room.y(), half, room.height());
        } else {
            other->move(pos() + QPoint(40, 40));
        }
        other->show();
    });
    c.add("file.save", file, QKeySequence::Save, [this] {
        m_program.save();
        showNote(text("NSSaved"));
    });
    c.add("file.quit", file, QKeySequence::Quit, [] { QApplication::closeAllWindows(); });
    c.add("edit.undo", edit, QKeySequence::Undo, [this] { m_program.undo(); });
    c.add("edit.redo", edit, QKeySequence::Redo, [this] { m_program.redo(); });

    c.add("chart.zoomIn", view, QKeySequence::ZoomIn, [this] { m_chart->zoomIn(); });
    c.add("chart.zoomOut", view, QKeySequence::ZoomOut, [this] { m_chart->zoomOut(); });
    c.add("chart.clickAtCross", view, QKeySequence(Qt::Key_Insert),
          [this] { m_chart->clickWithKeys(); });
    c.add("chart.fit", view, QKeySequence(Qt::Key_Home), [this] { m_openCharts.fitAll(); });
    c.addSwitch("chart.follow", view, QKeySequence(Qt::Key_F),
                [this](bool on) { setFollowing(on); });
    c.addSwitch("chart.courseUp", view, QKeySequence(Qt::Key_C),
                [this](bool on) { setCourseUp(on); });
    c.add("chart.northUp", view, QKeySequence(Qt::Key_Slash), [this] {
        setCourseUp(false);
        m_chart->northUp();
    });
    const std::pair<const char*, ColorScheme> schemes[] = {{"view.day", ColorScheme::Day},
                                                           {"view.dusk", ColorScheme::Dusk},
                                                           {"view.night", ColorScheme::Night}};
    for (const auto& [id, scheme] : schemes)
        c.addSwitch(id, view, {}, [this, scheme = scheme](bool) { m_program.setScheme(scheme); });
    c.add("view.nextScheme", view, QKeySequence(Qt::Key_N), [this] {
        m_program.setScheme(
            static_cast<ColorScheme>((static_cast<int>(m_program.scheme()) + 1) % 3));
    });
    c.addSwitch("view.instruments", view, QKeySequence(Qt::Key_I), [this](bool on) {
        fitInstruments();
        m_program.settings().set("window.instruments", on);
    });
    c.addSwitch("view.fullScreen", view, QKeySequence(Qt::Key_F11), [this](bool on) {
        setWindowState(on ? windowState() | Qt::WindowFullScreen
                          : windowState() & ~Qt::WindowFullScreen);
    });
    c.add("program.settings", file, QKeySequence(Qt::CTRL | Qt::Key_Comma),
          [this] { showSettings({}); });
    c.add("help.keys", "NSMenuHelp", QKeySequence::HelpContents,
          [this] { showSettings("NSSettings.Keys"); });
    c.add("vessel.manOverboard", "NSMenuVessel", QKeySequence(Qt::CTRL | Qt::Key_Space),
          [this] { manOverboard(); });
}

void MainWindow::addPanelCommands()
{
    const std::pair<const char*, int> panels[] = {
        {"gps", Qt::Key_4},         {"ais", Qt::Key_5},    {"instruments", Qt::Key_6},
        {"connections", Qt::Key_7}, {"alarms", Qt::Key_8}, {"devices", Qt::Key_9}};
    for (const auto& [name, key] : panels)
        if (m_panels->panel(QLatin1String(name)))
            m_commands.add(std::string("panel.") + name, "NSMenuView",
                           QKeySequence(Qt::CTRL | static_cast<Qt::Key>(key)),
                           [this, name = name] { m_panels->toggle(QLatin1String(name)); });
    m_commands.add("panel.close", "NSMenuView", QKeySequence(Qt::CTRL | Qt::Key_W),
                   [this] { m_panels->close(); });
    m_commands.add("alarms.acknowledge", "NSMenuVessel", QKeySequence(Qt::CTRL | Qt::Key_Return),
                   [this] {
                       if (const auto active = m_program.alarms().active(); !active.empty())
                           m_program.alarms().acknowledge(active.front().key);
                   });
}

void MainWindow::showSettings(const std::string& group)
{
    if (!m_settingsDialog)
        m_settingsDialog = new SettingsDialog(m_program, m_commands, this);
    if (!group.empty())
        m_settingsDialog->showGroup(group);
    m_settingsDialog->show();
    m_settingsDialog->raise();
    m_settingsDialog->activateWindow();
}

void MainWindow::settingChanged(const QString& key)
{
    if (key.startsWith(QLatin1String("show")) || key == QLatin1String("largeText"))
        updateScene();
    if (key == QLatin1String("simplifiedSymbols"))
        chooseSymbols();
    if (key == QLatin1String("language")) // when the control that changed it has done with it
        QTimer::singleShot(0, this, &MainWindow::changeLanguage);
    m_chart->update();
}

void MainWindow::changeLanguage()
{
    if (const auto taken =
            setTextLanguage(QString::fromStdString(m_program.settings().text("language")));
        !taken)
        showNote(QString::fromStdString(taken.error().message));
    // Words are asked for when a window is built: another takes the place of this one.
    rememberView();
    auto* other = new MainWindow(m_program);
    other->setAttribute(Qt::WA_DeleteOnClose);
    other->restoreGeometry(saveGeometry());
    other->m_openCharts.takeOver(m_openCharts);
    other->m_chart->setScale(m_chart->scale());
    other->m_chart->setRotation(m_chart->rotation());
    other->m_chart->centerOn(m_chart->center());
    for (const char* id : {"chart.follow", "chart.courseUp"})
        other->m_commands.action(id)->setChecked(m_commands.action(id)->isChecked());
    other->show();
    other->updateVessel();
    if (m_settingsDialog && m_settingsDialog->isVisible())
        other->showSettings({});
    hide();
    deleteLater();
}

void MainWindow::chooseSymbols()
{
    m_charts.changeSymbols([this] {
        const Settings& settings = m_program.settings();
        // Never symbolized boundaries, on purpose.
        m_program.library().setSymbols(false, !settings.boolean("simplifiedSymbols"));
    });
    updateScene();
}

void MainWindow::restyle()
{
    const Theme& theme = Theme::theme();
    m_topBar->restyle();
    m_rail->restyle();
    m_statusLine->restyle();
    m_instruments->setFixedWidth(theme.px(188));
    m_rail->layOut(height());
    fitInstruments();
    const auto scheme = static_cast<int>(m_program.scheme());
    const char* const ids[] = {"view.day", "view.dusk", "view.night"};
    for (int i = 0; i < 3; ++i)
        m_commands.action(ids[i])->setChecked(i == scheme);
    m_overlays.restyle();
    m_chart->setInterfaceScale(theme.scale());
    m_chart->setDimming(m_program.settings().number("dimming", 1));
    m_panels->restyle();
    m_banner->restyle();
    m_scene.portrayal = m_program.presentation().portrayal();
    const PaletteScheme palettes[] = {PaletteScheme::Day, PaletteScheme::Dusk,
                                      PaletteScheme::Night};
    m_scene.palette = palettes[scheme];
    if (m_scene.portrayal->colors.empty())
        showNote(text("NSNoColours"));
    updateScene();
    updateAlarms();
    updateRail();
    m_overlays.place();
}

void MainWindow::fitInstruments()
{
    // A narrow window belongs to the chart.
    const Theme& theme = Theme::theme();
    const bool room = width() - theme.px(64 + 188) >= theme.px(240);
    m_instruments->setVisible(room && m_commands.action("view.instruments")->isChecked());
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    m_rememberTimer.start();
    m_rail->layOut(height());
    fitInstruments();
    // The area gets its size with the layout, after this event.
    m_overlays.placeSoon();
}

bool MainWindow::eventFilter(QObject* object, QEvent* event)
{
    // The keys of a window rest while one of its dialogs is open. This one must not.
    const auto belongsHere = [this](QWidget* window) {
        while (window && window != this)
            window = window->parentWidget();
        return window == this;
    };
    if (event->type() == QEvent::KeyPress && object->isWindowType()
        && QApplication::activeWindow() != this && belongsHere(QApplication::activeWindow())) {
        const auto* const press = static_cast<QKeyEvent*>(event);
        QAction* const action = m_commands.action("vessel.manOverboard");
        if (!press->isAutoRepeat() && action->shortcut() == QKeySequence(press->keyCombination())) {
            action->trigger();
            return true;
        }
    }
    return QMainWindow::eventFilter(object, event);
}

void MainWindow::moveEvent(QMoveEvent* event)
{
    QMainWindow::moveEvent(event);
    m_rememberTimer.start();
}

void MainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        if (auto* action = m_commands.action("view.fullScreen"))
            action->setChecked(isFullScreen());
}

void MainWindow::addLayer(std::unique_ptr<ChartLayer> layer)
{
    // The glass with its furniture stays on top.
    m_layers.insert(m_layers.end() - 1, std::move(layer));
}

void MainWindow::addPanel(SidePanel* panel)
{
    m_panels->add(panel);
}

void MainWindow::setTool(ChartLayer* tool)
{
    m_tool = tool;
    std::vector<ChartLayer*> layers;
    for (const auto& layer : m_layers)
        layers.push_back(layer.get());
    if (tool)
        layers.push_back(tool);
    m_chart->setLayers(std::move(layers));
    m_chart->setCursor(tool ? Qt::CrossCursor : Qt::ArrowCursor);
}

SidePanel* MainWindow::openPanel(const QString& name)
{
    return m_panels->open(name);
}

void MainWindow::showPosition(Position position)
{
    setFollowing(false);
    m_chart->centerOn(position);
}

void MainWindow::showNote(const QString& note)
{
    m_overlays.showNote(note);
}

void MainWindow::showCard(const QString& title, QWidget* content)
{
    m_overlays.showCard(title, content);
}

void MainWindow::openFiles(const std::vector<std::filesystem::path>& files)
{
    m_fileOpener.open(files);
}

void MainWindow::setChartPlaces(const std::vector<std::filesystem::path>& places)
{
    m_openCharts.setPlaces(places);
}

int MainWindow::coveredWidth() const
{
    return m_panels->isHidden() ? 0 : m_panels->width();
}

void MainWindow::setSearch(QWidget* search)
{
    m_topBar->setSearch(search);
}

void MainWindow::offerRestore(const std::filesystem::path& report)
{
    auto* box = new QWidget;
    auto* rows = new QVBoxLayout(box);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    auto* words = new QLabel(text("NSCrashed", {QString::fromStdString(report.string())}), box);
    words->setWordWrap(true);
    rows->addWidget(words);
    const auto addButton = [&](const char* name, const char* key, auto run) {
        auto* button = new QPushButton(text(key), box);
        button->setObjectName(QLatin1String(name));
        button->setMinimumHeight(Theme::theme().px(40));
        connect(button, &QPushButton::clicked, this, [this, run] {
            showCard({}, nullptr);
            run();
        });
        rows->addWidget(button);
    };
    addButton("restoreView", "NSRestoreView", [this] {
        if (!openRemembered())
            openDemo();
    });
    addButton("startAfresh", "NSStartAfresh", [this] { openDemo(); });
    showCard(text("NSCrashTitle"), box);
}

void MainWindow::showMenu(const ChartPointer& pointer)
{
    QMenu menu(this);
    const ViewFrame frame = m_chart->frame();
    for (const auto& layer : Reversed(m_layers))
        layer->addToMenu(menu, pointer, frame);
    menu.addAction(text("NSCentreHere"), this, [this, pointer] { showPosition(pointer.position); });
    menu.exec(m_chart->mapToGlobal(pointer.at.toPoint()));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    rememberView();
    QMainWindow::closeEvent(event);
}

void MainWindow::restoreView()
{
    const Settings& settings = m_program.settings();
    const auto bytes = [&](const char* key) {
        return QByteArray::fromBase64(QByteArray::fromStdString(settings.text(key)));
    };
    if (!restoreGeometry(bytes("window.geometry")))
        resize(QSize(1280, 800).boundedTo(screen()->availableSize()));
    const bool instruments = settings.boolean("window.instruments", true);
    m_commands.action("view.instruments")->setChecked(instruments);
    fitInstruments();
}

void MainWindow::rememberWindow()
{
    Settings& settings = m_program.settings();
    settings.set("window.geometry", saveGeometry().toBase64().toStdString());
    settings.set("window.state", saveState().toBase64().toStdString());
    m_panels->remember();
}

void MainWindow::rememberView()
{
    Settings& settings = m_program.settings();
    settings.set("chart.scale", static_cast<long long>(m_chart->scale()));
    const Position center = m_chart->center();
    settings.set("chart.latitude", center.latitude);
    settings.set("chart.longitude", center.longitude);
    rememberWindow();
}

void MainWindow::open(const std::vector<std::filesystem::path>& paths)
{
    m_openCharts.open(paths);
}

bool MainWindow::openRemembered()
{
    if (!m_openCharts.openRemembered())
        return false;
    const Settings& settings = m_program.settings();
    if (settings.find("chart.follow"))
        setFollowing(settings.boolean("chart.follow"));
    return true;
}

void MainWindow::openDemo()
{
    constexpr int demoScale = 50'000;
    const auto& resources = m_program.places().resources;
    m_openCharts.openDemo();
    m_chart->setScale(demoScale);
    setFollowing(true);
    if (m_program.live().isConnected())
        return; // invented positions have no place among real ones
    if (const auto started = m_program.live().simulate(resources / "simulation.json"); !started)
        showNote(QString::fromStdString(started.error().message));
    else // the first fix is a second away, the chart is wanted now
        m_chart->centerOn(m_program.live().simulator().position());
    if (FirstStartCard::isWanted(m_program.settings()))
        showCard(text("NSWelcome"), new FirstStartCard(*this));
}

void MainWindow::setFollowing(bool on)
{
    m_commands.action("chart.follow")->setChecked(on);
    if (on)
        updateVessel();
}

void MainWindow::setCourseUp(bool on)
{
    m_commands.action("chart.courseUp")->setChecked(on);
    if (on)
        setFollowing(true);
    else
        m_chart->northUp();
}

void MainWindow::updateVessel()
{
    const GPSController& gps = m_program.live().gps();
    m_statusLine->updateVessel();
    if (gps.position().isKnown() && m_commands.action("chart.follow")->isChecked()) {
        const bool courseUp = m_commands.action("chart.courseUp")->isChecked();
        if (courseUp && isKnown(gps.courseOverGround()))
            m_chart->setRotation(gps.courseOverGround());
        // Course up, more of the water ahead is worth seeing.
        m_chart->keepAt(gps.position(), {0.5, courseUp ? 0.7 : 0.5});
    }
    redrawSoon();
}

void MainWindow::redrawSoon()
{
    if (!m_redrawTimer.isActive())
        m_redrawTimer.start();
}

void MainWindow::manOverboard()
{
    const Position position = m_program.live().gps().position();
    if (!position.isKnown()) {
        showNote(text("NSNoGPSPositionData"));
        return;
    }
    const QString name = QStringLiteral("MOB %1").arg(
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH.mm.ss")));
    const auto waypoint = m_program.waypointController().createWaypoint(
        name.toStdString(), {}, 0, WaypointsModel::GroupCode::None, position.longitude,
        position.latitude);
    m_program.routeController().cancelRoute();
    m_program.waypointController().onWaypointGoto(waypoint);
    // The vessel is there at this moment; an arrival alarm would only talk over this one.
    m_program.waypointController().setWaypointArrivalAlarm(false);
    m_program.alarms().show({.key = "NSManOverboard",
                             .message = text("NSManOverboard").toStdString(),
                             .informativeText = navtext::position(position).toStdString(),
                             .button = text("NSOK").toStdString()});
    if (m_program.settings().boolean("audio"))
        m_program.alarms().speak(text("NSManOverboard").toStdString());
    setFollowing(true);
}

void MainWindow::connectChart()
{
    connect(m_chart, &ChartView::viewChanged, m_statusLine, &StatusLine::updateView);
    connect(m_chart, &ChartView::cursorMoved, m_statusLine, &StatusLine::updateCursor);
    connect(m_chart, &ChartView::pathsDropped, this,
            [this](const QStringList& names) { openFiles(toPaths(names)); });
    connect(m_chart, &ChartView::menuRequested, this, &MainWindow::showMenu);
    connect(m_chart, &ChartView::panned, this, [this] { setFollowing(false); });
    connect(m_chart, &ChartView::viewChanged, this, [this] { m_charts.setView(m_chart->frame()); });
    connect(&m_charts, &ChartSet::sceneChanged, this, [this] {
        m_charts.fill(m_scene);
        updateScene();
    });
    connect(&m_openCharts, &OpenCharts::found, m_statusLine, &StatusLine::updateView);
    connect(&m_charts, &ChartSet::progress, m_statusLine, &StatusLine::showProgress);
    connect(&m_charts, &ChartSet::failed, this, &MainWindow::showNote);
    chooseSymbols();
}

void MainWindow::updateScene()
{
    const Settings& settings = m_program.settings();
    m_scene.settings.loadSettings(settings);
    m_scene.baseMap = m_program.baseMap();
    m_scene.settings.showAtAllScales = settings.boolean("showAtAllScales");
    m_scene.settings.largeText = settings.boolean("largeText");
    m_scene.settings.depthUnit = UnitsModel::units().waterDepthUnits;
    m_scene.settings.heightsInMetres = UnitsModel::units().heightsInMetres();
    m_chart->setScene(std::make_shared<const ChartScene>(m_scene));
    m_statusLine->updateView();
}

void MainWindow::updateRail()
{
    m_rail->markOpen(*m_panels);
    m_overlays.place();
}

void MainWindow::updateAlarms()
{
    m_topBar->updateAlarms();
    m_overlays.place(); // what lies below the banner has moved
    const auto active = m_program.alarms().active();
    const auto newest = active.empty() ? std::chrono::system_clock::time_point()
                                       : std::ranges::max(active, {}, &AlarmEntry::raised).raised;
    if (newest > std::exchange(m_newestAlarm, newest) && isVisible()) {
        // It must be seen to be acknowledged; full screen stays full screen.
        setWindowState(windowState() & ~Qt::WindowMinimized);
        raise();
        QApplication::alert(this);
    }
}

void MainWindow::chooseFiles()
{
    const auto names = askForFiles(*this, text("NSOpenTitle"), text("NSOpenFilter"));
    if (!names.isEmpty())
        openFiles(toPaths(names));
}

void MainWindow::chooseFolder()
{
    const auto name = askForFolder(*this, text("NSOpenFolderTitle"));
    if (!name.isEmpty())
        openFiles(toPaths({name}));
}

} // namespace kelvox
