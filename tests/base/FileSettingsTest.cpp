#include "base/FileSettings.h"
#include "base/File.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvox {

TEST(FileSettings, ComeBackWithTheirKindsAndWhatALaterVersionWrote)
{
    const TemporaryFolder folder;
    const auto file = folder.path() / "deep" / "settings.json";
    FileSettings first;
    ASSERT_TRUE(first.load(file)); // nothing there yet
    first.set("on", true);
    first.set("whole", 9'007'199'254'740'993LL); // no double holds it
    first.set("broken", 0.1);
    first.set("words", std::string("Grüße \"x\"\n\xff")); // the last byte is no UTF-8
    ASSERT_TRUE(first.save());
    EXPECT_FALSE(first.hasUnsavedChanges());

    auto text = *readFile(file);
    text.insert(text.find('{') + 1, "\"later\": [1, {\"a\": null}],");
    ASSERT_TRUE(writeFileAtomically(file, text));
    FileSettings second;
    ASSERT_TRUE(second.load(file));
    EXPECT_TRUE(std::get<bool>(*second.find("on")));
    EXPECT_EQ(std::get<long long>(*second.find("whole")), 9'007'199'254'740'993LL);
    EXPECT_EQ(std::get<double>(*second.find("broken")), 0.1);
    EXPECT_TRUE(second.text("words").starts_with("Grüße \"x\"\n"));
    EXPECT_FALSE(second.find("later"));
    second.set("on", false);
    ASSERT_TRUE(second.save());
    EXPECT_NE(readFile(file)->find("\"later\""), std::string::npos);
}

TEST(FileSettings, ABrokenFileIsKeptAsideAndNeverOverwritten)
{
    const TemporaryFolder folder;
    const auto file = folder.path() / "settings.json";
    for (const char* const bytes : {"", "{\"a\": 1", "[1, 2]", "\0\0\0"}) {
        ASSERT_TRUE(writeFileAtomically(file, bytes));
        FileSettings settings;
        EXPECT_FALSE(settings.load(file)) << bytes;
        settings.set("a", 2LL);
        EXPECT_TRUE(settings.save());
        EXPECT_EQ(*readFile(file.string() + ".broken"), bytes);
    }
}

TEST(FileSettings, TellsOfRealChangesOnlyAndTakesOverWhatAnotherComputerExported)
{
    const TemporaryFolder folder;
    FileSettings settings;
    ASSERT_TRUE(settings.load(folder.path() / "a.json"));
    settings.set("kept", 1LL);
    settings.set("same", std::string("x"));
    ASSERT_TRUE(settings.exportTo(folder.path() / "export.json"));

    FileSettings other;
    ASSERT_TRUE(other.load(folder.path() / "b.json"));
    other.set("same", std::string("x"));
    other.set("own", true);
    std::vector<std::string> told;
    other.setChangeHandler([&](std::string_view key) { told.emplace_back(key); });
    EXPECT_EQ(other.importFrom(folder.path() / "export.json").value_or(0), 2U);
    EXPECT_EQ(told, std::vector<std::string>{"kept"});
    EXPECT_TRUE(other.boolean("own"));
    other.remove("own");
    other.remove("own");
    EXPECT_EQ(told.size(), 2U);
}

} // namespace kelvox
