#include "app/MainWindow.h"

#include "app/Text.h"
#include "painting/PainterCanvas.h"
#include "presentation/S52Lookup.h"

#include <QActionGroup>
#include <QFileDialog>
#include <QLocale>
#include <QMenuBar>
#include <QStatusBar>

namespace kelvox {

namespace {
QString cellTypeName(int scale)
{
    return text(ChartSettingsController::cellTypeNameKey(scale));
}

std::vector<std::filesystem::path> toPaths(const QStringList& names)
{
    std::vector<std::filesystem::path> paths;
    for (const QString& name : names)
        paths.emplace_back(name.toStdString());
    return paths;
}
} // namespace

MainWindow::MainWindow(S52Model& library, WorkerPool& pool)
    : m_library(library)
    , m_presentation(library)
    , m_loader(pool)
    , m_chart(new ChartView(pool, this))
    , m_latitude(NSPositionFormatter::Latitude, textCatalog().strings())
    , m_longitude(NSPositionFormatter::Longitude, textCatalog().strings())
{
    setWindowTitle(QStringLiteral("Kelvox"));
    setCentralWidget(m_chart);
    buildMenus();
    buildStatusBar();
    setPalette(Palette::Day);
    connect(m_chart, &ChartView::viewChanged, this, &MainWindow::updateStatus);
    connect(m_chart, &ChartView::cursorMoved, this, &MainWindow::updateCursor);
    connect(m_chart, &ChartView::pathsDropped, this,
            [this](const QStringList& names) { open(toPaths(names)); });
    connect(&m_loader, &ChartLoader::cellLoaded, this, &MainWindow::addCell);
    connect(&m_loader, &ChartLoader::finished, this, &MainWindow::loadingFinished);
    connect(&m_loader, &ChartLoader::failed, this,
            [this](const QString& message) { statusBar()->showMessage(message, 15'000); });
    m_chart->setOverlay([this](QPainter& painter, const ViewFrame& frame) {
        m_liveLayer.paint(painter, m_live, frame, *m_scene.portrayal);
    });
    connect(m_chart, &ChartView::panned, this, [this] { setFollowing(false); });
    connect(&m_live, &LiveData::vesselMoved, this, &MainWindow::updateVessel);
    connect(&m_live, &LiveData::targetsChanged, m_chart, qOverload<>(&QWidget::update));
    connect(&m_live, &LiveData::alarmRaised, this,
            [this](const QString& message) { statusBar()->showMessage(message); });
    m_chart->setFocus();
    resize(1280, 860);
}

void MainWindow::buildMenus()
{
    auto* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Open charts…"), QKeySequence::Open, this, &MainWindow::chooseFiles);
    file->addAction(tr("Open &folder…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O), this,
                    &MainWindow::chooseFolder);
    file->addAction(tr("&Close all charts"), QKeySequence::Close, this, &MainWindow::closeCharts);
    file->addSeparator();
    file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);

    auto* view = menuBar()->addMenu(tr("&View"));
    view->addAction(tr("Zoom &in"), QKeySequence::ZoomIn, m_chart, &ChartView::zoomIn);
    view->addAction(tr("Zoom &out"), QKeySequence::ZoomOut, m_chart, &ChartView::zoomOut);
    view->addAction(tr("&Fit charts"), QKeySequence(Qt::Key_Home), this, &MainWindow::fitAll);
    m_followAction = view->addAction(tr("Follow the &vessel"), QKeySequence(Qt::Key_F), this,
                                     [this] { setFollowing(m_followAction->isChecked()); });
    m_followAction->setCheckable(true);
    view->addAction(tr("&North up"), QKeySequence(Qt::Key_Slash), m_chart, &ChartView::northUp);
    view->addSeparator();
    auto* group = new QActionGroup(this);
    const auto addPalette = [&](const QString& name, Palette palette) {
        auto* action = view->addAction(name, this, [this, palette] { setPalette(palette); });
        action->setCheckable(true);
        action->setChecked(palette == Palette::Day);
        group->addAction(action);
    };
    addPalette(tr("&Day"), Palette::Day);
    addPalette(tr("D&usk"), Palette::Dusk);
    addPalette(tr("Nigh&t"), Palette::Night);
    auto* next = new QAction(tr("Next colour scheme"), this);
    next->setShortcut(Qt::Key_N);
    connect(next, &QAction::triggered, this, [group] {
        const auto actions = group->actions();
        const auto current = actions.indexOf(group->checkedAction());
        actions[(current + 1) % actions.size()]->trigger();
    });
    addAction(next);
    view->addSeparator();
    auto* fullScreen = view->addAction(tr("Full &screen"), QKeySequence(Qt::Key_F11), this, [this] {
        setWindowState(windowState() ^ Qt::WindowFullScreen);
    });
    addAction(fullScreen);
}

void MainWindow::buildStatusBar()
{
    m_positionLabel = new QLabel(this);
    m_scaleLabel = new QLabel(this);
    m_rotationLabel = new QLabel(this);
    m_cellLabel = new QLabel(this);
    statusBar()->addWidget(m_positionLabel);
    m_vesselLabel = new QLabel(this);
    statusBar()->addPermanentWidget(m_vesselLabel);
    statusBar()->addPermanentWidget(m_rotationLabel);
    statusBar()->addPermanentWidget(m_scaleLabel);
    statusBar()->addPermanentWidget(m_cellLabel);
    statusBar()->setSizeGripEnabled(false);
}

void MainWindow::setPalette(Palette palette)
{
    m_presentation.setColorTable(static_cast<int>(palette) + 1);
    m_scene.portrayal = m_presentation.portrayal();
    if (m_scene.portrayal->colors.empty())
        statusBar()->showMessage(tr("The presentation library has no colours for this scheme"));
    applyStyle(m_scene.portrayal->colors);
    updateScene();
}

void MainWindow::applyStyle(const S52CcieMap& colors)
{
    const auto name = [&](const char* token) {
        const auto it = colors.find(token);
        return it == colors.end() ? QStringLiteral("gray") : toQColor(it->second.color).name();
    };
    setStyleSheet(
        QStringLiteral("QMenuBar, QStatusBar, QMenu { background: %1; color: %2; }"
                       "QMenuBar::item { padding: 6px 12px; background: transparent; }"
                       "QMenuBar::item:selected, QMenu::item:selected"
                       " { background: %3; color: %4; }"
                       "QMenu { border: 1px solid %5; }"
                       "QMenu::item { padding: 6px 28px; }"
                       "QStatusBar::item { border: none; }"
                       "QStatusBar QLabel { color: %2; padding: 3px 10px; }")
            .arg(name("UIBCK"), name("UINFD"), name("UINFB"), name("UIBCK"), name("UIBDR")));
}

void MainWindow::open(const std::vector<std::filesystem::path>& paths)
{
    m_fitWhenLoaded = true;
    m_loader.open(paths);
}

void MainWindow::openDemo(const std::filesystem::path& resources)
{
    constexpr int demoScale = 50'000;
    open({resources / "demo"});
    m_fitWhenLoaded = false;
    m_chart->setScale(demoScale);
    setFollowing(true);
    if (const auto started = m_live.simulate(resources / "simulation.json"); !started)
        statusBar()->showMessage(QString::fromStdString(started.error().message));
}

void MainWindow::setFollowing(bool on)
{
    m_followAction->setChecked(on);
    if (on)
        updateVessel();
}

void MainWindow::updateVessel()
{
    const GPSController& gps = m_live.gps();
    if (gps.position().isKnown() && m_followAction->isChecked())
        m_chart->centerOn(gps.position());
    m_vesselLabel->setText((m_live.isSimulated() ? tr("Demo  ") : QString())
                           + QString::fromStdString(gps.cog() + "  " + gps.sog()));
    m_chart->update();
}

void MainWindow::addCell(const std::shared_ptr<const CellGeometry>& geometry)
{
    S52Lookup::setS52Lupts(geometry->cell(), m_library);
    // The same file opened again takes the place of the old one.
    const auto& path = geometry->cell().s57CatalogRecord()->path;
    std::erase_if(m_scene.cells, [&](const auto& other) {
        return other->cell().s57CatalogRecord()->path == path;
    });
    m_scene.cells.push_back(geometry);
    std::ranges::stable_sort(m_scene.cells, {}, [](const auto& cell) {
        return cell->cell().parameters().compiledScale;
    });
    if (m_scene.cells.size() == 1 && m_fitWhenLoaded)
        fitAll(); // something to see at once; the whole is fitted when all are there
    updateScene();
}

void MainWindow::loadingFinished(int cells)
{
    if (std::exchange(m_fitWhenLoaded, false) && cells > 0)
        fitAll();
    updateStatus();
}

void MainWindow::fitAll()
{
    Rect bounds;
    for (const auto& geometry : m_scene.cells)
        bounds.include(geometry->cell().bounds());
    if (!bounds.isEmpty())
        m_chart->showBounds(bounds);
}

void MainWindow::closeCharts()
{
    m_scene.cells.clear();
    updateScene();
}

void MainWindow::updateScene()
{
    m_chart->setScene(std::make_shared<const ChartScene>(m_scene));
    updateStatus();
}

void MainWindow::updateStatus()
{
    const int scale = m_chart->scale();
    m_scaleLabel->setText(QStringLiteral("1:%1  %2")
                              .arg(QLocale(QLocale::English).toString(scale), cellTypeName(scale)));
    const int heading = qRound(m_chart->rotation()) % 360;
    m_rotationLabel->setText(
        heading == 0 ? QString() : QStringLiteral("⟲ %1°").arg(heading, 3, 10, QChar('0')));
    const auto count = m_scene.cells.size();
    m_cellLabel->setText(count == 0       ? tr("No chart open: drop a folder here")
                             : count == 1 ? QString::fromStdString(
                                   m_scene.cells.front()->cell().s57CatalogRecord()->path.stem())
                                          : tr("%1 cells").arg(count));
}

void MainWindow::updateCursor()
{
    const auto position = m_chart->cursorPosition();
    m_positionLabel->setText(position ? QString::fromStdString(
                                 m_latitude.stringForObjectValue(position->latitude) + "   "
                                 + m_longitude.stringForObjectValue(position->longitude))
                                      : QString());
}

void MainWindow::chooseFiles()
{
    const auto names = QFileDialog::getOpenFileNames(
        this, tr("Open charts"), {}, tr("Charts (*.000 CATALOG.031);;All files (*)"));
    if (!names.isEmpty())
        open(toPaths(names));
}

void MainWindow::chooseFolder()
{
    const auto name = QFileDialog::getExistingDirectory(this, tr("Open a folder of charts"));
    if (!name.isEmpty())
        open(toPaths({name}));
}

} // namespace kelvox
