#pragma once

#include "base/Result.h"
#include "exchange/ExchangeTarget.h"
#include "navigation/UnitsModel.h"

#include <filesystem>
#include <stop_token>
#include <string>

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

/// How a file is written where its format leaves a choice.
struct ExchangeStyle {
    int positionFormatUnits = UnitsModel::DecimalDegrees; ///< of CSV
    std::string iconBase = {}; ///< of KML: see KMLExport
};

/// Writes what there is of the kinds in one file, its format by the extension. Whatever stood there
/// stays until the new file is whole, also when a stop is requested.
[[nodiscard]] Result<void> writeExchangeFile(const std::filesystem::path& path,
                                             const ExchangeKinds& kinds,
                                             const ExchangeRecords& records,
                                             const ExchangeStyle& style = {},
                                             const std::stop_token& stop = {});

} // namespace kelvox
