#include "iso8211/ISOTree.h"

#include "support/RawIso.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {

namespace {
Result<ISOFile> read(const std::string& bytes)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "X.000", std::ios::binary) << bytes;
    return ISOFile::read(folder.path() / "X.000"); // the tree outlives the file
}
} // namespace

TEST(ISOTree, HoldsEveryKindOfValue)
{
    const std::string head =
        raw::definitions({{"0001", raw::description("05", "", "(b12)")},
                          {"ALLS",
                           raw::description("26", "*UNSI!SIGN!REAL!TEXT!NAME!LNAM!BLOB",
                                            "(b14,b21,b48,A,B(40),2B(64))")}});
    const std::string row = raw::littleEndian(4'000'000'000, 4) + "\xFE"
        + raw::littleEndian(0x3FF8000000000000, 8) + "text\x1f" + "\x6e" + raw::littleEndian(1, 4)
        + raw::littleEndian(550, 2) + raw::littleEndian(123456, 4) + raw::littleEndian(7, 2)
        + "8 bytes!";
    const auto file = read(head + raw::record({{"0001", "\1"}, {"ALLS", row + row + "\x1e"}}));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->records().size(), 1U);
    const auto& fields = file->records()[0].fields();
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields[0].name(), "0001");
    EXPECT_TRUE(fields[0].rows().empty()); // no subfields, no rows
    ASSERT_EQ(fields[1].rows().size(), 2U);
    for (const auto& one : fields[1].rows()) {
        const auto& datas = one.datas();
        ASSERT_EQ(datas.size(), 7U);
        using Value = ISOData::Value;
        EXPECT_EQ(datas[0].value(), Value(std::uint32_t{4'000'000'000}));
        EXPECT_EQ(datas[1].value(), Value(std::int32_t{-2}));
        EXPECT_EQ(datas[2].value(), Value(1.5));
        EXPECT_EQ(datas[3].value(), Value(std::string("text")));
        EXPECT_EQ(datas[4].value(), Value(ISODataRecord{110, 1}));
        EXPECT_EQ(datas[5].value(), Value(ISODataAgency{550, 123456, 7}));
        EXPECT_EQ(datas[6].value(), Value()); // a binary string of another name has none
        EXPECT_EQ(datas[6].name(), "BLOB");
    }
}

TEST(ISOTree, KeepsTheRecordsBeforeABrokenOne)
{
    const std::string head = raw::definitions({{"TEXT", raw::description("16", "TEXT", "(A)")}});
    const std::string good = raw::record({{"TEXT", "a\x1f\x1e"}});
    const auto file = read(head + good + good + good.substr(0, 30));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->records().size(), 2U);
    EXPECT_FALSE(read(head.substr(0, 30)));
}

TEST(ISOTree, DoesNotGrowFarBeyondItsFile)
{
    // 256 subfields and a byte for all of them, read again and again under one leader.
    std::string labels = "A";
    for (int i = 1; i < 256; ++i)
        labels += "!A";
    const std::string head = raw::definitions({{"MANY", raw::description("16", labels, "(256A)")}});
    const auto file =
        read(head + raw::record({{"MANY", "\x1e"}}, 'R') + std::string(50'000, '\x1e'));
    ASSERT_TRUE(file);
    EXPECT_LT(file->records().size(), 1'000U);
}

} // namespace kelvox
