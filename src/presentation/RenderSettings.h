#pragma once

#include <array>
#include <string_view>

namespace kelvox {

class Settings;

/// What the user wants to see and how.
struct RenderSettings {
    bool showDepthContours = true;
    bool showSoundings = true;
    bool showSurface = true; ///< nature of the seabed
    bool showRecommendedRoutes = true;
    bool showCautionAreas = true;
    bool showRestrictedAreas = true;
    bool showAtAllScales = false; ///< turns the scale filter off
    bool largeText = false;
    bool showElevations = true;
    bool showMarkNames = true;
    bool showPlaceNames = true;
    bool showSectors = true;
    int depthUnit = 1; ///< 0 feet, 1 metres, 2 fathoms
    bool heightsInMetres = true;

    /// Reads the switches by their keys; one that was never set keeps its value. Heights go with
    /// depths: whoever reads depths in feet or fathoms reads heights in feet.
    void loadSettings(const Settings& settings);
};

/// The same with what the presentation library and the colours are chosen by.
struct PortrayalSettings {
    RenderSettings render;
    bool simplifiedSymbols = false; ///< else those of paper charts
    bool lowLight = false; ///< the night's colours

    struct Key {
        std::string_view name;
        std::string_view meaning;
    };
    /// All keys that are read.
    static const std::array<Key, 15> keys;

    [[nodiscard]] static PortrayalSettings fromSettings(const Settings& settings);
    /// 1 day or 3 night; dusk is chosen by hand only.
    [[nodiscard]] int colorTable() const { return lowLight ? 3 : 1; }
};

} // namespace kelvox
