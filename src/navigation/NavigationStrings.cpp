#include "navigation/NavigationStrings.h"

namespace kelvox {

const Strings& navigationStrings()
{
    static const Strings texts = {
        {"NSTrue", "T"},
        {"NSMag", "M"},
        {"NSPort", "Port"},
        {"NSStarboard", "Starboard"},
        {"NSOK", "OK"},
        {"NSWaypointArrivalAlarm", "Arrived at the waypoint"},
        {"NSCrossTrackAlarm", "Cross-track limit exceeded"},
        {"NSRouteAlreadyExists", "Another route already has this name"},
        {"NSWaypointAlreadyExists", "Another waypoint already has this name"},
        {"NSImportedGroup", "Imported"},
        {"NSInvalidLatitudeFormat1", "Write the latitude as 59\u00B012.345'N"},
        {"NSInvalidLatitudeFormat2", "Write the latitude as N59.12.345"},
        {"NSInvalidLatitudeFormat3", "Write the latitude as 59.205750N"},
        {"NSInvalidLatitudeFormat4", "Write the latitude as 59\u00B012'20.7\"N"},
        {"NSInvalidLongitudeFormat1", "Write the longitude as 010\u00B012.345'E"},
        {"NSInvalidLongitudeFormat2", "Write the longitude as E010.12.345"},
        {"NSInvalidLongitudeFormat3", "Write the longitude as 010.205750E"},
        {"NSInvalidLongitudeFormat4", "Write the longitude as 010\u00B012'20.7\"E"},
        {"NSInvalidLatitudeRange1", "A latitude lies between 90\u00B0S and 90\u00B0N"},
        {"NSInvalidLatitudeRange2", "The minutes of a latitude lie between 0 and 60"},
        {"NSInvalidLatitudeRange3", "The seconds of a latitude lie between 0 and 60"},
        {"NSInvalidLongitudeRange1", "A longitude lies between 180\u00B0W and 180\u00B0E"},
        {"NSInvalidLongitudeRange2", "The minutes of a longitude lie between 0 and 60"},
        {"NSInvalidLongitudeRange3", "The seconds of a longitude lie between 0 and 60"},
    };
    return texts;
}

} // namespace kelvox
