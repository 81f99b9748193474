#pragma once

#include "base/Result.h"
#include "exchange/ExchangeTarget.h"
#include "exchange/ImportOptions.h"
#include "exchange/XmlReader.h"

#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvox {

/// Reads the placemarks of KML: points as waypoints, lines as routes or as tracks. A KMZ is
/// unpacked with the system's unzip into a private folder that is removed again; its "doc.kml" is
/// read. The vertices of a route refer to the waypoints that the file put at the same place before;
/// one without is made. Tracks with times, an extension of the format, are read beside.
class KMLImport final : private XmlContent {
public:
    enum class Lines { AsRoutes, AsTracks };
    KMLImport(const ImportOptions& options, Lines lines);

    /// What was complete before a fault has been handed to the target.
    [[nodiscard]] Result<void> import(const std::filesystem::path& path, ExchangeTarget& target);
    [[nodiscard]] Result<void> parse(std::string_view bytes, ExchangeTarget& target);

    /// What an unpacked KMZ may measure: beyond it the command is stopped.
    static constexpr unsigned long long largestFile = 1ULL << 30;

private:
    enum class Geometry { None, Point, Line, Track };
    void startElement(std::string_view name, const XmlAttributes& attributes) override;
    void characters(std::string_view text) override;
    void endElement(std::string_view name) override;
    void endPlacemark();
    void readColor();
    void readIcon();
    void readCoordinates(std::string_view text);
    void trackPoint(std::string_view longitude, std::string_view latitude);
    void endItem(); ///< one tuple of the coordinates
    void routePoint(Waypoint waypoint);

    ImportOptions m_options;
    Lines m_lines;
    ExchangeTarget* m_target = nullptr;
    std::optional<Waypoint> m_placemark;
    Geometry m_geometry = Geometry::None;
    bool m_routeIsOpen = false;
    bool m_inCoordinates = false;
    bool m_itemMayEnd = false; ///< unless a comma follows the blank
    std::deque<Date> m_times; ///< of a track, until their places come
    TrackColor m_color;
    std::string m_text;
    std::map<std::pair<float, float>, std::string> m_nameAtPlace;
};

} // namespace kelvox
