#include "painting/GribPainter.h"

#include "painting/PainterCanvas.h"
#include "weather/Beaufort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>

namespace kelvox {

namespace {
double luminance(DisplayColor color)
{
    const auto light = [](std::uint8_t coded) {
        const double c = coded / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * light(color.red) + 0.7152 * light(color.green) + 0.0722 * light(color.blue);
}

int hueOf(DisplayColor color)
{
    return toQColor(color).hslHue();
}
} // namespace

TEST(GribPainter, NothingOutshinesTheInkOfADarkChart)
{
    const GribLook day{.paper = {255, 255, 255}, .ink = {0, 0, 0}};
    const GribLook dusk{.paper = {0, 0, 0}, .ink = {137, 137, 137}};
    const GribLook night{.paper = {0, 0, 0}, .ink = {49, 49, 49}};
    std::set<std::tuple<int, int, int>> atNight;
    for (const BeaufortRow& row : beaufortScale()) {
        const DisplayColor printed{row.color.red, row.color.green, row.color.blue};
        EXPECT_EQ(gribInk(row.color, day), printed);
        for (const GribLook& look : {dusk, night}) {
            const DisplayColor shown = gribInk(row.color, look);
            EXPECT_LE(luminance(shown), 1.08 * luminance(look.ink));
            EXPECT_GE(luminance(shown), 0.2 * luminance(look.ink));
        }
        const DisplayColor shown = gribInk(row.color, night);
        const int turn = std::abs(hueOf(shown) - hueOf(printed));
        EXPECT_LT(std::min(turn, 360 - turn), 8);
        atNight.insert({shown.red, shown.green, shown.blue});
    }
    EXPECT_EQ(atNight.size(), beaufortScale().size()) << "forces are told apart at night too";
    // Black lines have no hue and become as bright as the ink.
    EXPECT_EQ(gribInk({0, 0, 0}, night), night.ink);
}

} // namespace kelvox
