#include "app/MainWindow.h"

#include "app/FirstStartCard.h"
#include "app/FurnitureLayer.h"
#include "app/InstrumentColumn.h"
#include "app/SettingsDialog.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/panels/Panels.h"
#include "app/panels/WeatherPanel.h"
#include "navigation/NavMath.h"
#include "navigation/ValueFormatters.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScroller>
#include <QShortcut>

#include <cmath>

namespace kelvox {

namespace {
constexpr auto noteTime = std::chrono::seconds(6);
constexpr auto rememberDelay = std::chrono::milliseconds(700); ///< after the last move of a drag

std::vector<std::filesystem::path> toPaths(const QStringList& names)
{
    std::vector<std::filesystem::path> paths;
    for (const QString& name : names)
        paths.emplace_back(name.toStdString());
    return paths;
}

QFrame* makeFrame(const QString& name, QWidget* parent)
{
    auto* frame = new QFrame(parent);
    frame->setObjectName(name);
    frame->setAutoFillBackground(true);
    return frame;
}

/// Large, round and red: found without reading.
class MobButton final : public QPushButton {
public:
    explicit MobButton(QWidget* parent)
        : QPushButton(QStringLiteral("MOB"), parent)
    {
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Theme& theme = Theme::theme();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double line = theme.px(3);
        painter.setBrush(isDown() ? theme.colors().red.darker(130) : theme.colors().red);
        painter.setPen(hasFocus() ? QPen(theme.colors().text, line) : QPen(Qt::NoPen));
        const double inset = hasFocus() ? line / 2 : 0;
        painter.drawEllipse(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
        QFont words = font();
        words.setPixelSize(theme.px(15));
        words.setBold(true);
        painter.setFont(words);
        painter.setPen(theme.colors().background);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

QToolButton* makeButton(QWidget* parent, const QString& name)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}
} // namespace

MainWindow::MainWindow(Program& program)
    : m_program(program)
    , m_commands(*this, program.settings())
    , m_charts(program.executor(), program.library(), program.chartSharing(),
               program.places().cache / "charts.sqlite")
    , m_area(new QWidget(this))
    , m_chart(new ChartView(program.pool(), m_area))
    , m_topBar(makeFrame(QStringLiteral("topBar"), this))
    , m_rail(makeFrame(QStringLiteral("rail"), this))
    , m_statusLine(makeFrame(QStringLiteral("statusLine"), this))
    , m_instruments(new InstrumentColumn(program, this))
    , m_panels(new PanelHost(*this, *m_area, program.settings()))
    , m_banner(new AlarmBanner(program.alarms(), *m_area))
    , m_mobButton(new MobButton(this))
    , m_note(new QLabel(m_area))
    , m_card(makeFrame(QStringLiteral("card"), m_area))
    , m_latitude(NSPositionFormatter::Latitude, textCatalog().strings())
    , m_longitude(NSPositionFormatter::Longitude, textCatalog().strings())
{
    setWindowTitle(QStringLiteral("Kelvox"));
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    setMinimumSize(640, 480);

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
    setEdges(*m_topBar, Qt::BottomEdge);
    setEdges(*m_rail, Qt::RightEdge);
    setEdges(*m_statusLine, Qt::TopEdge);

    m_note->setObjectName(QStringLiteral("card"));
    makeCard(*m_note);
    m_note->setWordWrap(true);
    m_note->hide();
    m_noteTimer.setSingleShot(true);
    connect(&m_noteTimer, &QTimer::timeout, m_note, &QWidget::hide);
    makeCard(*m_card);
    auto* cardRows = new QVBoxLayout(m_card);
    auto* cardHeading = new QHBoxLayout;
    m_cardTitle = new QLabel(m_card);
    m_cardTitle->setObjectName(QStringLiteral("panelTitle"));
    auto* cardClose = makeButton(m_card, QStringLiteral("cardClose"));
    cardClose->setAccessibleName(text("NSClose"));
    connect(cardClose, &QToolButton::clicked, this, [this] { showCard({}, nullptr); });
    m_railButtons.emplace_back(cardClose, QStringLiteral("close"));
    cardHeading->addWidget(m_cardTitle, 1);
    cardHeading->addWidget(cardClose);
    cardRows->addLayout(cardHeading);
    m_cardScroll = new QScrollArea(m_card);
    m_cardScroll->setFrameShape(QFrame::NoFrame);
    m_cardScroll->setWidgetResizable(true);
    m_cardScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    cardRows->addWidget(m_cardScroll);
    m_card->hide();

    m_fileOpener.add(&isWeatherFile, [this](const FileOpener::Files& files) {
        if (auto* panel = qobject_cast<WeatherPanel*>(openPanel(QStringLiteral("weather"))))
            panel->open(files.back());
    });
    m_fileOpener.setFallback([this](const FileOpener::Files& files) { open(files); });
    buildCommands();
    buildTopBar();
    buildRail();
    buildStatusLine();

    m_layers.push_back(std::make_unique<FurnitureLayer>([this] { m_chart->northUp(); }));
    addPanelsAndLayers(*this);
    m_panels->arrange({"gps", "instruments", "ais", "waypoints", "routes", "tracks", "weather",
                       "charts", "display", "connections", "devices", "alarms"});
    for (SidePanel* panel : m_panels->panels()) {
        auto* button = makeButton(m_railContent, QStringLiteral("rail.") + panel->name());
        button->setCheckable(true);
        button->setToolTip(text(panel->titleKey()));
        button->setAccessibleName(text(panel->titleKey()));
        connect(button, &QToolButton::clicked, this,
                [this, panel] { m_panels->toggle(panel->name()); });
        m_railContent->layout()->addWidget(button);
        m_railButtons.emplace_back(button, panel->icon());
        m_panelButtons.emplace_back(button, panel);
    }
    addPanelCommands();
    buildMenu();
    setTool(nullptr);

    connect(m_chart, &ChartView::viewChanged, this, &MainWindow::updateStatus);
    connect(m_chart, &ChartView::cursorMoved, this, &MainWindow::updateCursor);
    connect(m_chart, &ChartView::pathsDropped, this,
            [this](const QStringList& names) { openFiles(toPaths(names)); });
    connect(m_chart, &ChartView::menuRequested, this, &MainWindow::showMenu);
    connect(m_chart, &ChartView::panned, this, [this] { setFollowing(false); });
    connectCharts();
    for (const auto signal :
         {&LiveData::vesselChanged, &LiveData::staleChanged, &LiveData::connectionsChanged})
        connect(&program.live(), signal, this, &MainWindow::updateVessel);
    connect(&program.live(), &LiveData::targetsMoved, m_chart, qOverload<>(&QWidget::update));
    for (const auto signal :
         {&Program::waypointsChanged, &Program::routesChanged, &Program::tracksChanged,
          &Program::steeringChanged, &Program::weatherChanged})
        connect(&program, signal, m_chart, qOverload<>(&QWidget::update));
    connect(&program, &Program::schemeChanged, this, &MainWindow::restyle);
    connect(&program, &Program::settingChanged, this, &MainWindow::settingChanged);
    connect(&program, &Program::baseMapChanged, this, &MainWindow::updateScene);
    connect(&program, &Program::unitsChanged, this, [this] {
        updateScene();
        updateStatus();
        updateCursor();
        m_chart->update();
    });
    connect(&program.alarms(), &AlarmCenter::changed, this, &MainWindow::updateAlarms);
    connect(m_panels, &PanelHost::changed, this, &MainWindow::updateRail);
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

void MainWindow::buildCommands()
{
    Commands& c = m_commands;
    const std::string file = "NSMenuFile";
    const std::string view = "NSMenuView";
    const std::string edit = "NSMenuEdit";
    c.add("file.open", file, QKeySequence::Open, [this] { chooseFiles(); });
    c.add("file.openFolder", file, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
          [this] { chooseFolder(); });
    c.add("file.closeCharts", file, {}, [this] { closeCharts(); });
    c.add("file.newWindow", file, QKeySequence::New, [this] {
        auto* other = new MainWindow(m_program);
        other->setAttribute(Qt::WA_DeleteOnClose);
        other->m_charts.setPlaces(m_charts.places());
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
    c.add("chart.fit", view, QKeySequence(Qt::Key_Home), [this] { fitAll(); });
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
    m_chart->update();
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

void MainWindow::buildTopBar()
{
    auto* row = new QHBoxLayout(m_topBar);
    row->setContentsMargins(0, 0, 0, 0);
    m_menuButton = makeButton(m_topBar, QStringLiteral("menuButton"));
    m_menuButton->setPopupMode(QToolButton::InstantPopup);
    m_menuButton->setAccessibleName(text("NSMenu"));
    m_menuButton->setToolTip(text("NSMenu"));
    m_railButtons.emplace_back(m_menuButton, QStringLiteral("menu"));
    auto* name = new QLabel(QStringLiteral("Kelvox"), m_topBar);
    name->setProperty("role", QStringLiteral("heading"));
    m_schemeButton = makeButton(m_topBar, QStringLiteral("schemeButton"));
    m_schemeButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_schemeButton->setToolTip(text("NSCommand.view.nextScheme"));
    connect(m_schemeButton, &QToolButton::clicked, m_commands.action("view.nextScheme"),
            &QAction::trigger);
    m_alarmsButton = makeButton(m_topBar, QStringLiteral("alarmsButton"));
    m_alarmsButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_alarmsButton->setToolTip(text("NSAlarms"));
    m_alarmsButton->setAccessibleName(text("NSAlarms"));
    connect(m_alarmsButton, &QToolButton::clicked, this,
            [this] { m_panels->toggle(QStringLiteral("alarms")); });
    row->addWidget(m_menuButton);
    row->addWidget(name);
    row->addStretch(1);
    row->addStretch(1);
    row->addWidget(m_schemeButton);
    row->addWidget(m_alarmsButton);
}

void MainWindow::buildMenu()
{
    auto* menu = new QMenu(m_menuButton);
    std::map<std::string, QMenu*> groups;
    for (const Commands::Command& command : m_commands.all()) {
        QMenu*& group = groups[command.group];
        if (!group)
            group = menu->addMenu(text(command.group));
        group->addAction(command.action);
    }
    m_menuButton->setMenu(menu);
}

void MainWindow::buildRail()
{
    auto* column = new QVBoxLayout(m_rail);
    column->setSpacing(0);
    // What a low window has no room for is scrolled to; the red button stays in reach.
    auto* scroll = new QScrollArea(m_rail);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
    m_railContent = new QWidget(scroll);
    auto* buttons = new QVBoxLayout(m_railContent);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(0);
    buttons->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    scroll->setWidget(m_railContent);
    column->addWidget(scroll, 1);
    auto* follow = makeButton(m_railContent, QStringLiteral("rail.follow"));
    follow->setDefaultAction(m_commands.action("chart.follow"));
    follow->setAccessibleName(text("NSCommand.chart.follow"));
    m_railButtons.emplace_back(follow, QStringLiteral("follow"));
    buttons->addWidget(follow);
    m_mobButton->setObjectName(QStringLiteral("mobButton"));
    m_mobButton->setAccessibleName(text("NSCommand.vessel.manOverboard"));
    m_mobButton->setToolTip(text("NSCommand.vessel.manOverboard"));
    m_mobButton->setFocusPolicy(Qt::TabFocus);
    connect(m_mobButton, &QPushButton::clicked, this, &MainWindow::manOverboard);
    column->addWidget(m_mobButton, 0, Qt::AlignHCenter);
}

void MainWindow::buildStatusLine()
{
    auto* row = new QHBoxLayout(m_statusLine);
    const auto add = [&](QLabel*& label, int stretch = 0) {
        label = new QLabel(m_statusLine);
        row->addWidget(label, stretch);
    };
    add(m_positionLabel);
    add(m_rangeLabel, 1);
    add(m_rotationLabel);
    add(m_scaleLabel);
    add(m_cellLabel);
    add(m_gpsLabel);
}

void MainWindow::restyle()
{
    const Theme& theme = Theme::theme();
    m_topBar->setFixedHeight(theme.px(40));
    m_rail->setFixedWidth(theme.px(64));
    m_mobButton->setFixedSize(theme.px(56), theme.px(56));
    QFont small = QApplication::font();
    small.setPixelSize(theme.px(12));
    m_statusLine->setFont(small);
    m_instruments->setFixedWidth(theme.px(188));
    m_statusLine->setFixedHeight(theme.px(28));
    m_statusLine->layout()->setContentsMargins(theme.px(12), 0, theme.px(12), 0);
    static_cast<QHBoxLayout*>(m_statusLine->layout())->setSpacing(theme.px(20));
    m_rail->layout()->setContentsMargins(0, theme.px(8), 1, theme.px(8));
    for (const auto& [button, icon] : m_railButtons) {
        if (button->defaultAction())
            button->defaultAction()->setIcon(theme.icon(icon));
        else
            button->setIcon(theme.icon(icon));
        button->setIconSize(QSize(theme.px(24), theme.px(24)));
        if (button->parentWidget() != m_railContent)
            button->setFixedSize(theme.px(40), theme.px(40));
    }
    layOutRail();
    fitInstruments();
    const char* const words[] = {"NSDay", "NSDusk", "NSNight"};
    const auto scheme = static_cast<int>(m_program.scheme());
    m_schemeButton->setText(text(words[scheme]));
    m_schemeButton->setIcon(theme.icon(QStringLiteral("scheme")));
    m_schemeButton->setIconSize(QSize(theme.px(20), theme.px(20)));
    m_schemeButton->setFixedHeight(theme.px(40));
    m_alarmsButton->setIconSize(QSize(theme.px(20), theme.px(20)));
    m_alarmsButton->setFixedHeight(theme.px(40));
    const char* const ids[] = {"view.day", "view.dusk", "view.night"};
    for (int i = 0; i < 3; ++i)
        m_commands.action(ids[i])->setChecked(i == scheme);
    m_note->setMargin(theme.px(12));
    m_card->layout()->setContentsMargins(theme.px(12), theme.px(4), theme.px(4), theme.px(12));
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
    placeOverlays();
}

void MainWindow::layOutRail()
{
    const Theme& theme = Theme::theme();
    constexpr int lowest = 40; // pixels that a finger still hits, at any scale
    const int count = m_railContent->layout()->count();
    const int room = height() - theme.px(40 + 28 + 56 + 4 * 8);
    const int each = std::clamp(room / std::max(count, 1), lowest, theme.px(48));
    const int icon = std::min(theme.px(24), each - 12);
    for (int i = 0; i < count; ++i) {
        auto* button = static_cast<QToolButton*>(m_railContent->layout()->itemAt(i)->widget());
        button->setFixedSize(theme.px(56), each);
        button->setIconSize(QSize(icon, icon));
    }
}

void MainWindow::fitInstruments()
{
    // A narrow window belongs to the chart.
    const Theme& theme = Theme::theme();
    const bool room = width() - theme.px(64 + 188) >= theme.px(240);
    m_instruments->setVisible(room && m_commands.action("view.instruments")->isChecked());
}

void MainWindow::placeOverlays()
{
    m_chart->setGeometry(m_area->rect());
    m_banner->place();
    m_panels->setTop(m_banner->isHidden() ? 0 : m_banner->height());
    const Theme& theme = Theme::theme();
    const int margin = theme.px(16);
    if (!m_card->isHidden()) {
        m_card->setFixedWidth(std::min(theme.px(380), m_area->width() - 2 * margin));
        if (m_cardContent) {
            // As high as what is in it, as far as there is room; then it scrolls.
            const QMargins around = m_card->layout()->contentsMargins();
            const int width = m_card->width() - around.left() - around.right();
            const int wanted = m_cardContent->hasHeightForWidth()
                ? m_cardContent->heightForWidth(width)
                : m_cardContent->sizeHint().height();
            const int room = m_area->height() - 4 * margin - theme.px(56);
            m_cardScroll->setFixedHeight(std::clamp(wanted, 0, std::max(room, theme.px(40))));
        }
        m_card->adjustSize();
        m_card->move(m_area->width() - m_card->width() - margin,
                     m_area->height() - m_card->height() - 3 * margin);
        m_card->raise();
    }
    if (!m_note->isHidden()) {
        // In the middle of what panel and card leave of the chart, or else above the card.
        int left = m_panels->isHidden() ? 0 : m_panels->width();
        int right = m_card->isHidden() ? m_area->width() : m_card->x();
        int bottom = m_area->height() - 4 * margin;
        if (right - left < theme.px(280)) {
            left = 0;
            right = m_area->width();
            if (!m_card->isHidden())
                bottom = m_card->y() - margin;
        }
        m_note->setFixedWidth(std::min(theme.px(480), right - left - 2 * margin));
        m_note->adjustSize();
        m_note->move(left + (right - left - m_note->width()) / 2, bottom - m_note->height());
        m_note->raise();
    }
    m_banner->raise();
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    m_rememberTimer.start();
    layOutRail();
    fitInstruments();
    // The area gets its size with the layout, after this event.
    QTimer::singleShot(0, this, &MainWindow::placeOverlays);
}

bool MainWindow::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest && object == m_cardContent)
        QTimer::singleShot(0, this, &MainWindow::placeOverlays); // it has become another height
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
    m_note->setText(note);
    m_note->show();
    m_noteTimer.start(noteTime);
    placeOverlays();
}

void MainWindow::showCard(const QString& title, QWidget* content)
{
    if (m_cardContent) {
        m_cardScroll->takeWidget();
        m_cardContent->deleteLater();
    }
    m_cardContent = content;
    m_card->setVisible(content != nullptr);
    if (!content)
        return;
    m_cardTitle->setText(title);
    m_cardScroll->setWidget(content);
    content->show();
    placeOverlays();
}

void MainWindow::openFiles(const std::vector<std::filesystem::path>& files)
{
    m_fileOpener.open(files);
}

void MainWindow::setChartPlaces(const std::vector<std::filesystem::path>& places)
{
    m_charts.setPlaces(places);
    m_remembersCharts = true;
    rememberCharts();
}

void MainWindow::setSearch(QWidget* search)
{
    auto* row = static_cast<QHBoxLayout*>(m_topBar->layout());
    constexpr int middle = 3; // between the two stretches
    search->setMaximumWidth(Theme::theme().px(420));
    row->insertWidget(middle, search, 2);
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
    for (auto it = m_layers.rbegin(); it != m_layers.rend(); ++it)
        (*it)->addToMenu(menu, pointer, frame);
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
        resize(1280, 800);
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
    m_fitWhenLoaded = true;
    m_fittedView.reset();
    // The user's own charts take the place of the demo's.
    if (!std::exchange(m_remembersCharts, true))
        m_charts.setPlaces({});
    m_charts.open(paths);
    rememberCharts();
}

void MainWindow::openDemo()
{
    constexpr int demoScale = 50'000;
    const auto& resources = m_program.places().resources;
    m_charts.open({resources / "demo"});
    m_chart->setScale(demoScale);
    setFollowing(true);
    if (m_program.live().isConnected())
        return; // invented positions have no place among real ones
    if (const auto started = m_program.live().simulate(resources / "simulation.json"); !started)
        showNote(QString::fromStdString(started.error().message));
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
    m_gpsLabel->setText(gps.positionIsStale()                ? text("NSGpsLost")
                            : m_program.live().isSimulated() ? text("NSGpsDemo")
                                                             : text("NSGpsGood"));
    if (gps.position().isKnown() && m_commands.action("chart.follow")->isChecked()) {
        const bool courseUp = m_commands.action("chart.courseUp")->isChecked();
        if (courseUp && isKnown(gps.courseOverGround()))
            m_chart->setRotation(gps.courseOverGround());
        // Course up, more of the water ahead is worth seeing.
        m_chart->keepAt(gps.position(), {0.5, courseUp ? 0.7 : 0.5});
    }
    m_chart->update();
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
                             .informativeText = m_latitude.stringForObjectValue(position.latitude)
                                 + "  " + m_longitude.stringForObjectValue(position.longitude),
                             .button = text("NSOK").toStdString()});
    if (m_program.settings().boolean("audio"))
        m_program.alarms().speak(text("NSManOverboard").toStdString());
    setFollowing(true);
}

void MainWindow::connectCharts()
{
    connect(m_chart, &ChartView::viewChanged, this, [this] { m_charts.setView(m_chart->frame()); });
    connect(m_chart, &ChartView::panned, this, [this] { m_fitWhenLoaded = false; });
    connect(&m_charts, &ChartSet::sceneChanged, this, [this] {
        m_charts.fill(m_scene);
        updateScene();
    });
    connect(&m_charts, &ChartSet::chartsChanged, this, &MainWindow::chartsFound);
    connect(&m_charts, &ChartSet::scanned, this, &MainWindow::scanFinished);
    connect(&m_charts, &ChartSet::progress, this, [this](int done, int total) {
        m_cellLabel->setText(
            text("NSReadingCharts", {QString::number(done), QString::number(total)}));
    });
    connect(&m_charts, &ChartSet::failed, this, &MainWindow::showNote);
    const auto choose = [this] {
        const auto choice = m_program.settings().integer("chartChoice");
        m_charts.setChoice(choice == 1       ? ChartChoice::Cells
                               : choice == 2 ? ChartChoice::Rasters
                                             : ChartChoice::Both);
    };
    connect(&m_program, &Program::settingChanged, this, [choose](const QString& key) {
        if (key == QLatin1String("chartChoice"))
            choose();
    });
    choose();
    chooseSymbols();
}

void MainWindow::chartsFound()
{
    // Something to see at once; the whole is fitted when all is known.
    if (m_fitWhenLoaded && m_scene.cells.empty() && m_scene.rasters.empty()
        && (!m_fittedView || m_fittedView == shownView())) {
        fitAll();
        m_fittedView = shownView();
    }
    updateStatus();
}

void MainWindow::scanFinished(int found)
{
    // Not from under the hand of a user who has gone elsewhere meanwhile.
    const bool isMoved = m_fittedView && m_fittedView != shownView();
    if (std::exchange(m_fitWhenLoaded, false) && found > 0 && !isMoved)
        fitAll();
    m_fittedView.reset();
    updateStatus();
}

void MainWindow::rememberCharts()
{
    std::string places;
    for (const auto& place : m_charts.places())
        places += place.string() + '\n';
    m_program.settings().set("charts.places", places);
}

bool MainWindow::openRemembered()
{
    const auto lines = QString::fromStdString(m_program.settings().text("charts.places"))
                           .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (lines.isEmpty())
        return false;
    m_remembersCharts = true;
    m_charts.setPlaces(toPaths(lines));
    const Settings& settings = m_program.settings();
    if (settings.find("chart.scale")) {
        m_chart->setScale(static_cast<int>(settings.integer("chart.scale")));
        m_chart->setRotation(settings.number("chart.rotation"));
        m_chart->centerOn({.longitude = settings.number("chart.longitude"),
                           .latitude = settings.number("chart.latitude")});
        setFollowing(settings.boolean("chart.follow"));
    } else {
        m_fitWhenLoaded = true;
    }
    return true;
}

void MainWindow::fitAll()
{
    if (const Rect bounds = m_charts.bounds(); !bounds.isEmpty())
        m_chart->showBounds(bounds);
}

std::tuple<double, double, int> MainWindow::shownView() const
{
    const Position center = m_chart->center();
    return {center.latitude, center.longitude, m_chart->scale()};
}

void MainWindow::closeCharts()
{
    m_charts.setPlaces({});
    if (m_remembersCharts)
        rememberCharts();
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
    updateStatus();
}

void MainWindow::updateStatus()
{
    const int scale = m_chart->scale();
    m_scaleLabel->setText(QStringLiteral("1:%1  %2")
                              .arg(QLocale(QLocale::English).toString(scale),
                                   text(ChartSettingsController::cellTypeNameKey(scale))));
    const int heading = qRound(m_chart->rotation()) % 360;
    m_rotationLabel->setText(
        heading == 0 ? QString() : QStringLiteral("⟲ %1°").arg(heading, 3, 10, QChar('0')));
    const auto count = m_charts.charts().size();
    m_cellLabel->setText(count == 0       ? text("NSNoChartOpen")
                             : count == 1 ? QString::fromStdString(m_charts.charts().front()->name)
                                          : countedText("NSCellCount", count));
}

void MainWindow::updateCursor()
{
    const auto position = m_chart->cursorPosition();
    m_positionLabel->setText(position ? QString::fromStdString(
                                 m_latitude.stringForObjectValue(position->latitude) + "   "
                                 + m_longitude.stringForObjectValue(position->longitude))
                                      : QString());
    const Position vessel = m_program.live().gps().position();
    QString range;
    if (position && vessel.isKnown()) {
        range =
            text("NSRangeBearing",
                 {QString::fromStdString(NSDtwFormatter().stringForObjectValue(
                      NavMath::distanceFromPoint(vessel, *position))),
                  QString::fromStdString(
                      NSCogFormatter(textCatalog().strings())
                          .stringForObjectValue(NavMath::bearingFromPoint(vessel, *position)))});
    }
    m_rangeLabel->setText(range);
}

void MainWindow::updateRail()
{
    for (const auto& [button, panel] : m_panelButtons)
        button->setChecked(m_panels->isOpen(panel->name()));
    placeOverlays();
}

void MainWindow::updateAlarms()
{
    const auto count = m_program.alarms().active().size();
    const Theme& theme = Theme::theme();
    placeOverlays(); // what lies below the banner has moved
    m_alarmsButton->setText(QString::number(count));
    if (count > 0 && isMinimized()) { // it must be seen to be acknowledged
        showNormal();
        raise();
    }
    m_alarmsButton->setIcon(
        theme.icon(QStringLiteral("alarm"), count > 0 ? theme.colors().red : theme.colors().text));
}

void MainWindow::chooseFiles()
{
    const auto names =
        QFileDialog::getOpenFileNames(this, text("NSOpenTitle"), {}, text("NSOpenFilter"));
    if (!names.isEmpty())
        openFiles(toPaths(names));
}

void MainWindow::chooseFolder()
{
    const auto name = QFileDialog::getExistingDirectory(this, text("NSOpenFolderTitle"));
    if (!name.isEmpty())
        openFiles(toPaths({name}));
}

} // namespace kelvox
