#pragma once

#include "base/Result.h"
#include "exchange/ExchangeTarget.h"

#include <filesystem>

namespace kelvox {

struct ExchangeKinds {
    bool waypoints = true;
    bool routes = true;
    bool tracks = true;
};

/// Reads a GPX, KML, KMZ or CSV file as it stands, dates without the local offset that imports into
/// the models add. With BadSyntax the records hold what was complete before the fault.
[[nodiscard]] Result<void> readExchangeFile(const std::filesystem::path& path,
                                            const ExchangeKinds& kinds, ExchangeRecords& records);

/// Writes what there is of the kinds in one file, its format by the extension.
[[nodiscard]] Result<void> writeExchangeFile(const std::filesystem::path& path,
                                             const ExchangeKinds& kinds,
                                             const ExchangeRecords& records);

} // namespace kelvox
