#pragma once

#include "base/Result.h"
#include "exchange/TextOutput.h"
#include "navigation/PositionFormatter.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointsModel.h"

#include <filesystem>

namespace kelvox {

/// The lines of comma-separated text: neither a header nor quotes. A comma or a line end within a
/// name becomes a blank; a description, the last field, keeps its commas.
class CSVWriter {
public:
    /// @param units says in which format positions are written
    CSVWriter(TextOutput& out, const Strings& strings, const UnitsModel& units);
    void writeWaypoint(const Waypoint& waypoint);
    void writeTrack(const Track& point);

private:
    TextOutput& m_out;
    NSPositionFormatter m_latitude;
    NSPositionFormatter m_longitude;
};

/// Writes waypoints, routes and tracks as comma-separated text; each replaces its file whole.
class CSVExport {
public:
    CSVExport(const Strings& strings, const UnitsModel& units)
        : m_strings(strings)
        , m_units(units)
    {
    }
    /// "CSV" by the extension, without regard to case.
    [[nodiscard]] static bool isCSV(const std::filesystem::path& path);

    /// Those that the search of the model matches.
    [[nodiscard]] Result<void> exportWaypoints(const std::filesystem::path& path,
                                               const WaypointsModel& waypoints) const;
    [[nodiscard]] Result<void> exportRoute(const std::filesystem::path& path,
                                           const Route& route) const;
    [[nodiscard]] Result<void> exportTracks(const std::filesystem::path& path,
                                            const TracksModel& tracks) const;

private:
    const Strings& m_strings;
    const UnitsModel& m_units;
};

} // namespace kelvox
