#pragma once

#include "base/Result.h"
#include "exchange/TextOutput.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointsModel.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kelvox {

/// The pieces of a GPX 1.1 document, one element a line, nothing indented.
class GPXWriter {
public:
    explicit GPXWriter(TextOutput& out)
        : m_out(out)
    {
    }
    void writeHeader();
    void writeFooter();
    void writeWaypoint(const Waypoint& waypoint, std::string_view element); ///< "wpt" or "rtept"
    void beginRoute(std::string_view name);
    void endRoute() { m_out << "</rte>\n"; }
    void beginTrack(std::string_view name); ///< and its first segment
    void writeTrack(const Track& point, bool isStart);
    void endTrack();

private:
    TextOutput& m_out;
    bool m_segmentHasPoints = false;
};

/// Writes waypoints, routes and tracks as GPX 1.1 files; each replaces its file whole. Course and
/// speed of track points are written as plain elements, in degrees and knots.
class GPXExport {
public:
    /// By the extension, without regard to case.
    [[nodiscard]] static bool isGPX(const std::filesystem::path& path);

    /// Those that the search of the model matches.
    [[nodiscard]] Result<void> exportWaypoints(const std::filesystem::path& path,
                                               const WaypointsModel& waypoints) const;
    /// @return failure, nothing written, for a group without waypoints
    [[nodiscard]] Result<void> exportWaypointsFromGroup(const std::filesystem::path& path,
                                                        const WaypointsModel& waypoints,
                                                        const std::string& group) const;
    [[nodiscard]] Result<void> exportRoute(const std::filesystem::path& path,
                                           const Route& route) const;
    [[nodiscard]] Result<void> exportTracks(const std::filesystem::path& path,
                                            const TracksModel& tracks) const;
    /// "TRACK_" and the local day as "%m%d%y".
    [[nodiscard]] static std::string defaultTrackName(const Clock& clock);
};

} // namespace kelvox
