#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvox {

/// What loading found beside the records themselves.
struct LoadReport {
    std::size_t records = 0;
    std::size_t passedOver = 0; ///< entries that are no record or lie outside the chart
    std::size_t recovered = 0; ///< records changed after the last save, from the journal
    /// Set when the file could not be read: the reason, and the name under which it was kept.
    std::optional<Error> error;
    std::filesystem::path keptAs;
};

/// A collection's file as it shall be, taken at one moment. write() may run on any thread.
struct PendingSave {
    std::filesystem::path file;
    std::string bytes;
    std::uint64_t journalPosition = 0; ///< where the journal stood at that moment
    std::uint64_t revision = 0;
    std::string refusal; ///< why the file must not be replaced; empty where it may

    /// Whether the file may be replaced; if so the state before is kept as a backup.
    [[nodiscard]] Result<void> prepare() const;
    /// Prepares, then replaces the file in one step, down to the disk.
    [[nodiscard]] Result<void> write() const;
};

/// The states that earlier saves replaced, oldest first; the ten last ones are kept, in the folder
/// "Backups" beside the file.
[[nodiscard]] std::vector<std::filesystem::path> backupsOf(const std::filesystem::path& file);

} // namespace kelvox
