#pragma once

#include "library/ChartScan.h"
#include "library/ChartSelection.h"
#include "library/ChartShelf.h"

#include <optional>

namespace kelvox {

/// The user's charts: knows what lies in the folders, and keeps in memory what the view needs.
///
/// Folders are searched and charts loaded on threads of its own; everything else, all reports
/// included, happens on the executor's thread, to which the object belongs. The executor outlives
/// it. What is drawn changes only when something better is ready: until the charts of a new view
/// have come, those of the old one stay.
class ChartLibrary {
public:
    struct Options {
        std::filesystem::path index; ///< the cache file; empty to keep none
        unsigned scanThreads = 2;
        SelectionLimits limits;
        ChartShelf::Options shelf;
    };
    /// Where changes are told; any may be left empty.
    struct Events {
        std::function<void()> shownChanged; ///< shown() is another
        std::function<void()> chartsChanged; ///< charts() is another
        std::function<void(std::size_t done, std::size_t total)> scanning;
        std::function<void(const ScanReport&)> scanned; ///< all folders are up to date
        std::function<void(const Error&)> failed;
    };
    ChartLibrary(Executor& main, Options options, Events events);
    ~ChartLibrary();
    ChartLibrary(const ChartLibrary&) = delete;
    ChartLibrary& operator=(const ChartLibrary&) = delete;

    /// Folders, files and catalogues, in place of those of before; charts that the index knows are
    /// there at once, then the disk is looked at.
    void setPlaces(const std::vector<std::filesystem::path>& places);
    [[nodiscard]] const std::vector<std::filesystem::path>& places() const { return m_places; }
    /// Looks for new, changed and removed files.
    void rescan();
    /// Ends the look at the disk; what was read by then stays. Another begins with rescan().
    void cancelScan();
    [[nodiscard]] bool isScanning() const { return m_lastReported != m_requests; }

    /// Every chart in the folders, in the order of the paths.
    [[nodiscard]] const ChartRecords& charts() const { return m_charts; }
    /// The box around all that can be shown; right may be above 180. Empty without charts.
    [[nodiscard]] Rect bounds() const;

    void setView(const ChartArea& view);
    void setChoice(ChartChoice choice);
    [[nodiscard]] ChartChoice choice() const { return m_choice; }

    /// What there is to draw, the best for the view first.
    struct Shown {
        std::vector<std::shared_ptr<const CellGeometry>> cells;
        std::vector<std::shared_ptr<const BSBChart>> rasters;

        friend bool operator==(const Shown&, const Shown&) = default;
    };
    [[nodiscard]] const Shown& shown() const { return m_shown; }
    /// Charts that the view wants and that are still to come.
    [[nodiscard]] std::size_t missing() const { return m_shelf.missing(); }
    /// Prepares the cells in memory anew, by the function of the shelf's options.
    void prepareAgain() { m_shelf.prepareAgain(); }
    [[nodiscard]] const ChartShelf& shelf() const { return m_shelf; }

private:
    void runScans(const std::stop_token& stop);
    void take(const ChartScan::Progress& progress);
    void replaceCharts(const ChartRecords& charts);
    void select();
    void publish();
    [[nodiscard]] std::vector<LoadedChart> drawnNow(const ChartRecords& selected,
                                                    ChartKind kind) const;

    Executor& m_main;
    Options m_options;
    Events m_events;
    std::shared_ptr<bool> m_alive; ///< read on the executor's thread only
    std::vector<std::filesystem::path> m_places;
    std::map<std::filesystem::path, std::shared_ptr<const ChartRecord>> m_byPath;
    ChartRecords m_charts;
    ChartRecords m_usable;
    std::optional<ChartArea> m_view;
    ChartChoice m_choice = ChartChoice::Both;
    ChartSelection m_selection;
    std::vector<LoadedChart> m_drawn; ///< behind m_shown
    Shown m_shown;
    ChartShelf m_shelf;

    struct Request {
        std::vector<std::filesystem::path> places;
        std::uint64_t number = 0;
        std::uint64_t placesNumber = 0;
    };
    void request();
    std::uint64_t m_requests = 0;
    std::uint64_t m_lastReported = 0;
    std::uint64_t m_placesNumber = 0; ///< counts up with each other list of places
    std::mutex m_scanMutex; ///< guards what follows
    std::condition_variable_any m_scanWake;
    std::optional<Request> m_nextScan;
    std::stop_source m_scanStop; ///< of the scan at work
    bool m_scanCancelled = false; ///< by the user: nothing follows
    std::jthread m_scanner;
};

} // namespace kelvox
