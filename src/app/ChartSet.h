#pragma once

#include "base/Executor.h"
#include "library/ChartLibrary.h"
#include "painting/ChartPainter.h"
#include "presentation/S52Model.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <shared_mutex>

namespace kelvox {

/// What the chart sets of all windows have in common.
struct ChartSharing {
    std::shared_mutex symbolsMutex; ///< held exclusively while the choice of symbols changes
    std::shared_ptr<SharedCharts> charts = std::make_shared<SharedCharts>();
};

/// The charts of the window: the library of the user's folders, and what of it is to be drawn now.
///
/// Main thread. Looks for changed files on its own when a folder changes and whenever the program
/// comes to the front.
class ChartSet final : public QObject {
    Q_OBJECT
public:
    /// @param main the event loop's thread, outlives the object like the symbols and the sharing
    /// @param index the cache file of the library; empty to keep none
    ChartSet(Executor& main, const S52Model& symbols, ChartSharing& sharing,
             std::filesystem::path index, QObject* parent = nullptr);
    ~ChartSet() override;

    /// Folders, files and catalogues in addition to the present ones; returns at once.
    void open(const std::vector<std::filesystem::path>& places);
    /// In place of the present ones; an empty list closes all charts.
    void setPlaces(const std::vector<std::filesystem::path>& places);
    /// What the user has opened, to be remembered.
    [[nodiscard]] const std::vector<std::filesystem::path>& places() const
    {
        return m_library.places();
    }
    void rescan() { m_library.rescan(); }
    void cancelScan() { m_library.cancelScan(); }

    /// Tells what the window shows; cheap enough for every step of a drag.
    void setView(const ViewFrame& frame);
    void setChoice(ChartChoice choice) { m_library.setChoice(choice); }
    [[nodiscard]] ChartChoice choice() const { return m_library.choice(); }
    /// Changes the choice of symbols in the presentation library, which the loading threads read
    /// too, and gives every cell its entries anew.
    void changeSymbols(const std::function<void()>& change);

    /// What there is to draw, in the order that ChartScene wants.
    [[nodiscard]] const ChartLibrary::Shown& shown() const { return m_library.shown(); }
    /// Puts what there is to draw into a scene.
    void fill(ChartScene& scene) const;
    /// All known charts.
    [[nodiscard]] const ChartRecords& charts() const { return m_library.charts(); }
    /// The box of degrees around all charts; right may be above 180. Empty without charts.
    [[nodiscard]] Rect bounds() const { return m_library.bounds(); }
    [[nodiscard]] bool isScanning() const { return m_library.isScanning(); }
    /// Charts that the view wants and that are still being loaded.
    [[nodiscard]] std::size_t missing() const { return m_library.missing(); }

signals:
    /// shown() is another. At most a few times a second, so that each picture can be finished.
    void sceneChanged();
    /// charts() and bounds() are others.
    void chartsChanged();
    /// Charts being read for the index: done of total.
    void progress(int done, int total);
    /// All folders are up to date: charts found, of them read because they were new or changed.
    void scanned(int found, int read, int removed);
    void failed(const QString& message);

private:
    void shownChanged();
    void watchFolders();

    ChartSharing& m_sharing;
    QTimer m_sceneTimer; ///< running while the last change of the scene is fresh
    bool m_sceneWaits = false;
    QFileSystemWatcher m_watcher;
    QTimer m_rescanTimer; ///< a copy of many files is one change
    ChartLibrary m_library;
};

} // namespace kelvox
