#include "s57/S57Feature.h"
#include "s57/S57UpdateControl.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace kelvox {

namespace {
/// The rule as it is stated, one element after the other.
void applyOne(std::string& list, char element, std::uint32_t instruction, std::uint32_t& k)
{
    const bool inside = k >= 1 && k <= list.size();
    if (instruction == 0 || ((instruction == 1 || instruction == 3) && !inside))
        list += element;
    else if (instruction == 1)
        list.insert(k - 1, 1, element);
    else if (instruction == 2 && inside)
        list.erase(k - 1, 1);
    else if (instruction == 3)
        list[k - 1] = element;
    ++k;
}

std::string applied(std::uint32_t instruction, std::uint32_t index, std::string_view elements)
{
    std::vector<char> list{'a', 'b', 'c', 'd'};
    applyUpdate<char>(list, elements, instruction, index);
    return {list.begin(), list.end()};
}
} // namespace

TEST(UpdateControl, InsertsDeletesAndReplacesFromItsIndexOn)
{
    struct {
        std::uint32_t instruction, index;
        const char* elements;
        const char* expected;
    } const rows[] = {
        {0, 2, "xy", "abcdxy"}, {1, 2, "xy", "axybcd"}, {1, 5, "xy", "abcdxy"},
        {1, 99, "x", "abcdx"},  {1, 0, "x", "abcdx"},   {1, 0, "xy", "yabcdx"},
        {2, 1, "x", "bcd"},     {2, 1, "xy", "bd"}, // the index runs on while the list shrinks
        {2, 0, "x", "abcd"},    {2, 5, "x", "abcd"},    {2, 0, "xy", "bcd"},
        {3, 4, "xy", "abcxy"},  {3, 0, "xy", "ybcdx"},  {3, 9, "x", "abcdx"},
        {4, 1, "x", "abcd"},    {1, 2, "", "abcd"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(applied(row.instruction, row.index, row.elements), row.expected)
            << row.instruction << " at " << row.index << " of " << row.elements;
}

TEST(UpdateControl, DoesAsOneElementAfterTheOther)
{
    std::mt19937 random(57);
    const auto upTo = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % (limit + 1));
    };
    for (int round = 0; round < 20'000; ++round) {
        std::string expected(upTo(9), '.');
        for (char& c : expected)
            c = static_cast<char>('a' + upTo(25));
        std::vector<char> list(expected.begin(), expected.end());
        std::string elements(upTo(12), 'A');
        for (std::size_t i = 0; i < elements.size(); ++i)
            elements[i] = static_cast<char>('A' + i);
        const std::uint32_t instruction = upTo(4);
        std::uint32_t index = upTo(14);
        std::uint32_t k = index;
        const std::string before = expected;
        for (const char element : elements)
            applyOne(expected, element, instruction, k);
        const auto start = index;
        applyUpdate<char>(list, elements, instruction, index);
        ASSERT_EQ(std::string(list.begin(), list.end()), expected)
            << before << " and " << elements << " under " << instruction << " at " << start;
        ASSERT_EQ(index, k);
    }
}

TEST(UpdateControl, PointersToFeaturesRunOnWhereTheSpatialOnesEnded)
{
    S57Feature feature;
    for (std::uint32_t id = 1; id <= 3; ++id) {
        feature.addS57FeatureSpatial({.recordID = id, .recordName = 110});
        feature.addS57FeatureRecord({.identification = id});
    }
    feature.setS57FSPC({.instruction = 3, .index = 1, .count = 1});
    feature.setS57FFPC({.instruction = 3, .index = 1, .count = 1}); // its index is never read
    feature.addS57FeatureSpatial({.recordID = 10});
    feature.addS57FeatureRecord({.identification = 20});
    EXPECT_EQ(feature.s57FeatureSpatials()[0].recordID, 10U);
    EXPECT_EQ(feature.s57FeatureRecords()[0].identification, 1U);
    EXPECT_EQ(feature.s57FeatureRecords()[1].identification, 20U);
}

} // namespace kelvox
