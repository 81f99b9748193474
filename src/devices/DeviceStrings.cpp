#include "devices/DeviceStrings.h"

namespace kelvox {

const Strings& deviceStrings()
{
    static const Strings texts = {
        {"NSSlaveMode", "Set the interface of the receiver to Garmin (host or slave) mode"},
        {"NSFailConnect", "The connection cannot be made"},
        {"NSStartAtReceiver", "Start sending waypoints and routes at the receiver"},
        {"NSStartSavingAtReceiver", "Start saving to the computer in the receiver's menu"},
        {"NSStartLoadingAtReceiver", "The receiver must be loading from the computer in its menu"},
    };
    return texts;
}

} // namespace kelvox
