#pragma once

#include "base/Result.h"
#include "s57/S57ChartItems.h"

#include <vector>

namespace kelvox {

/// Loads a base cell with the updates that lie beside it.
class S57CellLoader {
public:
    enum class Updates { Apply, Leave };
    static constexpr int maximumUpdate = 999;

    struct Loaded {
        std::shared_ptr<S57ChartItems> cell;
        int updatesApplied = 0;
        /// Why a file was read only in part, or an update was not applied; empty when all is well.
        std::vector<Error> notes;
    };

    /// The updates NAME.001, NAME.002 and so on are applied in order up to the first gap. One that
    /// is contained in the base cell already is passed over; one that belongs to another edition
    /// or does not follow its predecessor ends the chain with a note, since applying it would
    /// draw a chart that never was.
    [[nodiscard]] static Result<Loaded> load(const std::filesystem::path& path,
                                             Updates updates = Updates::Apply);
    /// A single file from memory, assembled.
    [[nodiscard]] static Result<Loaded> loadBytes(std::span<const char> bytes);

    /// All base cells named by these files and folders, folders searched through, each once, in
    /// order of their paths. What is no cell and was named itself is reported.
    [[nodiscard]] static std::vector<std::filesystem::path>
    findCells(const std::vector<std::filesystem::path>& filesAndFolders,
              std::vector<Error>& problems);
};

} // namespace kelvox
