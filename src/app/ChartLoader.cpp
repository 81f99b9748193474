#include "app/ChartLoader.h"

#include "s57/S57CellLoader.h"

#include <QCoreApplication>

#include <atomic>

namespace kelvox {

/// One call of open(): counts down to its end.
struct ChartLoader::Batch {
    std::atomic<std::size_t> left;
    std::atomic<int> loaded = 0;
};

ChartLoader::ChartLoader(WorkerPool& pool, QObject* parent)
    : QObject(parent)
    , m_pool(pool)
    , m_alive(std::make_shared<std::atomic<bool>>(true))
{
}

ChartLoader::~ChartLoader()
{
    *m_alive = false;
}

void ChartLoader::report(std::function<void()> work)
{
    // Through the application: it outlives the loader, which may be gone when the message arrives.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [alive = m_alive, work = std::move(work)] {
            if (*alive)
                work();
        },
        Qt::QueuedConnection);
}

void ChartLoader::open(const std::vector<std::filesystem::path>& paths)
{
    m_pool.post([this, alive = m_alive, paths] {
        if (!*alive)
            return;
        std::vector<Error> problems;
        const auto cells = S57CellLoader::findCells(paths, problems);
        for (const auto& problem : problems)
            report([this, problem] { emit failed(QString::fromStdString(problem.message)); });
        if (cells.empty()) {
            report([this] { emit finished(0); });
            return;
        }
        const auto batch = std::make_shared<Batch>();
        batch->left = cells.size();
        for (const auto& path : cells)
            m_pool.post([this, alive, batch, path] {
                if (!*alive)
                    return;
                if (const auto loaded = S57CellLoader::load(path)) {
                    ++batch->loaded;
                    auto geometry = std::make_shared<const CellGeometry>(loaded->cell);
                    report([this, geometry] { emit cellLoaded(geometry); });
                    for (const auto& note : loaded->notes)
                        report([this, note] { emit failed(QString::fromStdString(note.message)); });
                } else {
                    report([this, error = loaded.error()] {
                        emit failed(QString::fromStdString(error.message));
                    });
                }
                if (--batch->left == 0)
                    report([this, count = batch->loaded.load()] { emit finished(count); });
            });
    });
}

} // namespace kelvox
