#include "positioning/NMEA.h"

#include "connections/SentenceText.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>

namespace kelvox {
namespace {

template <typename Number> Number hexValue(std::string_view text, std::size_t offset)
{
    constexpr auto digits = sizeof(Number) * 2;
    Number value = 0;
    if (text.size() < digits || offset > text.size() - digits)
        return 0;
    const char* const begin = text.data() + offset;
    std::from_chars(begin, begin + digits, value, 16);
    return value;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> twoDigits(std::string_view text, std::size_t offset, int limit)
{
    if (offset + 2 > text.size() || !isDigit(text[offset]) || !isDigit(text[offset + 1]))
        return std::nullopt;
    const int value = (text[offset] - '0') * 10 + (text[offset + 1] - '0');
    return value < limit ? std::optional(value) : std::nullopt;
}

} // namespace

std::string_view NMEA::start(std::string_view raw)
{
    return sentenceFromStart(raw);
}

NMEA::Checksum NMEA::checkSum(std::span<char> raw, bool allowMissing)
{
    if (raw.empty() || (raw[0] != '$' && raw[0] != '!'))
        return Checksum::NoStart;
    auto* const star = static_cast<char*>(std::memchr(raw.data(), '*', raw.size()));
    if (!star) {
        if (!allowMissing)
            return Checksum::Missing;
        auto* const carriageReturn = static_cast<char*>(std::memchr(raw.data(), '\r', raw.size()));
        if (!carriageReturn)
            return Checksum::Missing;
        *carriageReturn = '\0';
        return Checksum::Valid;
    }

    const auto summed = static_cast<std::size_t>(star - raw.data()) - 1;
    const auto expected = sentenceChecksum({raw.data(), summed + 1});
    *star = '\0';
    if (raw.size() <= summed + 3)
        return Checksum::Incomplete;
    std::uint8_t given = 0;
    const auto scanned = std::from_chars(star + 1, star + 3, given, 16);
    if (scanned.ec != std::errc{})
        return Checksum::Incomplete;
    return given == expected ? Checksum::Valid : Checksum::Wrong;
}

std::optional<std::string_view> NMEA::address(std::string_view raw, std::size_t offset,
                                              std::size_t length)
{
    // Kept: a buffer that ends exactly with the wanted characters does not give them.
    if (raw.size() <= length || raw.size() - length <= offset)
        return std::nullopt;
    return raw.substr(offset, length);
}

std::optional<std::string_view> NMEA::prefix(std::string_view raw)
{
    return address(raw, 1, 1);
}

std::optional<std::string_view> NMEA::talker(std::string_view raw)
{
    return address(raw, 1, 2);
}

std::optional<std::string_view> NMEA::command(std::string_view raw)
{
    return address(raw, 3, 3);
}

std::optional<std::string_view> NMEA::parse(std::string_view raw, std::size_t index)
{
    const NmeaFields fields(raw);
    if (index >= fields.count())
        return std::nullopt;
    return fields[index];
}

std::size_t NMEA::count(std::string_view raw)
{
    return NmeaFields(raw).count();
}

std::optional<float> NMEA::number(std::string_view field)
{
    if (field.empty())
        return std::nullopt;
    const auto blanks = field.find_first_not_of(" \t");
    field.remove_prefix(blanks == std::string_view::npos ? field.size() : blanks);
    if (!field.empty() && field.front() == '+')
        field.remove_prefix(1);
    // "nan" and "inf" are not numbers to this world.
    const auto digits = field.substr(!field.empty() && field.front() == '-' ? 1 : 0);
    if (digits.empty() || !(isDigit(digits.front()) || digits.front() == '.'))
        return 0.0F;
    float value = 0;
    const auto scanned = std::from_chars(field.data(), field.data() + field.size(), value);
    if (scanned.ec == std::errc::result_out_of_range)
        return std::nullopt;
    return value;
}

int NMEA::integer(std::string_view field)
{
    int value = 0;
    const auto blanks = field.find_first_not_of(" \t+");
    field.remove_prefix(blanks == std::string_view::npos ? field.size() : blanks);
    const auto scanned = std::from_chars(field.data(), field.data() + field.size(), value);
    if (scanned.ec == std::errc::result_out_of_range)
        return field.front() == '-' ? std::numeric_limits<int>::min()
                                    : std::numeric_limits<int>::max();
    return value;
}

std::uint8_t NMEA::parseUInt8HexValue(std::string_view text, std::size_t offset)
{
    return hexValue<std::uint8_t>(text, offset);
}

std::uint16_t NMEA::parseUInt16HexValue(std::string_view text, std::size_t offset)
{
    return __builtin_bswap16(hexValue<std::uint16_t>(text, offset));
}

std::uint32_t NMEA::parseUInt32HexValue(std::string_view text, std::size_t offset)
{
    return __builtin_bswap32(hexValue<std::uint32_t>(text, offset));
}

std::uint64_t NMEA::parseUInt64HexValue(std::string_view text, std::size_t offset)
{
    return hexValue<std::uint64_t>(text, offset);
}

std::string NMEA::parseStringHexValue(std::string_view text, std::size_t offset, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i < count && offset < text.size(); ++i, offset += 2) {
        const auto c = static_cast<char>(parseUInt8HexValue(text, offset));
        if (c >= ' ' && c <= '~' && c != '@')
            result += c;
    }
    return result;
}

float NMEA::position(std::string_view field, std::string_view hemisphere)
{
    constexpr auto unknown = static_cast<float>(noCoordinate);
    if (field.size() < 3 || hemisphere.empty())
        return unknown;
    if (field.find_first_not_of("0123456789.") != std::string_view::npos
        || hemisphere.find_first_not_of("NSWE") != std::string_view::npos)
        return unknown;
    const auto point = field.find('.');
    if (point == std::string_view::npos)
        return unknown;

    const auto minutesAt = point - std::min<std::size_t>(point, 2);
    float degrees = 0;
    const auto scanned = std::from_chars(field.data(), field.data() + minutesAt, degrees);
    const auto minutes = number(field.substr(minutesAt));
    if (scanned.ec == std::errc::result_out_of_range || !minutes)
        return unknown;
    const float value = degrees + *minutes / 60.0F;
    return hemisphere.front() == 'S' || hemisphere.front() == 'W' ? -value : value;
}

std::string NMEA::name(std::string_view name)
{
    std::string result(name);
    for (char& c : result) {
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (!letter && !isDigit(c) && c != ' ' && c != '+')
            c = '-';
    }
    return result;
}

std::uint8_t NMEA::sixBitToBinary(char c)
{
    const unsigned code = static_cast<unsigned char>(c);
    return static_cast<std::uint8_t>((code < 89 || code > 215 ? code + 16 : code + 8) % 64);
}

char NMEA::binaryToSixBit(std::uint8_t value)
{
    value &= 63;
    return static_cast<char>(value < 40 ? value + 48 : value + 56);
}

char NMEA::binaryToAscii(std::uint8_t value)
{
    value &= 63;
    return static_cast<char>(value < 32 ? value + 64 : value);
}

std::uint8_t NMEA::asciiToBinary(char c)
{
    if (c >= 'a' && c <= 'z')
        c = static_cast<char>(c - 'a' + 'A');
    return static_cast<std::uint8_t>(static_cast<unsigned char>(c) % 64);
}

std::uint32_t NMEA::getUnsignedBits(const BitBuffer& bits, std::size_t start, std::size_t count)
{
    return static_cast<std::uint32_t>(bits.bits(start, count));
}

std::string NMEA::getAsciiBits(const BitBuffer& bits, std::size_t start, std::size_t count)
{
    if (count > bits.size() || start > bits.size() - count)
        return {};
    std::string text;
    text.reserve(count / 6);
    for (std::size_t at = 0; at + 6 <= count; at += 6) {
        const char c = binaryToAscii(static_cast<std::uint8_t>(bits.bits(start + at, 6)));
        text += c == '@' ? ' ' : c;
    }
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<std::chrono::system_clock::time_point>
NMEA::dateFromUtc(std::string_view utc, std::chrono::system_clock::time_point now)
{
    const auto hours = twoDigits(utc, 0, 24);
    const auto minutes = twoDigits(utc, 2, 60);
    const auto seconds = twoDigits(utc, 4, 61); // a leap second is written 60
    if (!hours || !minutes || !seconds)
        return std::nullopt;
    const float fraction = utc.size() > 6 && utc[6] == '.' ? number(utc.substr(6)).value_or(0) : 0;
    using std::chrono::system_clock;
    return std::chrono::floor<std::chrono::days>(now) + std::chrono::hours(*hours)
        + std::chrono::minutes(*minutes) + std::chrono::seconds(*seconds)
        + std::chrono::duration_cast<system_clock::duration>(
               std::chrono::duration<float>(fraction));
}

std::string NMEA::formatUtcToLocal(std::string_view utc, std::chrono::system_clock::time_point now)
{
    const auto date = dateFromUtc(utc, now);
    if (!date)
        return {};
    const std::time_t time = std::chrono::system_clock::to_time_t(*date);
    std::tm local{};
    if (!::localtime_r(&time, &local))
        return {};
    return fmt::format("{:02}:{:02}:{:02}", local.tm_hour, local.tm_min, local.tm_sec);
}

} // namespace kelvox
