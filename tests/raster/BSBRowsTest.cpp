#include "raster/BSBRows.h"

#include "raster/SmallChart.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Bytes = std::vector<int>;

std::string text(const Bytes& bytes)
{
    return {bytes.begin(), bytes.end()};
}

/// The rows as digits, '.' where the file holds nothing, '|' between rows.
std::string decoded(const std::string& file, int depth, int width, int height)
{
    const BSBRows rows(ChartBytes(file), 0, depth, width, height);
    std::string picture;
    std::vector<std::uint8_t> colors(static_cast<std::size_t>(width));
    for (int row = 0; row < height; ++row) {
        rows.decode(row, 0, colors);
        picture += row > 0 ? "|" : "";
        for (const auto color : colors)
            picture += color == noColorNumber ? '.' : static_cast<char>('0' + color);
    }
    return picture;
}

const Bytes sample{0x01, 0x29, 0,    0x02, 0x20, 0x47, 0x20, 0,    0x03,
                   0x20, 0x42, 0x61, 0x42, 0x20, 0,    0x04, 0x29, 0};
constexpr auto samplePicture = "1111111111|1222222221|1222332221|1111111111";

TEST(BSBRows, ReadsRowsHoweverTheFileLeadsToThem)
{
    const std::string rows = text(sample);
    const std::string index = text({0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 8, 0, 0, 0, 15});
    const std::string indexPlace = text({0, 0, 0, 18});
    EXPECT_EQ(decoded(rows, 2, 10, 4), samplePicture) << "no index";
    EXPECT_EQ(decoded(rows + index + indexPlace, 2, 10, 4), samplePicture);
    EXPECT_TRUE(BSBRows(ChartBytes(rows + index + indexPlace), 0, 2, 10, 4).usesIndex());
    EXPECT_EQ(decoded(rows + index.substr(0, 12) + indexPlace, 2, 10, 4), samplePicture)
        << "one entry short";
    std::string wrong = index;
    wrong[7] = 4;
    EXPECT_EQ(decoded(rows + wrong + indexPlace, 2, 10, 4), samplePicture) << "wrong offset";
    wrong[4] = '\x7F';
    EXPECT_EQ(decoded(rows + wrong + indexPlace, 2, 10, 4), samplePicture) << "beyond the file";
}

TEST(BSBRows, ReadsTheFormsOfRealFiles)
{
    const struct {
        const char* why;
        Bytes bytes;
        int depth, width, height;
        const char* picture;
    } cases[] = {
        {"numbers from 0", {0, 0x29, 0, 1, 0x20, 0x47, 0x20, 0}, 2, 10, 2, "1111111111|1222222221"},
        {"stray zeros between",
         {0, 1, 0x29, 0, 0, 0, 2, 0x29, 0},
         2,
         10,
         2,
         "1111111111|1111111111"},
        {"zero within a row", {1, 0x22, 0, 0x46, 0, 2, 0x29, 0}, 2, 10, 2, "1112222222|1111111111"},
        {"one pixel missing", {1, 0x22, 0x45, 0, 2, 0x29, 0}, 2, 10, 2, "1112222222|1111111111"},
        {"too long", {1, 0x22, 0x4F, 0x20, 0, 2, 0x29, 0}, 2, 10, 2, "1112222222|1111111111"},
        {"last rows not there",
         {1, 0x29, 0, 2, 0x29},
         2,
         10,
         3,
         "1111111111|1111111111|.........."},
        {"depth 4, 9 pixels", {1, 0x88, 0x08, 0}, 4, 9, 1, "111111111"},
        {"depth 7, 1 and 2 pixels", {1, 0x05, 0x85, 0x01, 0}, 7, 3, 1, "555"},
        {"empty", {}, 4, 3, 1, "..."},
        {"endless run",
         {1, 0x88, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
         4,
         3,
         1,
         "111"},
    };
    for (const auto& [why, bytes, depth, width, height, picture] : cases)
        EXPECT_EQ(decoded(text(bytes), depth, width, height), picture) << why;
    // 200 pixels of colour 1 (89 47), 1025 (88 88 00) and 130 of colour 5 in depth 7 (85 81 01).
    EXPECT_EQ(decoded(text({1, 0x89, 0x47, 0x10, 0}), 4, 201, 1), std::string(200, '1') + "2");
    EXPECT_EQ(decoded(text({1, 0x88, 0x88, 0, 0x10, 0}), 4, 1026, 1), std::string(1025, '1') + "2");
    EXPECT_EQ(decoded(text({1, 0x85, 0x81, 0x01, 6, 0}), 7, 131, 1), std::string(130, '5') + "6");
}

TEST(BSBRows, WritesWhatItReadsInAllDepths)
{
    for (int depth = 1; depth <= 7; ++depth)
        for (const bool index : {true, false}) {
            auto description = smallChart();
            description.depth = depth;
            description.width = 3000;
            description.height = 300; // row numbers of two bytes
            description.writeIndex = index;
            const auto pattern = [depth](int row, std::span<std::uint8_t> colors) {
                for (std::size_t x = 0; x < colors.size(); ++x) // runs of 1 to 700 pixels
                    colors[x] = static_cast<std::uint8_t>(
                        1 + (row + (x < 700 ? 0 : x * x / 90'000)) % ((1U << depth) - 1));
            };
            const OpenedChart opened(description, pattern);
            ASSERT_TRUE(opened.result);
            const BSBRows& rows = opened.chart.pyramid().rows();
            EXPECT_EQ(rows.usesIndex(), index);
            std::vector<std::uint8_t> wanted(3000);
            std::vector<std::uint8_t> got(1000);
            for (int row = 0; row < 300; ++row) {
                pattern(row, wanted);
                rows.decode(row, 1500, got);
                ASSERT_TRUE(std::equal(got.begin(), got.end(), wanted.begin() + 1500))
                    << "depth " << depth << " row " << row;
            }
        }
}

TEST(BSBRows, SurvivesAFileThatEndsAnywhere)
{
    for (std::size_t length = 0; length < sample.size(); ++length) {
        const auto picture = decoded(text(sample).substr(0, length), 2, 10, 4);
        EXPECT_EQ(picture.size(), 43U);
        EXPECT_EQ(picture.starts_with("1111111111|"), length >= 2) << length;
    }
}

} // namespace
} // namespace kelvox
