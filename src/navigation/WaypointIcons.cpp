#include "navigation/WaypointIcons.h"

#include <algorithm>
#include <array>
#include <string>

namespace kelvox {

namespace {
// The place of an icon is saved with the waypoint: add at the end, never move.
constexpr std::array icons = {
    // clang-format off
    WaypointIcon{"WAYPOINT", "Waypoint", 18},
    WaypointIcon{"DOTWHITE", "Dot, White", 36},
    WaypointIcon{"ANCHOR", "Anchor", 0},
    WaypointIcon{"ANCHORPROHIBITED", "Anchor Prohibited", 184},
    WaypointIcon{"BELL", "Bell", 1},
    WaypointIcon{"HORN", "Horn", 9},
    WaypointIcon{"LIGHT", "Light", 12},
    WaypointIcon{"BEACON", "Beacon", 185},
    WaypointIcon{"RADIOBEACON", "Radio Beacon", 37},
    WaypointIcon{"BUOYWHITE", "Buoy, White", 17},
    WaypointIcon{"DIAMONDGREEN", "Diamond, Green", 2},
    WaypointIcon{"DIAMONDRED", "Diamond, Red", 3},
    WaypointIcon{"SQUAREGREEN", "Square, Green", 15},
    WaypointIcon{"SQUARERED", "Square, Red", 16},
    WaypointIcon{"FLAGBLUE", "Flag, Blue", 8284},
    WaypointIcon{"FLAGGREEN", "Flag, Green", 8285},
    WaypointIcon{"FLAGRED", "Flag, Red", 8286},
    WaypointIcon{"PINBLUE", "Pin, Blue", 8287},
    WaypointIcon{"PINGREEN", "Pin, Green", 8288},
    WaypointIcon{"PINRED", "Pin, Red", 8289},
    WaypointIcon{"TRIANGLEBLUE", "Triangle, Blue", 8351},
    WaypointIcon{"TRIANGLEGREEN", "Triangle, Green", 8352},
    WaypointIcon{"TRIANGLERED", "Triangle, Red", 8353},
    WaypointIcon{"SHIPWRECK", "Shipwreck", 19},
    WaypointIcon{"DANGER", "Danger Area", 166},
    WaypointIcon{"REEF", "Reef", 187},
    WaypointIcon{"STUMP", "Stump", 193},
    WaypointIcon{"FISHING", "Fishing Area", 7},
    WaypointIcon{"MARINA", "Marina", 191},
    WaypointIcon{"BOATRAMP", "Boat Ramp", 150},
    WaypointIcon{"FUEL", "Gas Station", 8},
    WaypointIcon{"RESTAURANT", "Restaurant", 11},
    WaypointIcon{"RESIDENCE", "Residence", 10},
    WaypointIcon{"SHOPPING", "Shopping Center", 172},
    WaypointIcon{"SHOWER", "Shower", 153},
    WaypointIcon{"TELEPHONE", "Telephone", 155},
    WaypointIcon{"INFORMATION", "Information", 157},
    WaypointIcon{"SWIMMING", "Swimming Area", 163},
    WaypointIcon{"BRIDGE", "Bridge", 8233},
    WaypointIcon{"BUILDING", "Building", 8234},
    WaypointIcon{"SUMMIT", "Summit", 8246},
    WaypointIcon{"TIDESTATION", "Tide Station", 183},
    WaypointIcon{"NAVAIDWHITE", "Navaid, White", 33},
    WaypointIcon{"NAVAIDRED", "Navaid, Red", 29},
    WaypointIcon{"NAVAIDGREEN", "Navaid, Green", 25},
    WaypointIcon{"NAVAIDBLUE", "Navaid, Blue", 24},
    WaypointIcon{"NAVAIDBLACK", "Navaid, Black", 23},
    WaypointIcon{"NAVAIDAMBER", "Navaid, Amber", 22},
    WaypointIcon{"NAVAIDORANGE", "Navaid, Orange", 28},
    WaypointIcon{"NAVAIDVIOLET", "Navaid, Violet", 32},
    WaypointIcon{"NAVAIDREDGREEN", "Navaid, Red/Green", 30},
    WaypointIcon{"NAVAIDGREENRED", "Navaid, Green/Red", 26},
    WaypointIcon{"NAVAIDREDWHITE", "Navaid, Red/White", 31},
    WaypointIcon{"NAVAIDGREENWHITE", "Navaid, Green/White", 27},
    WaypointIcon{"NAVAIDWHITERED", "Navaid, White/Red", 35},
    WaypointIcon{"NAVAIDWHITEGREEN", "Navaid, White/Green", 34},
    WaypointIcon{"BLOCKBLUE", "Block, Blue", 8290},
    WaypointIcon{"BLOCKGREEN", "Block, Green", 8291},
    WaypointIcon{"BLOCKRED", "Block, Red", 8292},
    WaypointIcon{"CIRCLEBLUE", "Circle, Blue", 8296},
    WaypointIcon{"CIRCLEGREEN", "Circle, Green", 8295},
    WaypointIcon{"CIRCLERED", "Circle, Red", 8294},
    WaypointIcon{"CIRCLEX", "Circle with X", 179},
    WaypointIcon{"FLAG", "Flag", 178},
    WaypointIcon{"MOB", "Man Overboard", 21},
    WaypointIcon{"SKULL", "Skull and Crossbones", 14},
    WaypointIcon{"RESTRICTED", "Restricted Area", 167},
    WaypointIcon{"WEEDBED", "Weed Bed", 188},
    WaypointIcon{"DROPOFF", "Dropoff", 189},
    WaypointIcon{"DIVER", "Diver Down Flag 1", 4},
    WaypointIcon{"DOCK", "Dock", 190},
    WaypointIcon{"COASTGUARD", "Coast Guard", 186},
    WaypointIcon{"BAIT", "Bait and Tackle", 192},
    WaypointIcon{"BAR", "Bar", 13},
    WaypointIcon{"LODGING", "Lodging", 173},
    WaypointIcon{"WATER", "Drinking Water", 154},
    WaypointIcon{"RESTROOM", "Restroom", 152},
    WaypointIcon{"MEDICAL", "Medical Facility", 156},
    WaypointIcon{"PARKING", "Parking Area", 158},
    WaypointIcon{"BEACH", "Beach", 8244},
    WaypointIcon{"DAM", "Dam", 164},
    WaypointIcon{"CHURCH", "Church", 8236},
    WaypointIcon{"TOWER", "Tall Tower", 16391},
    WaypointIcon{"CURRENTSTATION", "Current Station", 183},
    // clang-format on
};

std::string folded(std::string_view name)
{
    std::string letters;
    for (const char c : name)
        if (c != ' ' && c != ',' && c != '/')
            letters += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return letters;
}

int indexWhere(auto&& matches)
{
    const auto it = std::find_if(icons.begin(), icons.end(), matches);
    return it == icons.end() ? -1 : static_cast<int>(it - icons.begin());
}
} // namespace

std::span<const WaypointIcon> waypointIcons()
{
    return icons;
}

const WaypointIcon* waypointIcon(int index)
{
    return index >= 0 && index < static_cast<int>(icons.size()) ? &icons[index] : nullptr;
}

int iconIndex(std::string_view name)
{
    const auto letters = folded(name);
    const int exact = indexWhere([&](const WaypointIcon& icon) { return icon.name == letters; });
    if (exact >= 0)
        return exact;
    return std::max(
        0, indexWhere([&](const WaypointIcon& icon) { return folded(icon.gpxSymbol) == letters; }));
}

int iconIndexForDeviceCode(int code)
{
    return std::max(0,
                    indexWhere([&](const WaypointIcon& icon) { return icon.deviceCode == code; }));
}

} // namespace kelvox
