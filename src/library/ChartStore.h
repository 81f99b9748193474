#pragma once

#include "library/ChartRecord.h"

#include <span>

struct sqlite3;

namespace kelvox {

/// The chart index on disk: an SQLite file that is only a cache.
///
/// A file that is missing, damaged or of another version is made anew without a word; where it
/// cannot be written, nothing is kept. Used by one thread at a time.
class ChartStore {
public:
    static constexpr int version = 2; ///< of the tables; another one is thrown away

    /// @param file empty to keep nothing
    explicit ChartStore(std::filesystem::path file);
    ~ChartStore();
    ChartStore(const ChartStore&) = delete;
    ChartStore& operator=(const ChartStore&) = delete;

    /// All that is kept; nothing when the file had to be made anew.
    [[nodiscard]] std::vector<ChartRecord> load();
    /// Adds the charts, or replaces those of the same path.
    void save(const ChartRecords& charts);
    void remove(std::span<const std::filesystem::path> paths);

private:
    bool open();
    void close();
    void discard();
    bool execute(const char* statement);

    std::filesystem::path m_file;
    sqlite3* m_database = nullptr;
};

} // namespace kelvox
