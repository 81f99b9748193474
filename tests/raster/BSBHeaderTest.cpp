#include "raster/BSBHeader.h"

#include "raster/SmallChart.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Words = std::vector<std::string_view>;

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(BSBHeader, JoinsContinuationLinesAndSplitsTokens)
{
    const auto lines = logicalLines("BSB/NA=X,RA=10,20\r\n    NU=123\rVER/2.0\n\nOST/1");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(headerTokens(std::string_view(lines[0]).substr(4)),
              (Words{"NA", "X", "RA", "10", "20", "NU", "123"}));
    EXPECT_EQ(headerTokens("SP=,SK= 302.69"), (Words{"SP", "", "SK", "302.69"}))
        << "an empty value must not take the next key for itself";
}

TEST(BSBHeader, LooksForItsKeywordInTheFirstTwoThousandBytesOnly)
{
    const auto found = [](std::size_t at, std::string_view keyword, std::size_t size, int added) {
        std::string file(size, ' ');
        file.replace(at, 4, keyword);
        for (char& byte : file)
            byte = static_cast<char>(byte + added);
        return findHeader(file).has_value();
    };
    EXPECT_TRUE(found(0, "BSB/", 2000, 0));
    EXPECT_TRUE(found(1995, "BSB/", 3000, 0));
    EXPECT_FALSE(found(1996, "BSB/", 3000, 0));
    EXPECT_FALSE(found(0, "BSB/", 1999, 0));
    EXPECT_TRUE(found(5, "NOS/", 2000, 0));
    EXPECT_TRUE(found(5, "NOS/", 2000, 9)) << "every byte stored plus 9";
    EXPECT_FALSE(found(5, "KAP/", 2000, 0));
}

TEST(BSBHeader, TakesOnlyTheKnownEndsOfTheText)
{
    const std::string whole = writeKap(smallChart(), white);
    const auto end = whole.find('\x1A');
    const struct {
        std::string bytes; ///< between the 1A that ends the text and the rows
        int depth; ///< 0: rejected
    } cases[] = {
        {{0, 4}, 4},
        {{'\r', '\n', 0x1A, 0, 3}, 3},
        {{'x', 'y', 0x1A, 0, 7}, 7},
        {{0, '4'}, 4}, // the digit instead of the number
        {{'\r', '\n', 0x1A, 1, 3}, 0},
        {{'\r', '\n', 0, 0, 3}, 0},
        {{0, 0}, 0},
        {{0, 8}, 0},
        {{0}, 0}, // the file ends
    };
    for (const auto& [bytes, depth] : cases) {
        const std::string file = whole.substr(0, end + 1) + bytes;
        const auto header = readBSBHeader(ChartBytes(file));
        EXPECT_EQ(header ? header->depth : 0, depth) << testing::PrintToString(bytes);
        if (header) {
            EXPECT_EQ(header->imageStart, file.size());
        }
    }
}

TEST(BSBHeader, RejectsWhatCannotBeShownOrPlaced)
{
    const std::string whole = writeKap(smallChart(), white);
    const struct {
        const char* from;
        const char* to;
        const char* reason; ///< nullptr: stays readable
    } cases[] = {
        {"NU=1,", "", "NU"},
        {"NA=SMALL", "NX=SMALL", "NA"},
        {"RA=100,100", "RX=100,100", "RA"},
        {"RA=100,100", "RA=100,0", "height"},
        {"RA=100,100", "RA=999999999999,5", "pixels"},
        {"VER/2.0", "VER/0.0", "version"},
        {"VER/2.0", "XXX/2.0", "version"},
        {"REF/2", "XXX/2", nullptr}, // three points are left
        {"REF/2", "\x1A", "reference points"}, // one alone,
        {"BSB/", "bsb/", nullptr}, // keywords may be in either case
    };
    for (const auto& [from, to, reason] : cases) {
        const auto header = readBSBHeader(ChartBytes(replaced(whole, from, to)));
        EXPECT_EQ(header.has_value(), reason == nullptr) << from << " -> " << to;
        if (!header && reason) {
            EXPECT_NE(header.error().message.find(reason), std::string::npos)
                << header.error().message;
        }
    }
    auto colorless = smallChart();
    colorless.colors.clear();
    EXPECT_FALSE(readBSBHeader(ChartBytes(writeKap(colorless, white))));
}

TEST(BSBHeader, ReadsTheOlderFormScrambledOrNot)
{
    for (const bool scrambled : {false, true}) {
        auto description = smallChart();
        description.scrambled = scrambled;
        std::string bytes = writeKap(description, white);
        if (!scrambled)
            bytes = replaced(bytes, "BSB/NA=SMALL\r\n    NU=1,RA=100,100",
                             "NOS/NA=SMALL\r\n    NU=1,RA=7,8,100,100");
        const OpenedChart opened(bytes, "small.no1");
        ASSERT_TRUE(opened.result) << opened.result.error().message;
        EXPECT_EQ(opened.chart.size(), (Size{100, 100}));
        EXPECT_EQ(opened.chart.title(), "SMALL");
        std::vector<std::uint8_t> row(100);
        opened.chart.pyramid().rows().decode(99, 0, row);
        EXPECT_EQ(row, std::vector<std::uint8_t>(100, 2));
    }
}

TEST(BSBHeader, KeepsPalettesAndMakesTheMissingOnes)
{
    auto description = smallChart();
    description.night = {{}, {1, 2, 3}};
    description.extraLines = "RGB/200,9,9,9\r\nRGB/-1,9,9,9\r\nRGB/5,9\r\n";
    const auto header = readBSBHeader(ChartBytes(writeKap(description, white)));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->palettes.palette(PaletteScheme::Default).size(), 5U);
    EXPECT_EQ(header->palettes.colorTable(PaletteScheme::Night)[1], 0xFF010203U);
    EXPECT_EQ(header->palettes.colorTable(PaletteScheme::Day)[2], 0xFFFFFFFFU);
    EXPECT_EQ(header->palettes.colorTable(PaletteScheme::Dusk)[3], 0xFF8C0000U); // 55 % of 255
    EXPECT_EQ(header->palettes.colorTable(PaletteScheme::Day)[noColorNumber], 0U);
}

} // namespace
} // namespace kelvox
