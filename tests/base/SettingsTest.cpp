#include "base/Settings.h"

#include <gtest/gtest.h>

namespace kelvox {

TEST(Settings, ConvertsBetweenKindsAndFallsBackOnNonsense)
{
    MemorySettings settings;
    settings.set("a", std::string("2.5"));
    settings.set("b", true);
    settings.set("c", std::string("true"));
    settings.set("d", std::string("12 knots"));
    settings.set("e", 1e300);
    EXPECT_DOUBLE_EQ(settings.number("a"), 2.5);
    EXPECT_EQ(settings.integer("a"), 2);
    EXPECT_EQ(settings.integer("b"), 1);
    EXPECT_TRUE(settings.boolean("c"));
    EXPECT_DOUBLE_EQ(settings.number("d", 7), 7);
    EXPECT_EQ(settings.integer("e", 3), 3);
    EXPECT_EQ(settings.text("b", "none"), "none");
    EXPECT_TRUE(settings.boolean("missing", true));
}

} // namespace kelvox
