#include "presentation/RenderSettings.h"

#include "base/Settings.h"

namespace kelvox {

const std::array<PortrayalSettings::Key, 15> PortrayalSettings::keys{
    {{"showDepthContours", "depth contours"},
     {"showSoundings", "soundings"},
     {"showSurface", "nature of the seabed"},
     {"showRecommendedRoutes", "recommended tracks, with caution and restricted areas only"},
     {"showCautionAreas", "caution areas, with restricted areas only"},
     {"showRestrictedAreas", "restricted areas"},
     {"showAtAllScales", "objects whatever their smallest scale"},
     {"showElevations", "heights of hills and lakes"},
     {"showMarkNames", "names of marks and characters of lights"},
     {"showPlaceNames", "names of places and waters"},
     {"showLightSectors", "sectors of lights"},
     {"largeText", "larger soundings and labels"},
     {"waterDepthUnits", "0 feet, 1 metres, 2 fathoms"},
     {"simplifiedSymbols", "simplified symbols in place of those of paper charts"},
     {"lowLight", "the colours of the night"}}};

void RenderSettings::loadSettings(const Settings& settings)
{
    const std::array<std::pair<std::string_view, bool*>, 12> switches{
        {{"showElevations", &showElevations},
         {"showCautionAreas", &showCautionAreas},
         {"showRestrictedAreas", &showRestrictedAreas},
         {"showDepthContours", &showDepthContours},
         {"showLightSectors", &showSectors},
         {"showMarkNames", &showMarkNames},
         {"showPlaceNames", &showPlaceNames},
         {"showSoundings", &showSoundings},
         {"showRecommendedRoutes", &showRecommendedRoutes},
         {"showSurface", &showSurface},
         {"showAtAllScales", &showAtAllScales},
         {"largeText", &largeText}}};
    for (const auto& [key, value] : switches)
        *value = settings.boolean(key, *value);
    if (settings.find("waterDepthUnits")) {
        depthUnit = static_cast<int>(settings.integer("waterDepthUnits", depthUnit));
        heightsInMetres = depthUnit != 0 && depthUnit != 2;
    }
}

PortrayalSettings PortrayalSettings::fromSettings(const Settings& settings)
{
    PortrayalSettings result;
    result.render.loadSettings(settings);
    result.simplifiedSymbols = settings.boolean("simplifiedSymbols");
    result.lowLight = settings.boolean("lowLight");
    return result;
}

} // namespace kelvox
