#include "positioning/NmeaPosition.h"

#include "navigation/PositionFormatter.h"

namespace kelvox {

std::string nmeaFields(Position position)
{
    static const Strings noTexts; // the field form needs none
    static const NSPositionFormatter latitude(NSPositionFormatter::Latitude, noTexts);
    static const NSPositionFormatter longitude(NSPositionFormatter::Longitude, noTexts);
    return latitude.nmeaFormat(position.latitude) + (position.latitude < 0 ? ",S," : ",N,")
        + longitude.nmeaFormat(position.longitude) + (position.longitude < 0 ? ",W" : ",E");
}

} // namespace kelvox
