#pragma once

#include "base/Result.h"
#include "exchange/ExchangeTarget.h"
#include "exchange/ImportOptions.h"
#include "navigation/PositionFormatter.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kelvox {

/// Reads comma-separated text as CSVExport writes it, and the tables of other programs whose first
/// line names a latitude and a longitude, fields in quotes there, separated by comma, semicolon or
/// tabulator.
///
/// Positions are read in the user's format first, then in the others and as plain decimal degrees.
class CSVImport {
public:
    CSVImport(const ImportOptions& options, const Strings& strings, const UnitsModel& units);

    /// Each gives the texts of what was wrong with positions, one a line, for the user. A line with
    /// a fault is skipped.
    [[nodiscard]] Result<std::string> importWaypoints(const std::filesystem::path& path,
                                                      ExchangeTarget& target) const;
    /// The waypoints and, named like the file, a route through them.
    [[nodiscard]] Result<std::string> importRoute(const std::filesystem::path& path,
                                                  ExchangeTarget& target) const;
    [[nodiscard]] Result<std::string> importTracks(const std::filesystem::path& path,
                                                   ExchangeTarget& target) const;

    [[nodiscard]] std::string readWaypoints(std::string_view text, ExchangeTarget& target) const;
    [[nodiscard]] std::string readRoute(std::string_view text, std::string name,
                                        ExchangeTarget& target) const;
    [[nodiscard]] std::string readTracks(std::string_view text, ExchangeTarget& target) const;

    /// Whether the text is a track: its lines begin with a date, or its header names one and no
    /// name.
    [[nodiscard]] static bool isTrack(std::string_view text);

private:
    struct Columns;
    [[nodiscard]] Result<double> ordinate(std::string_view text,
                                          NSPositionFormatter::Orientation axis) const;
    [[nodiscard]] Result<void> place(ChartMarker& marker, std::string_view latitude,
                                     std::string_view longitude) const;
    template <class Take> std::string eachWaypoint(std::string_view text, Take&& take) const;

    ImportOptions m_options;
    const Strings& m_strings;
    const UnitsModel& m_units;
};

} // namespace kelvox
