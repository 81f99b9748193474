#include "iso8211/ISOFieldDefinition.h"
#include "support/RawIso.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace kelvox {

namespace {
ISOFieldDefinition define(const std::string& labels, const std::string& formats,
                          const std::string& codes = "16")
{
    ISOFieldDefinition definition;
    definition.parse("TEST", raw::description(codes, labels, formats), 9);
    return definition;
}

std::string formatsOf(const ISOFieldDefinition& definition)
{
    std::string all;
    for (const auto& subfield : definition.subfields())
        all += subfield.label() + "=" + subfield.format() + " ";
    return all;
}

ISOSubfieldDefinition subfield(std::string_view format)
{
    ISOSubfieldDefinition definition("X");
    EXPECT_TRUE(definition.setFormat(format)) << format;
    return definition;
}
} // namespace

TEST(ISOFieldDefinition, ExpandsRepeatFactorsAndGroups)
{
    struct {
        const char *labels, *formats, *expected;
    } const rows[] = {
        {"A!B!C!D!E", "(A(2),I(10),3A)", "A=A(2) B=I(10) C=A D=A E=A "},
        {"A!B!C", "(b11,2b24)", "A=b11 B=b24 C=b24 "},
        {"*A  !B ", "(A,I)", "A=A B=I "}, // trailing blanks of labels go
        {"A!B!C!D!E", "(A,2(b11,b24))", "A=A B=b11 C=b24 D=b11 E=b24 "},
        {"A!B!C!D", "((A,(I)),2(R))", "A=A B=I C=R D=R "},
        {"A!B", "(A,I,R)", "A=A B=I "}, // more formats than labels
        {"A!B", "(1000000000A)", "A=A B=A "},
        {"A!B", "(999999999(999999999()))", "A= B= "}, // nothing, any number of times
        {"A!B", "(A)", "A= B= "}, // fewer: the field keeps its labels, unusable
        {"A!B", "A,I", "A= B= "},
        {"A!B!C", "(A,Q,I)", "A=A B=Q C= "}, // stops at the first unknown format
    };
    for (const auto& row : rows)
        EXPECT_EQ(formatsOf(define(row.labels, row.formats)), row.expected) << row.formats;
}

TEST(ISOFieldDefinition, ReadsItsCodesAndMeasuresItsWidth)
{
    const auto pairs = define("*YCOO!XCOO", "(2b24)", "25");
    EXPECT_EQ(pairs.structureCode(), 2);
    EXPECT_EQ(pairs.typeCode(), 5);
    EXPECT_TRUE(pairs.isRepeating());
    EXPECT_EQ(pairs.fixedWidth(), 8U);
    EXPECT_EQ(define("A!B", "(b11,A)").fixedWidth(), 0U);
    EXPECT_TRUE(define("A", "(A)", "05").subfields().empty()); // elementary
    const auto odd = define("A", "(A)", "97"); // codes outside their range
    EXPECT_EQ(odd.structureCode() + odd.typeCode(), 0);
}

TEST(ISOSubfieldDefinition, TakesTypeAndWidthFromTheFormat)
{
    using enum ISODataType;
    struct {
        const char* format;
        ISODataType type;
        bool variable;
        std::size_t width;
        int binary;
    } const rows[] = {
        {"A", String, true, 0, 0},
        {"A(0)", String, true, 0, 0},
        {"C(7)", String, false, 7, 0},
        {"I(10)", Int, false, 10, 0},
        {"S", Int, true, 0, 0},
        {"R(4)", Float, false, 4, 0},
        {"b11", Int, false, 1, 1},
        {"b24", Int, false, 4, 2},
        {"B12", Int, false, 2, 1},
        {"b48", Float, false, 8, 4},
        {"b34", Float, false, 4, 3},
        {"B(32)", Int, false, 4, 2},
        {"B(39)", Int, false, 4, 2},
        {"B(40)", BinaryString, false, 5, 2},
        {"b(64)", BinaryString, false, 8, 2},
        {"b04", Float, false, 4, 0},
    };
    for (const auto& row : rows) {
        const auto definition = subfield(row.format);
        EXPECT_EQ(definition.dataType(), row.type) << row.format;
        EXPECT_EQ(definition.isVariable(), row.variable) << row.format;
        EXPECT_EQ(definition.width(), row.width) << row.format;
        EXPECT_EQ(definition.binaryFormat(), row.binary) << row.format;
    }
    for (const char* bad : {"", "X", "b", "bx", "@", "c"})
        EXPECT_FALSE(ISOSubfieldDefinition("X").setFormat(bad)) << bad;
}

TEST(ISOSubfieldDefinition, ReadsNumbers)
{
    struct {
        const char* format;
        std::string bytes;
        std::int64_t whole;
        double real;
    } const rows[] = {
        {"b12", "\x34\x12", 4660, 4660},
        {"B12", "\x34\x12", 0x3412, 0x3412},
        {"b11", "\xFF", 255, 255},
        {"b21", "\xFF", -1, -1},
        {"b22", "\xFE\xFF", -2, -2},
        {"b14", "\xFF\xFF\xFF\xFF", 4294967295, 4294967295.0},
        {"b24", "\xFF\xFF\xFF\xFF", -1, -1},
        {"B24", "\xFF\xFF\xFF\xFE"s, -2, -2},
        {"b44", "\x00\x00\x20\xC0"s, -2, -2.5}, // IEEE 754 single precision
        {"b48", "\x00\x00\x00\x00\x00\x00\x04\x40"s, 2, 2.5},
        {"B48", "\x40\x04\x00\x00\x00\x00\x00\x00"s, 2, 2.5},
        {"B(16)", "\x01\x02", 0x0102, 0x0102},
        {"b13", "\x01\x02\x03", 0, 0}, // no such width
        {"b34", "\x01\x02\x03\x04", 0, 0}, // fixed-point is not taken
        {"b04", "1234", 0, 0},
        {"b14", "\x01\x02", 0, 0}, // cut short
        {"I(4)", " -42", -42, -42},
        {"I", "12x\x1f", 12, 12},
        {"A", "7\x1f", 7, 7},
        {"R", "-1.5e2\x1f", -1, -150},
        {"R", "\x1f", 0, 0},
    };
    for (const auto& row : rows) {
        const auto definition = subfield(row.format);
        std::size_t consumed = 0;
        EXPECT_EQ(definition.extractInt(row.bytes, consumed), row.whole) << row.format;
        EXPECT_EQ(definition.extractFloat(row.bytes, consumed), row.real) << row.format;
    }
}

TEST(ISOSubfieldDefinition, EndsTextWhereItEnds)
{
    struct {
        const char* why;
        const char* format;
        std::string bytes;
        std::size_t length, consumed;
    } const rows[] = {
        {"unit terminator", "A", "abc\x1fxyz", 3, 4},
        {"last terminator missing", "A", "abc\x1e", 3, 4},
        {"no terminator at all", "A", "abc", 3, 4},
        {"empty", "A", "\x1fxyz", 0, 1},
        {"nothing left", "A", "", 0, 0},
        {"two-byte text holds the field terminator", "A", "\x01\x1e\x02\x1f\x1e", 3, 4},
        {"fixed", "A(2)", "abc", 2, 2},
        {"fixed, cut short", "A(5)", "abc", 3, 3},
    };
    for (const auto& row : rows) {
        const auto extent = subfield(row.format).dataLength(row.bytes);
        EXPECT_EQ(extent.length, row.length) << row.why;
        EXPECT_EQ(extent.consumed, row.consumed) << row.why;
    }
}

TEST(ISOFieldDefinition, CountsRows)
{
    struct {
        const char* why;
        const char *labels, *formats;
        std::string bytes;
        std::size_t rows;
    } const rows[] = {
        {"16 bytes of pairs", "*YCOO!XCOO", "(2b24)", std::string(16, '\1'), 2},
        {"the terminator makes no row", "*YCOO!XCOO", "(2b24)", std::string(16, '\1') + '\x1e', 2},
        {"not repeating", "A!B", "(2b24)", std::string(80, '\1'), 1},
        {"variable", "*ATTL!ATVL", "(b12,A)", "\1\2ab\x1f\3\4\x1f\x1e", 2},
        {"last unit terminator missing", "*ATTL!ATVL", "(b12,A)", "\1\2ab\x1f\3\4cd\x1e", 2},
        {"cut inside a fixed value", "*ATTL!ATVL", "(b12,A)", "\1\2ab\x1f\3", 1},
        {"a value without its end", "*ATTL!ATVL", "(b12,A)", "\1\2ab\x1f\3\4cd", 1},
        {"only the terminator", "*ATTL!ATVL", "(b12,A)", "\x1e", 0},
        {"nothing", "*A", "(A)", "", 0},
        {"values of no width cannot make rows", "*A!B", "(B(1),B(2))", std::string(9, 'x'), 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(define(row.labels, row.formats, "26").repeatCount(row.bytes), row.rows)
            << row.why;
}

} // namespace kelvox
