#include "positioning/PositioningStrings.h"

namespace kelvox {

const Strings& positioningStrings()
{
    static const Strings texts = {
        {"NSNoGPSPositionData", "No position from the GPS for 90 seconds"},
        {"NSNoAISPositionData", "No position from the instruments for 90 seconds"},
        {"NSAnchorAlarm", "The anchor is dragging"},
        {"NSOK", "OK"},
        {"NSAWS", "AWS"},
        {"NSAWA", "AWA"},
        {"NSTWS", "TWS"},
        {"NSTWA", "TWA"},
        {"NSFixNone", "No fix"},
        {"NSFix2D", "2D fix"},
        {"NSFix3D", "3D fix"},
    };
    return texts;
}

} // namespace kelvox
