#include "navigation/UnitsModel.h"

#include <utility>

namespace kelvox {

namespace {
constexpr std::pair<const char*, int UnitsModel::*> fields[] = {
    {"positionFormatUnits", &UnitsModel::positionFormatUnits},
    {"surfaceDistanceUnits", &UnitsModel::surfaceDistanceUnits},
    {"waterDepthUnits", &UnitsModel::waterDepthUnits},
    {"boatSpeedUnits", &UnitsModel::boatSpeedUnits},
    {"windSpeedUnits", &UnitsModel::windSpeedUnits},
    {"temperatureUnits", &UnitsModel::temperatureUnits},
    {"fuelUnits", &UnitsModel::fuelUnits},
    {"modeUnits", &UnitsModel::modeUnits},
};
} // namespace

UnitsModel& UnitsModel::units()
{
    static UnitsModel shared;
    return shared;
}

void UnitsModel::loadSettings(const Settings& settings)
{
    for (const auto& [key, field] : fields)
        this->*field = static_cast<int>(settings.integer(key));
}

void UnitsModel::saveSettings(Settings& settings) const
{
    for (const auto& [key, field] : fields)
        settings.set(key, static_cast<long long>(this->*field));
}

} // namespace kelvox
