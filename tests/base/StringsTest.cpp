#include "base/File.h"
#include "base/StringCatalog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>

namespace kelvox {
namespace {

using std::filesystem::path;

const path sourceFolder = KELVOX_SOURCE_DIR;

std::string contentOf(const path& file)
{
    return readFile(file).value_or("");
}

Strings tableOf(const std::string& language)
{
    const auto table =
        parseStrings(contentOf(sourceFolder / "resources/strings" / (language + ".json")));
    EXPECT_TRUE(table) << language << ": " << (table ? "" : table.error().message);
    return table.value_or(Strings());
}

/// The numbers in braces of a text, each once.
std::set<std::string> placesIn(const std::string& text)
{
    std::set<std::string> places;
    for (std::size_t open = text.find('{'); open != std::string::npos;
         open = text.find('{', open + 1))
        places.insert(text.substr(open, text.find('}', open) - open + 1));
    return places;
}

/// Every quoted text of the sources that looks like a key, with the file it was seen in.
std::map<std::string, path> keysInSources()
{
    std::map<std::string, path> keys;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder / "src")) {
        const auto extension = entry.path().extension();
        if (extension != ".cpp" && extension != ".h")
            continue;
        const std::string text = contentOf(entry.path());
        for (std::size_t at = text.find("\"NS"); at != std::string::npos;
             at = text.find("\"NS", at + 1)) {
            const auto end = std::find_if_not(
                text.begin() + static_cast<std::ptrdiff_t>(at) + 1, text.end(),
                [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '.'; });
            const std::string key(text.begin() + static_cast<std::ptrdiff_t>(at) + 1, end);
            if (end != text.end() && *end == '"')
                keys.emplace(key, entry.path());
        }
    }
    return keys;
}

TEST(StringTables, EveryLanguageHasEveryKeyWithTheSamePlaces)
{
    const Strings english = tableOf("en");
    ASSERT_GT(english.texts().size(), 50U);
    for (const char* language : {"de", "fr", "es"}) {
        const Strings table = tableOf(language);
        for (const auto& [key, text] : english.texts()) {
            if (!table.contains(key)) {
                ADD_FAILURE() << language << " has no " << key;
                continue;
            }
            EXPECT_FALSE(table.text(key).empty()) << language << ' ' << key;
            // "no waypoints" and "one waypoint" need no figure, in any language.
            if (key.ends_with(".zero") || key.ends_with(".one"))
                continue;
            EXPECT_EQ(placesIn(table.text(key)), placesIn(text)) << language << ' ' << key;
        }
        for (const auto& [key, text] : table.texts())
            EXPECT_TRUE(english.contains(key) || key.ends_with(".zero"))
                << language << ' ' << key << ": no such key in English";
    }
}

TEST(StringTables, EveryKeyInTheSourcesHasAText)
{
    const Strings english = tableOf("en");
    // Not keys: letters that mean hemispheres or a subfield of a chart file, and the beginning of
    // the keys for the fields of a forecast.
    const std::set<std::string> others{"NS", "NSWE", "NSPT", "NSGrib"};
    const auto keys = keysInSources();
    ASSERT_TRUE(keys.contains("NSAnchorAlarm"));
    for (const auto& [key, file] : keys) {
        const auto next = english.texts().lower_bound(key);
        const bool isBeginning =
            key.ends_with('.') && next != english.texts().end() && next->first.starts_with(key);
        EXPECT_TRUE(english.contains(key) || english.contains(key + ".other") || isBeginning
                    || others.contains(key))
            << file << ": " << key << " has no text";
    }
}

TEST(StringTables, TheBuiltInEnglishIsTheEnglishTable)
{
    EXPECT_EQ(englishStrings().texts(), tableOf("en").texts());
}

TEST(Strings, PutsArgumentsInTheirPlacesOnce)
{
    Strings strings;
    strings.set("k", "{1} of {0}{2} {x} {");
    EXPECT_EQ(strings.text("k", {"{1}", "b"}), "b of {1}{2} {x} {")
        << "an argument's braces are no place, and a place without argument stays";
    EXPECT_EQ(strings.text("missing", {"a"}), "missing");
}

TEST(Strings, ChoosesTheFormForTheCount)
{
    const auto strings = parseStrings(
        R"({"k": {"zero": "none", "one": "a file", "other": "{0} files in {1}"},
            "m": {"other": "{0} m"}})");
    ASSERT_TRUE(strings);
    EXPECT_EQ(strings->counted("k", 0, {}), "none");
    EXPECT_EQ(strings->counted("k", 1, {}), "a file");
    EXPECT_EQ(strings->counted("k", 21, std::array<std::string_view, 1>{"x"}), "21 files in x");
    EXPECT_EQ(strings->counted("m", 1, {}), "1 m") << "a form that is missing is the common one";
}

TEST(Strings, RefusesWhatIsNoTable)
{
    for (const char* text : {"", "[]", "{\"a\":", "{\"a\": 1}", "{\"a\": {\"few\": \"x\"}}",
                             "{\"a\": {\"one\": 1}}", "{\"a\": \"\xff\"}"})
        EXPECT_FALSE(parseStrings(text)) << text;
}

/// A catalogue on two folders, the program's and the user's.
struct Scene {
    Scene()
    {
        put("program/de.json", R"({"NSPort": "Backbord", "NSOK": "Gut"})");
        put("program/fr.json", R"({"NSPort": "Bâbord"})");
    }
    void put(const char* name, std::string_view text) const
    {
        ASSERT_TRUE(writeFileAtomically(folder.path() / name, text));
    }
    TemporaryFolder folder;
    StringCatalog catalog{{folder.path() / "program", folder.path() / "user"}};
};

TEST(StringCatalog, LaysTheLanguageOverEnglish)
{
    Scene scene;
    scene.put("user/de.json", R"({"NSOK": "Jo"})");
    scene.put("program/de_AT.json", R"({"NSPort": "links"})");
    const Strings& strings = scene.catalog.strings();
    EXPECT_EQ(strings.text("NSPort"), "Port");
    ASSERT_TRUE(scene.catalog.setLanguage("de_DE.UTF-8"));
    EXPECT_EQ(scene.catalog.language(), "de");
    EXPECT_EQ(strings.text("NSPort"), "Backbord");
    EXPECT_EQ(strings.text("NSOK"), "Jo") << "the user's own table comes last";
    EXPECT_EQ(strings.text("NSStarboard"), "Starboard");
    ASSERT_TRUE(scene.catalog.setLanguage("de_AT"));
    EXPECT_EQ(strings.text("NSPort"), "links");
    ASSERT_TRUE(scene.catalog.setLanguage("en_GB"));
    EXPECT_EQ(strings.text("NSPort"), "Port") << "nothing of the last language stays";
}

TEST(StringCatalog, SpeaksEnglishWhereTheLanguageIsMissingOrBroken)
{
    Scene scene;
    scene.put("program/xx.json", "{");
    ASSERT_TRUE(scene.catalog.setLanguage("de"));
    for (const char* name : {"xx", "nl", "../de", ""}) {
        const auto taken = scene.catalog.setLanguage(name);
        EXPECT_FALSE(taken) << name;
        EXPECT_EQ(scene.catalog.language(), "en");
        EXPECT_EQ(scene.catalog.strings().text("NSPort"), "Port");
    }
}

TEST(StringCatalog, TakesTheUsersLanguage)
{
    const Scene scene;
    EXPECT_EQ(scene.catalog.languages(), (std::vector<std::string>{"de", "en", "fr"}));
    using Variables = std::map<std::string, std::string>;
    const struct {
        Variables variables;
        std::string language;
    } rows[] = {
        {{{"LANG", "de_AT.UTF-8"}}, "de_AT"},
        {{{"LANG", "de_DE"}, {"LC_ALL", "fr_FR@euro"}}, "fr_FR"},
        {{{"LANG", "de_DE"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", ""}}, "fr"},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "nl:fr:de"}}, "fr"},
        {{{"LANG", "nl_NL"}}, "en"},
        {{{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}, "en"},
        {{{"LANGUAGE", "de"}}, "en"},
        {{}, "en"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(scene.catalog.preferredLanguage([&](const char* name) {
            const auto it = row.variables.find(name);
            return it == row.variables.end() ? std::nullopt : std::optional(it->second);
        }),
                  row.language);
}

} // namespace
} // namespace kelvox
