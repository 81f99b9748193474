#include "library/ChartStore.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

namespace kelvox {

namespace {
constexpr int busyMilliseconds = 2'000; ///< a second window may be writing

constexpr const char* tables =
    "CREATE TABLE IF NOT EXISTS chart("
    "path TEXT PRIMARY KEY, kind INTEGER, size INTEGER,"
    "modified INTEGER, updates INTEGER, name TEXT, title TEXT,"
    "edition TEXT, number INTEGER, scale INTEGER, west REAL,"
    "south REAL, east REAL, north REAL, coverage BLOB, problem TEXT, date TEXT)"
    " WITHOUT ROWID";

struct Finalise {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalise>;

Statement prepare(sqlite3* database, const char* text)
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, text, -1, &statement, nullptr);
    return Statement(statement);
}

void bindText(sqlite3_stmt* statement, int column, const std::string& text)
{
    sqlite3_bind_text(statement, column, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
}

std::string textAt(sqlite3_stmt* statement, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text
        ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)))
        : std::string();
}

// A count of rings; of each the count of its points and their x and y. In the machine's own form:
// the file stays on it.
std::string pack(const std::vector<std::vector<Point>>& rings)
{
    std::string bytes;
    const auto put = [&](const void* data, std::size_t size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    const auto putCount = [&](std::size_t count) {
        const auto number = static_cast<std::uint32_t>(count);
        put(&number, sizeof number);
    };
    putCount(rings.size());
    for (const auto& ring : rings) {
        putCount(ring.size());
        put(ring.data(), ring.size() * sizeof(Point));
    }
    return bytes;
}

std::optional<std::vector<std::vector<Point>>> unpack(std::string_view bytes)
{
    const auto takeCount = [&]() -> std::uint32_t {
        std::uint32_t number = 0;
        if (bytes.size() >= sizeof number)
            std::memcpy(&number, bytes.data(), sizeof number);
        bytes.remove_prefix(std::min(bytes.size(), sizeof number));
        return number;
    };
    std::vector<std::vector<Point>> rings;
    for (std::uint32_t left = takeCount(); left > 0; --left) {
        const std::size_t count = takeCount();
        if (count == 0 || count > bytes.size() / sizeof(Point))
            return std::nullopt;
        auto& ring = rings.emplace_back(count);
        std::memcpy(ring.data(), bytes.data(), count * sizeof(Point));
        bytes.remove_prefix(count * sizeof(Point));
    }
    return rings;
}

/// One row; nothing when it makes no sense, so that the file is read again.
std::optional<ChartRecord> recordAt(sqlite3_stmt* row)
{
    ChartRecord record;
    record.path = textAt(row, 0);
    const int kind = sqlite3_column_int(row, 1);
    record.kind = static_cast<ChartKind>(kind);
    record.stamp = {std::bit_cast<std::uint64_t>(sqlite3_column_int64(row, 2)),
                    sqlite3_column_int64(row, 3),
                    std::bit_cast<std::uint64_t>(sqlite3_column_int64(row, 4))};
    record.name = textAt(row, 5);
    record.title = textAt(row, 6);
    record.edition = textAt(row, 7);
    record.update = sqlite3_column_int(row, 8);
    record.scale = sqlite3_column_int(row, 9);
    record.bounds = {sqlite3_column_double(row, 10), sqlite3_column_double(row, 11),
                     sqlite3_column_double(row, 12), sqlite3_column_double(row, 13)};
    record.problem = textAt(row, 15);
    record.date = textAt(row, 16);
    auto coverage = unpack({static_cast<const char*>(sqlite3_column_blob(row, 14)),
                            static_cast<std::size_t>(sqlite3_column_bytes(row, 14))});
    const Rect& box = record.bounds;
    const bool isPlace = std::isfinite(box.width()) && std::isfinite(box.height());
    if (kind < 0 || kind > 1 || !coverage || (record.problem.empty() && !isPlace))
        return std::nullopt;
    record.coverage = *std::move(coverage);
    return record;
}
} // namespace

ChartStore::ChartStore(std::filesystem::path file)
    : m_file(std::move(file))
{
    if (m_file.empty())
        return;
    std::error_code ignored;
    std::filesystem::create_directories(m_file.parent_path(), ignored);
    if (open())
        return;
    discard();
    if (!open())
        close();
}

ChartStore::~ChartStore()
{
    close();
}

bool ChartStore::open()
{
    if (sqlite3_open_v2(m_file.c_str(), &m_database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr)
        != SQLITE_OK)
        return false;
    sqlite3_busy_timeout(m_database, busyMilliseconds);
    int found = -1;
    if (const auto statement = prepare(m_database, "PRAGMA user_version");
        statement && sqlite3_step(statement.get()) == SQLITE_ROW)
        found = sqlite3_column_int(statement.get(), 0);
    if (found != 0 && found != version)
        return false;
    // A cache may lose its last lines when the power goes, so it need not wait for the disk.
    return execute("PRAGMA journal_mode=WAL") && execute("PRAGMA synchronous=NORMAL")
        && execute(tables) && execute(fmt::format("PRAGMA user_version={}", version).c_str());
}

void ChartStore::close()
{
    sqlite3_close(m_database);
    m_database = nullptr;
}

void ChartStore::discard()
{
    close();
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm"})
        std::filesystem::remove(m_file.string() + suffix, ignored);
}

bool ChartStore::execute(const char* statement)
{
    return m_database
        && sqlite3_exec(m_database, statement, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::vector<ChartRecord> ChartStore::load()
{
    std::vector<ChartRecord> records;
    if (!m_database)
        return records;
    int step = SQLITE_ERROR;
    {
        const auto all = prepare(m_database,
                                 "SELECT path, kind, size, modified, updates, name, title, edition,"
                                 " number, scale, west, south, east, north, coverage, problem, date"
                                 " FROM chart");
        while (all && (step = sqlite3_step(all.get())) == SQLITE_ROW)
            if (auto record = recordAt(all.get()))
                records.push_back(*std::move(record));
    }
    if (step == SQLITE_DONE || step == SQLITE_BUSY)
        return records;
    discard();
    if (!open())
        close();
    return {};
}

void ChartStore::save(const ChartRecords& charts)
{
    if (!m_database || charts.empty())
        return;
    const auto insert = prepare(m_database,
                                "INSERT OR REPLACE INTO chart VALUES"
                                "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    if (!insert || !execute("BEGIN"))
        return;
    for (const auto& chart : charts) {
        sqlite3_stmt* row = insert.get();
        bindText(row, 1, chart->path.string());
        sqlite3_bind_int(row, 2, static_cast<int>(chart->kind));
        sqlite3_bind_int64(row, 3, std::bit_cast<std::int64_t>(chart->stamp.size));
        sqlite3_bind_int64(row, 4, chart->stamp.modified);
        sqlite3_bind_int64(row, 5, std::bit_cast<std::int64_t>(chart->stamp.updates));
        bindText(row, 6, chart->name);
        bindText(row, 7, chart->title);
        bindText(row, 8, chart->edition);
        sqlite3_bind_int(row, 9, chart->update);
        sqlite3_bind_int(row, 10, chart->scale);
        sqlite3_bind_double(row, 11, chart->bounds.left);
        sqlite3_bind_double(row, 12, chart->bounds.bottom);
        sqlite3_bind_double(row, 13, chart->bounds.right);
        sqlite3_bind_double(row, 14, chart->bounds.top);
        const std::string coverage = pack(chart->coverage);
        sqlite3_bind_blob(row, 15, coverage.data(), static_cast<int>(coverage.size()),
                          SQLITE_TRANSIENT);
        bindText(row, 16, chart->problem);
        bindText(row, 17, chart->date);
        sqlite3_step(row);
        sqlite3_reset(row);
    }
    execute("COMMIT");
}

void ChartStore::remove(std::span<const std::filesystem::path> paths)
{
    if (!m_database || paths.empty())
        return;
    const auto statement = prepare(m_database, "DELETE FROM chart WHERE path=?");
    if (!statement || !execute("BEGIN"))
        return;
    for (const auto& path : paths) {
        bindText(statement.get(), 1, path.string());
        sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
    }
    execute("COMMIT");
}

} // namespace kelvox
