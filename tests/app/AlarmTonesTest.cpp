#include "app/AlarmTones.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kelvox {

namespace {
template <typename Number> Number at(const std::string& bytes, std::size_t offset)
{
    Number value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

TEST(AlarmTones, EveryToneIsAWavFileThatIsHeardAndDoesNotClick)
{
    for (const std::string& name : alarmToneNames()) {
        const std::string wav = alarmTone(name);
        ASSERT_GT(wav.size(), 10'000U) << name;
        EXPECT_EQ(wav.substr(0, 4), "RIFF");
        EXPECT_EQ(at<std::uint32_t>(wav, 4), wav.size() - 8) << name;
        EXPECT_EQ(wav.substr(36, 4), "data");
        EXPECT_EQ(at<std::uint32_t>(wav, 40), wav.size() - 44) << name;
        int loudest = 0;
        for (std::size_t i = 44; i + 1 < wav.size(); i += 2)
            loudest = std::max(loudest, std::abs(static_cast<int>(at<std::int16_t>(wav, i))));
        EXPECT_GT(loudest, 12'000) << name;
        EXPECT_LT(std::abs(static_cast<int>(at<std::int16_t>(wav, wav.size() - 2))), 1000) << name;
    }
    EXPECT_EQ(alarmTone("of another version"), alarmTone(alarmToneNames().front()));
}
} // namespace
} // namespace kelvox
