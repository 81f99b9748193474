#pragma once

#include "base/Result.h"
#include "base/Settings.h"
#include "exchange/TextOutput.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointsModel.h"

#include <filesystem>
#include <stop_token>
#include <string>
#include <string_view>

namespace kelvox {

/// The pieces of a KML 2.0 document, nothing indented, longitude first.
class KMLWriter {
public:
    /// @param iconBase the address of the icons' pictures: name and ".png" are appended
    KMLWriter(TextOutput& out, std::string iconBase)
        : m_out(out)
        , m_iconBase(std::move(iconBase))
    {
    }
    void writeHeader(std::string_view folderName);
    void writeFooter();
    void writeStartPosition(Position position);
    void writeWaypoint(const Waypoint& waypoint);
    void startRoute(std::string_view name); ///< its line
    void startTrack(TrackColor color);
    void writePosition(const ChartMarker& marker); ///< of the line
    void endTrack(); ///< ends the line of a route, too
    void writeTrack(const Track& point); ///< as a placemark of its own
    void writePlacemarks(std::string_view text) { m_out << text; } ///< weather: see GribKml

private:
    TextOutput& m_out;
    std::string m_iconBase;
};

/// Writes waypoints, routes and tracks for globe viewers; each replaces its file whole.
class KMLExport {
public:
    static constexpr const char* iconBaseKey = "kmlIconBaseAddress"; ///< in the user's settings

    explicit KMLExport(const Settings& settings);

    /// "KML" or "KMZ" by the extension, without regard to case.
    [[nodiscard]] static bool isKML(const std::filesystem::path& path);

    /// Those that the search of the model matches.
    [[nodiscard]] Result<void> exportWaypoints(const std::filesystem::path& path,
                                               const WaypointsModel& waypoints) const;
    [[nodiscard]] Result<void> exportRoute(const std::filesystem::path& path,
                                           const Route& route) const;
    [[nodiscard]] Result<void> exportTracks(const std::filesystem::path& path,
                                            const TracksModel& tracks) const;
    /// A document of placemarks that another writer made, e.g. GribKml.
    [[nodiscard]] Result<void> exportPlacemarks(const std::filesystem::path& path,
                                                std::string_view placemarks, Position start,
                                                const std::stop_token& stop = {}) const;
    /// Hands the file to the viewer that is registered for it.
    [[nodiscard]] static Result<void> openGoogleEarth(const std::filesystem::path& path);

private:
    std::string m_iconBase;
};

} // namespace kelvox
