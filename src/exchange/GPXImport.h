#pragma once

#include "base/Result.h"
#include "exchange/ExchangeTarget.h"
#include "exchange/ImportOptions.h"
#include "exchange/XmlReader.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

/// Reads the waypoints, routes and tracks of GPX, any version that has its element names.
///
/// Kept on purpose, as the program has always read: every "trkseg" gets a colour of its own, one
/// step lighter than the last; the local time zone's offset is added to every time; a point without
/// a time is dated by the counter that names it.
class GPXImport final : private XmlContent {
public:
    explicit GPXImport(const ImportOptions& options);

    /// Whether "<gpx" stands within the first 128 bytes.
    [[nodiscard]] static bool isGPX(const std::filesystem::path& path);

    /// What was complete before a fault has been handed to the target.
    [[nodiscard]] Result<void> import(const std::filesystem::path& path, ExchangeTarget& target);
    [[nodiscard]] Result<void> parse(std::string_view bytes, ExchangeTarget& target);

private:
    void startElement(std::string_view name, const XmlAttributes& attributes) override;
    void characters(std::string_view text) override;
    void endElement(std::string_view name) override;
    void beginTrackPoint(const XmlAttributes& attributes);
    void endWaypoint(bool ofRoute);
    void readTime();
    void setColor();

    ImportOptions m_options;
    ExchangeTarget* m_target = nullptr;
    std::optional<Waypoint> m_waypoint;
    std::optional<std::string> m_routeName; ///< of the open route
    std::optional<Track> m_track;
    TrackColor m_trackColor;
    int m_segments = 0;
    std::string m_valueString;
};

} // namespace kelvox
