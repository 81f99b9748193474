#include "s57/S57Coordinate.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvox {

namespace {
using Operation = S57DepthText (S57Depth::*)(S57Depth::Form) const;
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float endless = std::numeric_limits<float>::infinity();
} // namespace

TEST(S57Depth, IsCutTowardsTheShoalerInEveryUnit)
{
    constexpr Operation feet = &S57Depth::depthInFeet;
    constexpr Operation metres = &S57Depth::depthInMetres;
    constexpr Operation fathoms = &S57Depth::depthInFathoms;
    struct Row {
        float depth;
        Operation operation;
        const char* figure;
        const char* subscript;
        const char* why;
    };
    for (const auto& row : std::initializer_list<Row>{
             {12.59F, metres, "12", "5", "cut, not rounded"},
             {7.0F, metres, "7", "", "no tenth to show"},
             {0.04F, metres, "0", "", "less than a tenth"},
             {30.99F, metres, "30", "9", "the last one with a tenth"},
             {31.9F, metres, "31", "", "deep ones are whole"},
             {-0.3F, metres, "0", "3", "0.3 is a little more in single precision"},
             {-0.34F, metres, "0", "4", "dries higher"},
             {-2.95F, metres, "3", "", "a tenth that runs over"},
             {3.05F, feet, "10", "", "10.007 ft"},
             {3.04F, feet, "9", "", "9.97 ft"},
             {-10.0F, feet, "33", "", "32.8 ft above the datum"},
             {1.829F, fathoms, "1", "", "6.0007 ft"},
             {10.0F, fathoms, "5", "2", "32 ft"},
             {20.1F, fathoms, "10", "5", "65 ft: the last one with feet"},
             {30.0F, fathoms, "16", "", "98 ft"},
             {3e9F, fathoms, "1640419950", "", "beyond 32 bits of feet"},
             {notANumber, fathoms, "", "", "a multiplier of zero"},
             {endless, metres, "", "", "a multiplier of zero"},
         }) {
        const S57Depth sounding{{}, row.depth};
        const auto text = (sounding.*row.operation)(S57Depth::Form::Small);
        EXPECT_EQ(text.figure, row.figure) << row.depth << ": " << row.why;
        EXPECT_EQ(text.subscript, row.subscript) << row.depth << ": " << row.why;
        EXPECT_EQ(text.dries, row.depth < 0) << row.depth;
        auto large = (sounding.*row.operation)(S57Depth::Form::Large);
        EXPECT_GT(large.size, text.size);
        large.size = text.size;
        EXPECT_EQ(large, text) << "the form changes nothing but the size";
    }
}

} // namespace kelvox
