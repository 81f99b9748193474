#include "library/ChartShelf.h"

#include "base/Background.h"
#include "s57/S57CellLoader.h"

#include <algorithm>

namespace kelvox {

namespace {
/// Memory of a loaded cell for each byte of its file, measured over published cells.
constexpr std::size_t memoryPerFileByte = 4;
/// Decoded tiles of one raster chart.
constexpr std::size_t tileBudget = std::size_t{12} << 20;
} // namespace

ChartShelf::ChartShelf(Executor& main, Options options, Arrived arrived)
    : m_main(main)
    , m_options(std::move(options))
    , m_arrived(std::move(arrived))
    , m_alive(std::make_shared<bool>(true))
{
    for (unsigned i = 0; i < std::max(m_options.threads, 1U); ++i)
        m_threads.emplace_back([this] { run(); });
}

ChartShelf::~ChartShelf()
{
    *m_alive = false;
    {
        const std::lock_guard lock(m_shared.mutex);
        m_shared.stopping = true;
        m_shared.queue.clear();
    }
    m_shared.wake.notify_all();
    m_threads.clear(); // joins
}

void ChartShelf::want(const ChartRecords& charts)
{
    m_wanted = charts;
    ++m_turn;
    std::deque<Job> queue;
    for (const auto& record : charts) {
        if (const auto it = m_charts.find(record->path); it != m_charts.end())
            it->second.lastWanted = m_turn;
        if (!isSettled(*record))
            queue.push_back({record});
    }
    {
        const std::lock_guard lock(m_shared.mutex);
        std::erase_if(
            queue, [this](const Job& job) { return m_shared.atWork.contains(job.record->path); });
        m_shared.queue = std::move(queue);
    }
    m_shared.wake.notify_all();
    evict();
}

const LoadedChart* ChartShelf::find(const std::filesystem::path& path) const
{
    const auto it = m_charts.find(path);
    return it == m_charts.end() ? nullptr : &it->second.chart;
}

bool ChartShelf::isSettled(const ChartRecord& chart) const
{
    const LoadedChart* loaded = find(chart.path);
    if (loaded && loaded->record->stamp == chart.stamp)
        return true;
    const auto failed = m_failed.find(chart.path);
    return failed != m_failed.end() && failed->second == chart.stamp;
}

std::size_t ChartShelf::missing() const
{
    return static_cast<std::size_t>(
        std::count_if(m_wanted.begin(), m_wanted.end(),
                      [this](const auto& record) { return !isSettled(*record); }));
}

void ChartShelf::prepareAgain()
{
    ++m_preparation;
    for (const auto& [path, entry] : m_charts)
        if (entry.chart.cell && m_options.prepare)
            m_options.prepare(*entry.chart.cell);
}

void ChartShelf::run()
{
    workInBackground();
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_shared.mutex);
            m_shared.wake.wait(lock,
                               [this] { return m_shared.stopping || !m_shared.queue.empty(); });
            if (m_shared.stopping)
                return;
            job = std::move(m_shared.queue.front());
            m_shared.queue.pop_front();
            m_shared.atWork.insert(job.record->path);
        }
        auto outcome = std::make_shared<Outcome>(load(job.record));
        m_main.post([this, alive = m_alive, outcome] {
            if (*alive)
                take(std::move(*outcome));
        });
    }
}

ChartShelf::Outcome ChartShelf::load(const std::shared_ptr<const ChartRecord>& record) const
{
    Outcome outcome;
    outcome.preparation = m_preparation;
    if (m_options.shared)
        outcome.chart = m_options.shared->find(record);
    const bool isNew = outcome.chart.isEmpty();
    if (isNew) {
        outcome.chart.record = record;
        read(*record, outcome);
    }
    if (outcome.chart.cell && m_options.prepare)
        m_options.prepare(*outcome.chart.cell);
    if (isNew && m_options.shared && !outcome.chart.isEmpty())
        m_options.shared->add(outcome.chart);
    return outcome;
}

void ChartShelf::read(const ChartRecord& record, Outcome& outcome) const
{
    if (record.kind == ChartKind::Cell) {
        auto loaded = S57CellLoader::load(record.path);
        if (!loaded) {
            outcome.notes.push_back(loaded.error());
            return;
        }
        outcome.chart.cell = std::make_shared<const CellGeometry>(loaded->cell);
        outcome.chart.bytes = static_cast<std::size_t>(record.stamp.size) * memoryPerFileByte;
        outcome.notes = std::move(loaded->notes);
        return;
    }
    auto chart = std::make_shared<BSBChart>();
    auto loaded = chart->loadHeader(record.path);
    if (loaded)
        loaded = chart->loadChart(tileBudget);
    if (loaded)
        outcome.chart.raster = std::move(chart);
    else
        outcome.notes.push_back(loaded.error());
    outcome.chart.bytes = tileBudget;
}

void ChartShelf::take(Outcome outcome)
{
    const ChartRecord& record = *outcome.chart.record;
    const auto keepAlive = outcome.chart.record;
    {
        const std::lock_guard lock(m_shared.mutex);
        m_shared.atWork.erase(record.path);
    }
    if (outcome.chart.isEmpty()) {
        m_failed[record.path] = record.stamp;
    } else {
        if (outcome.chart.cell && m_options.prepare && outcome.preparation != m_preparation)
            m_options.prepare(*outcome.chart.cell);
        Entry& entry = m_charts[record.path];
        m_bytes += outcome.chart.bytes - entry.chart.bytes;
        entry.chart = std::move(outcome.chart);
        const auto wanted = std::find_if(m_wanted.begin(), m_wanted.end(), [&](const auto& other) {
            return other->path == record.path;
        });
        entry.lastWanted = wanted == m_wanted.end() ? 0 : m_turn;
        if (wanted != m_wanted.end() && !isSettled(**wanted)) {
            // The file has changed again while it was read.
            const std::lock_guard lock(m_shared.mutex);
            m_shared.queue.push_back({*wanted});
            m_shared.wake.notify_one();
        }
        evict();
    }
    m_arrived(record, outcome.notes);
}

void ChartShelf::evict()
{
    while (m_bytes > m_options.budget) {
        auto oldest = m_charts.end();
        for (auto it = m_charts.begin(); it != m_charts.end(); ++it)
            if (it->second.lastWanted != m_turn
                && (oldest == m_charts.end() || it->second.lastWanted < oldest->second.lastWanted))
                oldest = it;
        if (oldest == m_charts.end())
            return; // all of it is wanted
        m_bytes -= oldest->second.chart.bytes;
        m_charts.erase(oldest);
    }
}

} // namespace kelvox
