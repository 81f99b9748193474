#pragma once

#include "base/Result.h"
#include "iso8211/ISOTree.h"
#include "s57/S57ChartItems.h"

#include <vector>

namespace kelvox {

/// The one door to S-57 files: cells, their updates and exchange-set catalogues.
class ISO8211Wrap {
public:
    using Catalog = std::vector<std::shared_ptr<S57CatalogRecord>>;

    /// A quick look at the first 16 bytes.
    [[nodiscard]] static bool isS57Cell(const std::filesystem::path& path);

    [[nodiscard]] static Result<ISOFile> pathToISOFile(const std::filesystem::path& path);
    [[nodiscard]] static Result<ISOFile> loadFromPath(const std::filesystem::path& path);
    [[nodiscard]] static Result<ISOFile> load(const S57CatalogRecord& record);

    /// Reads one file, a base cell or an update, into a cell. The caller calls assemble() after the
    /// last one. What stands before a broken record is kept and said in the result's note.
    struct LoadNote {
        std::optional<Error> stoppedBy; ///< why reading ended before the end of the file
    };
    [[nodiscard]] static Result<LoadNote> load(const std::shared_ptr<const S57CatalogRecord>& base,
                                               const S57CatalogRecord& file, S57ChartItems& cell);
    /// The same from memory.
    [[nodiscard]] static Result<LoadNote> load(const std::shared_ptr<const S57CatalogRecord>& base,
                                               std::span<const char> bytes, S57ChartItems& cell);

    /// Reads an exchange-set catalogue: adds the cells and updates whose files exist. Fails when
    /// none was added.
    [[nodiscard]] static Result<void> load(const std::filesystem::path& catalog, Catalog& into);

    /// Writes a catalogue of the cells in its folder and their updates, and adds the base cells'
    /// records to the list. A cell that cannot be read is left out and named in the result.
    [[nodiscard]] static Result<std::vector<Error>> save(const std::filesystem::path& catalog,
                                                         Catalog& into);
};

} // namespace kelvox
