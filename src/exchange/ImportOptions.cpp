#include "exchange/ImportOptions.h"

#include "navigation/PropertyList.h"

#include <charconv>
#include <cmath>
#include <ctime>

namespace kelvox {

namespace {
float degrees(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    float value = NAN;
    (void)std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}
} // namespace

ImportOptions ImportOptions::now(const Clock& clock)
{
    const std::time_t second = std::chrono::system_clock::to_time_t(clock.now());
    std::tm local{};
    ::localtime_r(&second, &local);
    return {
        .key = second, .timeZoneOffset = std::chrono::seconds(local.tm_gmtoff), .trackColor = {}};
}

bool setPlace(ChartMarker& marker, std::string_view latitude, std::string_view longitude)
{
    const float north = degrees(latitude);
    float east = degrees(longitude);
    if (east > 180)
        east -= 360;
    if (!(std::abs(north) <= 90 && std::abs(east) <= 180))
        return false;
    marker.latitude = north;
    marker.longitude = east;
    return true;
}

} // namespace kelvox
