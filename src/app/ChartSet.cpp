#include "app/ChartSet.h"

#include "app/Text.h"
#include "presentation/S52Lookup.h"

#include <QGuiApplication>
#include <QSet>

namespace kelvox {

namespace {
constexpr int millisecondsBetweenScenes = 150;
constexpr int millisecondsToRescan = 2'000;
constexpr int mostWatchedFolders = 1'000; ///< systems have few thousand watches for all programs

ChartLibrary::Options optionsFor(const S52Model& symbols, ChartSharing& sharing,
                                 std::filesystem::path index)
{
    ChartLibrary::Options options;
    options.index = std::move(index);
    const unsigned cores = std::max(std::thread::hardware_concurrency(), 2U);
    options.scanThreads = cores;
    // The other cores are left to the painter.
    options.shelf.threads = std::clamp(cores / 2, 1U, 4U);
    options.shelf.shared = sharing.charts;
    options.shelf.prepare = [&symbols, &sharing](const CellGeometry& geometry) {
        const std::shared_lock lock(sharing.symbolsMutex);
        S52Lookup::setS52Lupts(geometry.cell(), symbols);
    };
    return options;
}
} // namespace

ChartSet::ChartSet(Executor& main, const S52Model& symbols, ChartSharing& sharing,
                   std::filesystem::path index, QObject* parent)
    : QObject(parent)
    , m_sharing(sharing)
    , m_library(main, optionsFor(symbols, sharing, std::move(index)),
                {
                    .shownChanged = [this] { shownChanged(); },
                    .chartsChanged = [this] { emit chartsChanged(); },
                    .scanning =
                        [this](std::size_t done, std::size_t total) {
                            emit progress(static_cast<int>(done), static_cast<int>(total));
                        },
                    .scanned =
                        [this](const ScanReport& report) {
                            watchFolders();
                            emit scanned(static_cast<int>(report.found),
                                         static_cast<int>(report.read),
                                         static_cast<int>(report.removed));
                        },
                    .failed =
                        [this](const Error& error) {
                            emit failed(QString::fromStdString(error.message));
                        },
                })
{
    m_sceneTimer.setSingleShot(true);
    m_sceneTimer.setInterval(millisecondsBetweenScenes);
    connect(&m_sceneTimer, &QTimer::timeout, this, [this] {
        if (std::exchange(m_sceneWaits, false))
            shownChanged();
    });
    m_rescanTimer.setSingleShot(true);
    m_rescanTimer.setInterval(millisecondsToRescan);
    connect(&m_rescanTimer, &QTimer::timeout, this, &ChartSet::rescan);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_rescanTimer,
            qOverload<>(&QTimer::start));
    if (auto* application = qobject_cast<QGuiApplication*>(QGuiApplication::instance()))
        connect(application, &QGuiApplication::applicationStateChanged, this,
                [this](Qt::ApplicationState state) {
                    if (state == Qt::ApplicationActive && !places().empty() && !isScanning())
                        rescan();
                });
}

ChartSet::~ChartSet() = default;

void ChartSet::open(const std::vector<std::filesystem::path>& places)
{
    auto all = m_library.places();
    bool isNew = false;
    for (const auto& place : places) {
        const auto normal = normalPlace(place);
        if (std::find(all.begin(), all.end(), normal) != all.end())
            continue;
        if (!mayHoldCharts(normal)) {
            emit failed(QString::fromStdString(normal.string()) + QStringLiteral(": ")
                        + text("NSNoChart"));
            continue;
        }
        all.push_back(normal);
        isNew = true;
    }
    if (isNew)
        m_library.setPlaces(all);
    else
        m_library.rescan();
}

void ChartSet::watchFolders()
{
    QSet<QString> folders;
    const auto add = [&](const std::filesystem::path& folder) {
        if (folders.size() < mostWatchedFolders)
            folders.insert(QString::fromStdString(folder.string()));
    };
    for (const auto& place : places()) {
        std::error_code ignored;
        add(std::filesystem::is_directory(place, ignored) ? place : place.parent_path());
    }
    for (const auto& chart : charts())
        add(chart->path.parent_path());
    const QStringList watched = m_watcher.directories();
    const QSet<QString> before(watched.begin(), watched.end());
    const QSet<QString> gone = before - folders;
    if (!gone.isEmpty())
        m_watcher.removePaths(gone.values());
    folders -= before;
    if (!folders.isEmpty())
        m_watcher.addPaths(folders.values());
}

void ChartSet::setPlaces(const std::vector<std::filesystem::path>& places)
{
    m_library.setPlaces(places);
}

void ChartSet::setView(const ViewFrame& frame)
{
    ChartArea area;
    area.scale = frame.view.scale();
    for (const double x : {0.0, frame.width / 2.0, static_cast<double>(frame.width)})
        for (const double y : {0.0, frame.height / 2.0, static_cast<double>(frame.height)}) {
            const Position corner = frame.positionOf({x, y});
            area.bounds.include(Point{corner.longitude, corner.latitude});
        }
    m_library.setView(area);
}

void ChartSet::changeSymbols(const std::function<void()>& change)
{
    {
        const std::unique_lock lock(m_sharing.symbolsMutex);
        change();
    }
    m_library.prepareAgain();
    emit sceneChanged();
}

void ChartSet::fill(ChartScene& scene) const
{
    scene.cells = m_library.shown().cells;
    scene.rasters = m_library.shown().rasters;
}

void ChartSet::shownChanged()
{
    // A scene cancels the picture at work: one for each cell that comes would never be finished.
    if (m_sceneTimer.isActive()) {
        m_sceneWaits = true;
        return;
    }
    m_sceneTimer.start();
    emit sceneChanged();
}

} // namespace kelvox
