#include "library/ChartScan.h"

#include "base/Background.h"
#include "library/ChartSummary.h"
#include "s57/ISO8211Wrap.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace kelvox {

namespace fs = std::filesystem;

struct ChartScan::Found {
    fs::path path;
    ChartKind kind = ChartKind::Cell;
    FileStamp stamp;
    std::string title;
};

namespace {
constexpr std::size_t firstBatch = 8;
constexpr std::size_t largestBatch = 256;

bool isCatalog(const fs::path& path)
{
    return path.filename() == "CATALOG.031";
}

/// Whether a path lies in a place or is it.
bool liesIn(const fs::path& path, const fs::path& place)
{
    const auto [end, ignored] = std::mismatch(place.begin(), place.end(), path.begin(), path.end());
    return end == place.end();
}

/// The files that are charts by their names.
class Walk {
public:
    Walk(const std::stop_token& stop, std::vector<Error>& problems)
        : m_stop(stop)
        , m_problems(problems)
    {
    }

    void visit(const fs::path& place)
    {
        std::error_code error;
        if (fs::is_directory(place, error)) {
            visitFolder(place);
        } else if (isCatalog(place)) {
            catalogs.insert(place);
            ISO8211Wrap::Catalog entries;
            if (auto read = ISO8211Wrap::load(place, entries); !read)
                m_problems.push_back(read.error());
            for (const auto& entry : entries)
                if (entry->binaryPrimary)
                    add(normalPlace(entry->path));
        } else if (!chartKindOf(place) || !fs::exists(place, error)) {
            m_problems.push_back(
                {Error::Code::CannotOpen,
                 place.string() + (fs::exists(place, error) ? ": is no chart" : ": is not there"),
                 0});
        } else {
            add(place);
        }
    }

    std::map<fs::path, ChartKind> files;
    std::set<fs::path> catalogs;

private:
    void visitFolder(const fs::path& folder)
    {
        std::error_code error;
        const auto options = fs::directory_options::skip_permission_denied;
        for (fs::recursive_directory_iterator it(folder, options, error), end;
             !error && it != end && !m_stop.stop_requested(); it.increment(error)) {
            std::error_code ignored;
            if (it->is_directory(ignored))
                continue;
            if (isCatalog(it->path()))
                catalogs.insert(it->path());
            else
                add(it->path());
        }
        if (error)
            m_problems.push_back(
                {Error::Code::CannotOpen, folder.string() + ": " + error.message(), 0});
    }

    void add(const fs::path& path)
    {
        if (const auto kind = chartKindOf(path); kind && files.size() < ChartScan::maximumCharts)
            files.emplace(path, *kind);
    }

    const std::stop_token& m_stop;
    std::vector<Error>& m_problems;
};
} // namespace

bool mayHoldCharts(const fs::path& path)
{
    std::error_code ignored;
    return isCatalog(path) || chartKindOf(path) || fs::is_directory(path, ignored);
}

fs::path normalPlace(const fs::path& path)
{
    std::error_code ignored;
    fs::path whole = fs::absolute(path, ignored).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

ChartScan::ChartScan(fs::path index, unsigned readers)
    : m_readers(std::max(readers, 1U))
    , m_store(std::move(index))
{
    for (auto& record : m_store.load()) {
        fs::path path = record.path;
        m_known.emplace(std::move(path), std::make_shared<const ChartRecord>(std::move(record)));
    }
}

ChartRecords ChartScan::known(const std::vector<fs::path>& places) const
{
    ChartRecords records;
    for (const auto& entry : m_known)
        if (std::any_of(places.begin(), places.end(), [&](const fs::path& place) {
                return liesIn(entry.first, isCatalog(place) ? place.parent_path() : place);
            }))
            records.push_back(entry.second);
    return records;
}

ScanReport ChartScan::scan(const std::vector<fs::path>& places,
                           const std::function<void(const Progress&)>& progress,
                           const std::stop_token& stop)
{
    ScanReport report;
    Walk walk(stop, report.problems);
    for (const auto& place : places)
        walk.visit(place);
    std::vector<Found> changed;
    for (const auto& [path, kind] : walk.files) {
        const auto stamp = stampOf(path, kind);
        if (!stamp)
            continue; // gone meanwhile
        ++report.found;
        const auto it = m_known.find(path);
        if (it == m_known.end() || !(it->second->stamp == *stamp))
            changed.push_back({path, kind, *stamp, {}});
    }
    if (stop.stop_requested())
        return report;

    // Catalogues are read for titles only, so not while nothing is new.
    std::map<fs::path, std::string> titles;
    for (const auto& catalog : changed.empty() ? std::set<fs::path>() : walk.catalogs) {
        ISO8211Wrap::Catalog entries;
        (void)ISO8211Wrap::load(catalog, entries);
        for (const auto& entry : entries)
            if (entry->binaryPrimary)
                titles[normalPlace(entry->path)] = entry->description;
    }
    for (Found& file : changed)
        if (const auto it = titles.find(file.path); it != titles.end())
            file.title = it->second;

    const ChartRecords read = readAll(changed, progress, stop);
    report.read = read.size();
    for (const auto& record : read)
        if (!record->problem.empty())
            report.problems.push_back(
                {Error::Code::BadSyntax, record->path.string() + ": " + record->problem, 0});
    if (stop.stop_requested())
        return report;

    // What was known and is gone; what lies elsewhere is kept as long as it is there.
    Progress last;
    std::vector<fs::path> forgotten;
    const ChartRecords before = known(places);
    for (const auto& record : before)
        if (!walk.files.contains(record->path))
            last.removed.push_back(record->path);
    for (const auto& [path, record] : m_known) {
        std::error_code error;
        if (!walk.files.contains(path) && !fs::exists(path, error))
            forgotten.push_back(path);
    }
    for (const auto& path : forgotten)
        m_known.erase(path);
    m_store.remove(forgotten);
    report.removed = last.removed.size();
    last.done = last.total = changed.size();
    progress(last);
    return report;
}

ChartRecords ChartScan::readAll(const std::vector<Found>& files,
                                const std::function<void(const Progress&)>& progress,
                                const std::stop_token& stop)
{
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::condition_variable arrived;
    ChartRecords waiting; ///< guarded by the mutex
    std::size_t done = 0; ///< guarded by the mutex
    const auto work = [&] {
        workInBackground();
        for (std::size_t i = next++; i < files.size() && !stop.stop_requested(); i = next++) {
            auto record = summarise(files[i].path, files[i].kind, files[i].stamp);
            if (!files[i].title.empty())
                record.title = files[i].title;
            const std::lock_guard lock(mutex);
            waiting.push_back(std::make_shared<const ChartRecord>(std::move(record)));
            ++done;
            arrived.notify_one();
        }
        const std::lock_guard lock(mutex);
        arrived.notify_one(); // also when told to stop
    };
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < m_readers && i < files.size(); ++i)
        threads.emplace_back(work);

    ChartRecords all;
    std::size_t batch = firstBatch;
    while (all.size() < files.size() && !stop.stop_requested()) {
        Progress step;
        {
            std::unique_lock lock(mutex);
            arrived.wait(lock, [&] {
                return waiting.size() >= batch || done == files.size() || stop.stop_requested();
            });
            step.changed.swap(waiting);
            step.done = done;
        }
        step.total = files.size();
        batch = std::min(batch * 2, largestBatch);
        for (const auto& record : step.changed)
            m_known[record->path] = record;
        m_store.save(step.changed);
        all.insert(all.end(), step.changed.begin(), step.changed.end());
        progress(step);
    }
    return all;
}

} // namespace kelvox
