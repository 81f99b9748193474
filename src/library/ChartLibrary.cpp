#include "library/ChartLibrary.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

ChartLibrary::ChartLibrary(Executor& main, Options options, Events events)
    : m_main(main)
    , m_options(std::move(options))
    , m_events(std::move(events))
    , m_alive(std::make_shared<bool>(true))
    , m_selection(m_options.limits)
    , m_shelf(main, m_options.shelf,
              [this](const ChartRecord&, const std::vector<Error>& notes) {
                  for (const Error& note : notes)
                      if (m_events.failed)
                          m_events.failed(note);
                  publish();
              })
    , m_scanner([this](const std::stop_token& stop) { runScans(stop); })
{
}

ChartLibrary::~ChartLibrary()
{
    *m_alive = false;
    m_scanner.request_stop();
    const std::lock_guard lock(m_scanMutex);
    m_scanStop.request_stop();
}

void ChartLibrary::setPlaces(const std::vector<std::filesystem::path>& places)
{
    m_places.clear();
    for (const auto& place : places)
        m_places.push_back(normalPlace(place));
    ++m_placesNumber;
    {
        const std::lock_guard lock(m_scanMutex);
        m_scanStop.request_stop();
    }
    request();
}

void ChartLibrary::rescan()
{
    request();
}

void ChartLibrary::cancelScan()
{
    const std::lock_guard lock(m_scanMutex);
    if (!isScanning() || m_nextScan)
        return;
    m_scanCancelled = true;
    m_scanStop.request_stop();
}

void ChartLibrary::request()
{
    const std::lock_guard lock(m_scanMutex);
    m_nextScan = Request{m_places, ++m_requests, m_placesNumber};
    m_scanWake.notify_all();
}

void ChartLibrary::runScans(const std::stop_token& stop)
{
    ChartScan scan(m_options.index, m_options.scanThreads);
    std::uint64_t lastPlaces = 0;
    while (!stop.stop_requested()) {
        Request request;
        std::stop_token scanStop;
        {
            std::unique_lock lock(m_scanMutex);
            if (!m_scanWake.wait(lock, stop, [this] { return m_nextScan.has_value(); }))
                return;
            request = *std::move(m_nextScan);
            m_nextScan.reset();
            m_scanStop = {};
            m_scanCancelled = false;
            scanStop = m_scanStop.get_token();
            if (stop.stop_requested())
                return;
        }
        // What concerns places that have been replaced meanwhile is dropped.
        const auto report = [&](auto work) {
            m_main.post(
                [this, alive = m_alive, places = request.placesNumber, work = std::move(work)] {
                    if (*alive && places == m_placesNumber)
                        work();
                });
        };
        if (std::exchange(lastPlaces, request.placesNumber) != request.placesNumber)
            report([this, known = scan.known(request.places)] { replaceCharts(known); });
        const auto outcome = scan.scan(
            request.places,
            [&](const ChartScan::Progress& progress) {
                report([this, progress] { take(progress); });
            },
            scanStop);
        {
            const std::lock_guard lock(m_scanMutex);
            if (scanStop.stop_requested() && !m_scanCancelled)
                continue; // another request follows
        }
        report([this, outcome, number = request.number] {
            m_lastReported = number;
            for (const Error& problem : outcome.problems)
                if (m_events.failed)
                    m_events.failed(problem);
            if (m_events.scanned)
                m_events.scanned(outcome);
        });
    }
}

void ChartLibrary::replaceCharts(const ChartRecords& charts)
{
    m_byPath.clear();
    ChartScan::Progress all;
    all.changed = charts;
    take(all);
}

void ChartLibrary::take(const ChartScan::Progress& progress)
{
    for (const auto& record : progress.changed)
        m_byPath[record->path] = record;
    for (const auto& path : progress.removed)
        m_byPath.erase(path);
    m_charts.clear();
    for (const auto& [path, record] : m_byPath)
        m_charts.push_back(record);
    m_usable = ChartSelection::usable(m_charts);
    if (m_events.chartsChanged)
        m_events.chartsChanged();
    if (m_events.scanning && progress.total > 0)
        m_events.scanning(progress.done, progress.total);
    select();
}

Rect ChartLibrary::bounds() const
{
    Rect box;
    for (const auto& chart : m_usable) {
        Rect there = chart->bounds;
        if (!box.isEmpty()) {
            // The way around the earth that keeps the whole narrower.
            const double middle = there.center().x;
            const double shift =
                box.center().x + std::remainder(middle - box.center().x, 360.0) - middle;
            there.left += shift;
            there.right += shift;
        }
        box.include(there);
    }
    if (!box.isEmpty() && box.width() > 360)
        box.right = box.left + 360;
    return box;
}

void ChartLibrary::setView(const ChartArea& view)
{
    m_view = view;
    select();
}

void ChartLibrary::setChoice(ChartChoice choice)
{
    if (m_choice == choice)
        return;
    m_choice = choice;
    m_selection.clear();
    select();
}

void ChartLibrary::select()
{
    if (!m_view)
        return;
    m_selection.update(m_usable, *m_view, m_choice);
    ChartRecords wanted = m_selection.cells();
    wanted.insert(wanted.end(), m_selection.rasters().begin(), m_selection.rasters().end());
    // The chart under the middle of the view first, then by distance.
    const Point middle = m_view->bounds.center();
    const auto distance = [&](const std::shared_ptr<const ChartRecord>& chart) {
        const Point center = chart->bounds.center();
        const double x = std::abs(std::remainder(center.x - middle.x, 360.0));
        const double y = std::abs(center.y - middle.y);
        return std::max(std::max(x - chart->bounds.width() / 2, 0.0) / m_view->bounds.width(),
                        std::max(y - chart->bounds.height() / 2, 0.0) / m_view->bounds.height());
    };
    std::stable_sort(wanted.begin(), wanted.end(),
                     [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    m_shelf.want(wanted);
    publish();
}

std::vector<LoadedChart> ChartLibrary::drawnNow(const ChartRecords& selected, ChartKind kind) const
{
    std::vector<LoadedChart> drawn;
    std::set<std::filesystem::path> paths;
    bool isComplete = true;
    for (const auto& record : selected) {
        paths.insert(record->path);
        isComplete = isComplete && m_shelf.isSettled(*record);
        if (const LoadedChart* loaded = m_shelf.find(record->path))
            drawn.push_back(*loaded);
    }
    if (isComplete)
        return drawn;
    // The old picture stays beneath until the new one is whole.
    for (const LoadedChart& old : m_drawn)
        if (old.record->kind == kind && !paths.contains(old.record->path)
            && m_byPath.contains(old.record->path))
            drawn.push_back(old);
    return drawn;
}

void ChartLibrary::publish()
{
    std::vector<LoadedChart> drawn;
    Shown shown;
    if (m_choice != ChartChoice::Rasters)
        drawn = drawnNow(m_selection.cells(), ChartKind::Cell);
    for (const LoadedChart& chart : drawn)
        shown.cells.push_back(chart.cell);
    if (m_choice != ChartChoice::Cells)
        for (LoadedChart& chart : drawnNow(m_selection.rasters(), ChartKind::Raster)) {
            shown.rasters.push_back(chart.raster);
            drawn.push_back(std::move(chart));
        }
    m_drawn = std::move(drawn);
    if (shown == m_shown)
        return;
    m_shown = std::move(shown);
    if (m_events.shownChanged)
        m_events.shownChanged();
}

} // namespace kelvox
