#include "iso8211/ISOWriter.h"

#include "iso8211/ISOTree.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
ISOWriter writerOf(const std::vector<std::pair<const char*, const char*>>& subfields)
{
    ISOFieldDefinition field("TEST", "A field", "", 1, 6, "");
    for (const auto& [label, format] : subfields)
        EXPECT_TRUE(field.addSubfield(label, format));
    return {ISOLeader{}, {std::move(field)}};
}
} // namespace

TEST(ISOWriter, WritesLeadersAndDirectoriesToTheLetter)
{
    auto writer = writerOf({{"NUMB", "I"}, {"REAL", "R"}});
    // 24 + 11 + 1 bytes in front of a description of 9 + 7 + 1 + 9 + 1 + 5 + 1.
    const std::string head = "000693LE1 0900036 ! 3404TEST0330000\x1e"
                             "1600;&   A field\x1fNUMB!REAL\x1f(I,R)\x1e";
    EXPECT_EQ(writer.bytes(), head);

    ISOWriteRecord record;
    record.addField(*writer.definition("TEST"));
    EXPECT_TRUE(record.setInt("TEST", 0, "NUMB", 0, -12));
    EXPECT_TRUE(record.setFloat("TEST", 0, "REAL", 0, 0.1));
    ASSERT_TRUE(writer.write(record));
    EXPECT_EQ(writer.bytes(),
              head
                  + "00048 D     00039   5504TEST0000900000\x1e-12\x1f"
                    "0.1\x1f\x1e");
}

TEST(ISOWriter, EncodesBinaryAndRefusesWhatDoesNotFit)
{
    auto writer = writerOf({{"LITL", "b12"}, {"BIGE", "B24"}, {"FIXD", "A(3)"}, {"TEXT", "A"}});
    ISOWriteRecord record;
    record.addField(*writer.definition("TEST"));
    EXPECT_TRUE(record.setInt("TEST", 0, "LITL", 1, 0x1234)); // the first row is left empty
    EXPECT_TRUE(record.setInt("TEST", 0, "BIGE", 1, -2));
    EXPECT_TRUE(record.setString("TEST", 0, "FIXD", 1, "ab"));
    EXPECT_FALSE(record.setString("TEST", 0, "FIXD", 1, "abcd"));
    EXPECT_FALSE(record.setString("TEST", 0, "NONE", 0, ""));
    EXPECT_FALSE(record.setString("TEST", 1, "TEXT", 0, ""));
    ASSERT_TRUE(writer.write(record));
    const std::string expected =
        std::string(6, '\0') + "   \x1f" + "\x34\x12\xff\xff\xff\xfe" + "ab \x1f\x1e";
    EXPECT_TRUE(writer.bytes().ends_with(expected));

    ISOWriteRecord huge;
    huge.addField(*writer.definition("TEST"));
    EXPECT_TRUE(huge.setString("TEST", 0, "TEXT", 0, std::string(100'000, 'x')));
    EXPECT_FALSE(writer.write(huge)); // five digits of length
}

} // namespace kelvox
