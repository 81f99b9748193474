#pragma once

#include "base/Result.h"
#include "painting/WorkerPool.h"
#include "s57/CellGeometry.h"

#include <QObject>

#include <filesystem>

namespace kelvox {

/// Loads cells on the pool and reports each on the main thread as it comes.
class ChartLoader final : public QObject {
    Q_OBJECT
public:
    explicit ChartLoader(WorkerPool& pool, QObject* parent = nullptr);
    ~ChartLoader() override;

    /// Files, folders and catalogues; returns at once.
    void open(const std::vector<std::filesystem::path>& paths);

signals:
    void cellLoaded(const std::shared_ptr<const kelvox::CellGeometry>& geometry);
    void failed(const QString& message);
    /// All that was asked for has been reported.
    void finished(int cells);

private:
    struct Batch;
    void report(std::function<void()> work);

    WorkerPool& m_pool;
    /// Cleared when the loader goes: work still queued then reports to nobody.
    std::shared_ptr<std::atomic<bool>> m_alive;
};

} // namespace kelvox
