#include "presentation/CieColor.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {

namespace {
/// A calibration file; red, green and blue give their share of 100 units at drive 255.
std::string calibration(double gamma, const char* unit, int step = 1, int count = 256)
{
    std::string text = fmt::format("[general]\ncount={}\nluminance={}\n", count, unit);
    const double full[] = {20, 70, 10};
    const char* names[] = {"red", "green", "blue"};
    for (int c = 0; c < 3; ++c) {
        text += fmt::format("[{} luminance]\n", names[c]);
        for (int drive = 0; drive < 256; drive += step)
            text += fmt::format("{}={:.9f}\n", drive, full[c] * std::pow(drive / 255.0, gamma));
    }
    return text;
}
} // namespace

TEST(CieColor, MixesThePrimariesOfTheMonitor)
{
    // Worked by hand with a separate program: sRGB primaries, white (0.28, 0.31) of 100 cd/m2.
    struct Case {
        CieColor color;
        LinearColor linear;
    };
    for (const Case& c : std::initializer_list<Case>{
             {{0.28, 0.31, 100}, {1, 1, 1}},
             {{0.28, 0.31, 12.5}, {0.125, 0.125, 0.125}},
             {{0.64, 0.33, 15.5331}, {1, 0, 0}}, // the red primary at its share of the white
             {{0.30, 0.60, 75.48473}, {0, 1, 0}},
             {{0.35, 0.39, 62.5}, {0.889, 0.612, 0.277}}, // land
             {{0.21, 0.22, 56.25}, {0.204, 0.564, 1.170}}, // shallow water
             {{0.145, 0.14, 25}, {-0.249, 0.257, 1.055}},
             {{0.3, 0, 10}, {0, 0, 0}},
             {{0.3, 0.3, -1}, {0, 0, 0}}}) {
        const LinearColor linear =
            linearFromCie(c.color, {{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}}}, {0.28, 0.31}, 100);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(linear[i], c.linear[i], 0.0006) << c.color.x << ' ' << i;
    }
}

TEST(CieColor, WhatADisplayCannotShowKeepsItsHue)
{
    EXPECT_EQ(fitIntoDisplay({2, 1, 0.5}, 1), (LinearColor{1, 0.5, 0.25}));
    // A quarter of the way from each primary to the grey of 0.6.
    const LinearColor paled = fitIntoDisplay({-0.2, 0.4, 0.6}, 0.6);
    EXPECT_NEAR(paled[0], 0, 1e-12);
    EXPECT_NEAR(paled[1], 0.45, 1e-12);
    EXPECT_NEAR(paled[2], 0.6, 1e-12);
    EXPECT_EQ(fitIntoDisplay({-0.2, 0, 0}, 0), (LinearColor{0, 0, 0}));
}

TEST(CieColor, TheStandardConversionFollowsSrgb)
{
    // The corners of the sRGB cube at 80 cd/m2, and half light, which is coded as 188.
    EXPECT_EQ(standardColor({0.3127, 0.3290, 80}), (DisplayColor{255, 255, 255}));
    EXPECT_EQ(standardColor({0.64, 0.33, 0.2126 * 80}), (DisplayColor{255, 0, 0}));
    EXPECT_EQ(standardColor({0.15, 0.06, 0.0722 * 80}), (DisplayColor{0, 0, 255}));
    EXPECT_EQ(standardColor({0.3127, 0.3290, 40}), (DisplayColor{188, 188, 188}));
    EXPECT_EQ(standardColor({0.3127, 0.3290, 0}), (DisplayColor{0, 0, 0}));
}

TEST(CieColor, DriveValuesComeFromTheCurves)
{
    const auto linear = MonitorCalibration::parse(calibration(1, "cd"));
    const auto coarse = MonitorCalibration::parse(calibration(1, "cd", 51, 6));
    const auto square = MonitorCalibration::parse(calibration(2, "cd"));
    const auto footLamberts = MonitorCalibration::parse(calibration(1, "fl"));
    ASSERT_TRUE(linear && coarse && square && footLamberts);
    EXPECT_NEAR(linear->whiteLuminance(), 100, 1e-6);
    EXPECT_NEAR(footLamberts->whiteLuminance(), 342, 1e-4);
    const CieColor grey{0.28, 0.31, 36};
    EXPECT_EQ(linear->color(grey), (DisplayColor{92, 92, 92})) << "0.36 of 255";
    EXPECT_EQ(coarse->color(grey), (DisplayColor{92, 92, 92})) << "between measured values";
    EXPECT_EQ(square->color(grey), (DisplayColor{153, 153, 153})) << "0.6 squared";
    EXPECT_EQ(linear->color({0.28, 0.31, 900}), (DisplayColor{255, 255, 255}));
}

TEST(CieColor, ACalibrationThatIsNotCompleteIsRefused)
{
    const std::string whole = calibration(1, "cd");
    std::string gap = whole;
    gap.replace(gap.rfind("\n77="), 4, "\n;77=");
    for (const std::string& text :
         {std::string(), gap, calibration(1, "cd", 2, 256), std::string("[red luminance]\n0=1\n"),
          std::string("[red luminance]\n0=0\n9=0\n[green luminance]\n0=0\n9=1\n[blue "
                      "luminance]\n0=0\n9=1\n")})
        EXPECT_FALSE(MonitorCalibration::parse(text)) << text.substr(0, 60);
}

} // namespace kelvox
