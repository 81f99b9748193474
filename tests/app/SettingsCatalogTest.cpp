#include "app/SettingsCatalog.h"
#include "ais/AISPicture.h"
#include "app/Text.h"
#include "base/File.h"
#include "connections/TCPIPController.h"
#include "navigation/UnitsModel.h"
#include "positioning/GPSSettingsController.h"
#include "presentation/S57ObjectRender.h"
#include "weather/GribController.h"
#include "weather/Mail.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace kelvox {
namespace {

/// Keeps every key that it is asked for.
class RecordingSettings final : public Settings {
public:
    const Value* find(std::string_view key) const override
    {
        asked.emplace(key);
        return nullptr;
    }
    void set(std::string_view, Value) override { }
    mutable std::set<std::string> asked;
};

TEST(SettingsCatalog, KnowsWhatTheModulesAskFor)
{
    const RecordingSettings settings;
    UnitsModel().loadSettings(settings);
    RenderSettings().loadSettings(settings);
    (void)AISDisplay::fromSettings(settings);
    (void)SmtpAccount::load(settings);
    const UnitsModel units;
    GribModel grib(units);
    GribController(grib).loadSettings(settings);
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS}) {
        const GPSSettingsController port(settings, role);
        (void)port.portPlan();
        (void)port.connectAtStartup();
        (void)port.useGPSPort();
        (void)port.useInstrumentsPort();
    }
    EXPECT_GT(settings.asked.size(), 40U);
    // Two derived keys that only make sense for one consumer each.
    const std::set<std::string> never{"useGPSPort", "useInstrumentsPort",
                                      "instruments.useInstrumentsPort"};
    for (const auto& key : settings.asked)
        if (!never.contains(key)) {
            EXPECT_TRUE(SettingsCatalog::catalog().find(key)) << key;
        }
}

TEST(SettingsCatalog, KnowsEveryKeyNamedInTheSources)
{
    const std::regex read(
        R"re([sS]ettings(\(\))?(\.|->)(boolean|integer|number|text|set|remove|isSet)\(\s*"([^"]+)")re");
    std::size_t found = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(KELVOX_SOURCES)) {
        if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h")
            continue;
        const auto source = readFile(entry.path(), 1U << 22U);
        ASSERT_TRUE(source);
        for (std::sregex_iterator it(source->begin(), source->end(), read), end; it != end; ++it) {
            ++found;
            EXPECT_TRUE(SettingsCatalog::catalog().find((*it)[4].str()))
                << (*it)[4] << " in " << entry.path();
        }
    }
    EXPECT_GT(found, 40U);
}

TEST(SettingsCatalog, HasAWordForEverythingThatItShows)
{
    const Strings& texts = englishStrings();
    std::set<std::string> keys;
    for (const auto& item : SettingsCatalog::catalog().items()) {
        EXPECT_TRUE(keys.insert(item.key).second) << item.key << " stands twice";
        if (item.kind == SettingsCatalog::Kind::State)
            continue;
        EXPECT_TRUE(texts.contains(item.labelKey())) << item.labelKey();
        EXPECT_TRUE(texts.contains(item.group)) << item.group;
        bool standardIsOffered = item.choices.empty();
        for (const auto& choice : item.choices) {
            if (choice.label.starts_with("NS")) {
                EXPECT_TRUE(texts.contains(choice.label)) << choice.label;
            }
            standardIsOffered = standardIsOffered || choice.value == item.standard;
        }
        EXPECT_TRUE(standardIsOffered) << item.key;
        if (item.kind == SettingsCatalog::Kind::Number) {
            EXPECT_EQ(item.decimals == 0, std::holds_alternative<long long>(item.standard))
                << item.key;
        }
    }
}

TEST(SettingsCatalog, StandardsAreWhatTheModulesBeginWith)
{
    MemorySettings standards;
    for (const auto& [key, value] : SettingsCatalog::catalog().standards())
        standards.set(key, value);
    RenderSettings render;
    render.loadSettings(standards);
    const RenderSettings fresh;
    EXPECT_EQ(render.showSoundings, fresh.showSoundings);
    EXPECT_EQ(render.showSectors, fresh.showSectors);
    EXPECT_EQ(render.showRestrictedAreas, fresh.showRestrictedAreas);
    const auto traffic = AISDisplay::fromSettings(standards);
    EXPECT_EQ(traffic.vectorMinutes, AISDisplay().vectorMinutes);
    EXPECT_EQ(traffic.showAISClassB, AISDisplay().showAISClassB);
    EXPECT_EQ(GPSSettingsController(standards, ConsumerRole::GPS).type(),
              GPSSettingsController::plainNMEA);
    EXPECT_TRUE(SmtpAccount::load(standards).tls);
}

} // namespace
} // namespace kelvox
