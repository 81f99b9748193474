#include "iso8211/ISOModule.h"
#include "support/RawIso.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {

namespace {
const std::string head = raw::definitions({{"0001", raw::description("05", "", "(b12)")},
                                           {"ABCD", raw::description("16", "NUMB!TEXT", "(b12,A)")},
                                           {"Long", raw::description("25", "*NUMB", "(b11)")}});
const std::string one = raw::record({{"0001", "\1"}, {"ABCD", "\x34\x12hello\x1f\x1e"}});

/// Each record as "TAG:bytes" with the terminators as '|' and '.'.
std::vector<std::string> recordsOf(const std::string& bytes, bool* stopped = nullptr)
{
    ISOModule module;
    std::vector<std::string> records;
    if (!module.openBytes(bytes))
        return {"not opened"};
    while (const ISORawRecord* record = module.readRecord()) {
        std::string text;
        for (const auto& field : record->fields()) {
            text += field.definition().tag() + ":";
            for (const char c : field.data())
                text += c == '\x1e' ? '.' : c == '\x1f' ? '|' : c;
        }
        records.push_back(text);
        if (records.size() > 100)
            break;
    }
    if (stopped)
        *stopped = module.lastError() != nullptr;
    EXPECT_EQ(module.readRecord(), nullptr);
    return records;
}

using Records = std::vector<std::string>;
const std::string oneText = "0001:\1ABCD:\x34\x12hello|.";
} // namespace

TEST(ISOModule, RefusesWhatIsNotIso8211)
{
    const std::string good = "000243LE1 0900024 ! 3404";
    ISOModule module;
    ASSERT_TRUE(module.openBytes(good)); // no definitions at all
    EXPECT_TRUE(module.definitions().empty());
    EXPECT_EQ(module.firstRecordOffset(), 24U);
    struct {
        const char* why;
        std::size_t at;
        const char* bytes;
    } const faults[] = {{"version", 8, "2"},
                        {"identifier", 6, "D"},
                        {"level", 5, "4"},
                        {"unprintable", 18, "\x7f"},
                        {"record length", 0, "00011"},
                        {"field control length", 10, "00"},
                        {"area start", 12, "00023"},
                        {"length size", 20, "0"},
                        {"position size", 21, "0"},
                        {"tag size", 23, "0"},
                        {"longer than the file", 0, "00025"}};
    for (const auto& fault : faults) {
        std::string bytes = good;
        bytes.replace(fault.at, std::string(fault.bytes).size(), fault.bytes);
        EXPECT_FALSE(module.openBytes(bytes)) << fault.why;
    }
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(module.openBytes({good.data(), length})) << length;
    EXPECT_EQ(module.open("/nowhere/at/all").error().code, Error::Code::CannotOpen);
}

TEST(ISOModule, ReadsRecordsInOrder)
{
    // The second record names a tag in other letters, the third has its fields in another order.
    const auto records = recordsOf(head + one + raw::record({{"LONG", "\7\x1e"}})
                                   + raw::record({{"Long", "\x1e"}, {"0001", "x\x1e"}}));
    EXPECT_EQ(records, (Records{oneText, "Long:\7.", "Long:.0001:x."}));
}

TEST(ISOModule, ReadsOnToTheEndOfARecordThatSaysTooLittle)
{
    std::string shortened = one;
    const auto length = std::stoi(one.substr(0, 5)) - 4;
    shortened.replace(0, 5, fmt::format("{:05}", length));
    EXPECT_EQ(recordsOf(head + shortened + one), (Records{oneText, oneText}));
}

TEST(ISOModule, ReadsRecordsWithoutALength)
{
    std::string unmeasured = one;
    unmeasured.replace(0, 5, "00000");
    EXPECT_EQ(recordsOf(head + unmeasured + unmeasured + one),
              (Records{oneText, oneText, oneText}));
    bool stopped = false;
    EXPECT_EQ(recordsOf(head + unmeasured.substr(0, 40), &stopped), Records{});
    EXPECT_TRUE(stopped);
}

TEST(ISOModule, KeepsTheLeaderOfARecordThatSaysSo)
{
    const std::string first = raw::record({{"0001", "a"}, {"Long", "\1\x1e"}}, 'R');
    EXPECT_EQ(recordsOf(head + first + "b\2\x1e" + "c\3\x1e"),
              (Records{"0001:aLong:\1.", "0001:bLong:\2.", "0001:cLong:\3."}));
    bool stopped = false;
    EXPECT_EQ(recordsOf(head + first + "b", &stopped).size(), 1U);
    EXPECT_TRUE(stopped);
}

TEST(ISOModule, StopsAtARepeatedRecordWithoutBytes)
{
    // The fields lie behind the record's end: every reading of them took nothing from the file.
    std::string empty = raw::record({{"0001", ""}}, 'R');
    empty.replace(12, 5, "00099");
    bool stopped = false;
    EXPECT_EQ(recordsOf(head + empty + one, &stopped).size(), 1U);
    EXPECT_TRUE(stopped);
}

TEST(ISOModule, StopsAtBrokenRecordsAndKeepsWhatStandsBefore)
{
    const auto broken = [](std::size_t at, std::string_view bytes) {
        std::string record = one;
        return record.replace(at, bytes.size(), bytes);
    };
    const std::pair<const char*, std::string> faults[] = {
        {"unknown tag", broken(24, "NONE")},
        {"entry map", broken(20, "x")},
        {"entry map all zero", broken(20, "0000")},
        {"record length", broken(0, "00023")},
        {"area start", broken(12, "00023")},
        {"short leader", one.substr(0, 20)},
        {"short record", one.substr(0, one.size() - 1)},
        {"99999", broken(0, "99999")},
    };
    const std::string sound = head + one;
    for (const auto& [why, bytes] : faults) {
        bool stopped = false;
        std::string file = sound;
        file += bytes;
        EXPECT_EQ(recordsOf(file, &stopped), Records{oneText}) << why;
        EXPECT_TRUE(stopped) << why;
    }
}

TEST(ISOModule, RefusesFieldsThatLieOverEachOther)
{
    // Twenty entries that all name the same fifty bytes.
    std::string entries;
    for (int i = 0; i < 20; ++i)
        entries += "Long00500000";
    entries += '\x1e';
    const std::string record =
        fmt::format("{:05} D     {:05}   4404", 24 + entries.size() + 50, 24 + entries.size())
        + entries + std::string(49, 'x') + '\x1e';
    bool stopped = false;
    EXPECT_EQ(recordsOf(head + record, &stopped), Records{});
    EXPECT_TRUE(stopped);
}

TEST(ISOModule, EndsCleanlyWhereverTheFileEnds)
{
    const std::string whole = head + one + one;
    const std::size_t second = head.size() + one.size();
    for (std::size_t length = head.size(); length < whole.size(); ++length) {
        bool stopped = false;
        const auto records = recordsOf(whole.substr(0, length), &stopped);
        EXPECT_EQ(records.size(), length >= second ? 1U : 0U) << length;
        EXPECT_EQ(stopped, length != second && length != head.size()) << length;
    }
    ISOModule module;
    for (std::size_t length = 0; length < head.size(); ++length)
        EXPECT_FALSE(module.openBytes({whole.data(), length})) << length;
}

TEST(ISOModule, OpensAFileAgain)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "A.000";
    std::ofstream(path, std::ios::binary) << head << one;
    ISOModule module;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(module.open(path));
        ASSERT_NE(module.readRecord(), nullptr);
        EXPECT_EQ(module.findDefinition("ABCD")->subfields().size(), 2U);
    }
    module.close();
    EXPECT_EQ(module.readRecord(), nullptr);
}

} // namespace kelvox
