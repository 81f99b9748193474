#include "ais/AISShipTypes.h"

namespace kelvox {

std::string_view aisShipTypeKey(int type)
{
    switch (type) {
    case 30:
        return "NSShipTypeFishing";
    case 31:
    case 32:
        return "NSShipTypeTowing";
    case 33:
        return "NSShipTypeDredging";
    case 34:
        return "NSShipTypeDiving";
    case 35:
        return "NSShipTypeMilitary";
    case 36:
        return "NSShipTypeSailing";
    case 37:
        return "NSShipTypePleasure";
    case 50:
        return "NSShipTypePilot";
    case 51:
        return "NSShipTypeRescue";
    case 52:
        return "NSShipTypeTug";
    case 53:
        return "NSShipTypePortTender";
    case 54:
        return "NSShipTypeAntiPollution";
    case 55:
        return "NSShipTypeLawEnforcement";
    case 58:
        return "NSShipTypeMedical";
    default:
        break;
    }
    switch (type / 10) {
    case 2:
        return "NSShipTypeWingInGround";
    case 4:
        return "NSShipTypeHighSpeed";
    case 6:
        return "NSShipTypePassenger";
    case 7:
        return "NSShipTypeCargo";
    case 8:
        return "NSShipTypeTanker";
    case 9:
        return "NSShipTypeOther";
    default:
        return {};
    }
}

} // namespace kelvox
