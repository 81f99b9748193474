#include "navigation/PropertyList.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace kelvox {

namespace {
constexpr std::size_t longestNumber = 32; ///< characters

char* putPadded(char* out, unsigned value, int width)
{
    for (int i = width - 1; i >= 0; --i, value /= 10)
        out[i] = static_cast<char>('0' + value % 10);
    return out + width;
}

char* putNumber(char* out, auto value)
{
    return std::to_chars(out, out + longestNumber, value).ptr;
}
} // namespace

/// Most values are tenths, for which there is a shorter way than the general one.
char* PropertyWriter::putReal(char* out, float value)
{
    constexpr double mostTenths = 999'999; // six digits always read back the same
    const double tenths = static_cast<double>(value) * 10;
    if (!(std::abs(tenths) <= mostTenths))
        return putNumber(out, std::isfinite(value) ? value : 0.0F);
    const int whole = static_cast<int>(tenths + (tenths < 0 ? -0.5 : 0.5));
    if (static_cast<float>(whole / 10.0) != value)
        return putNumber(out, value);
    if (whole < 0)
        *out++ = '-';
    out = putNumber(out, std::abs(whole) / 10);
    if (whole % 10 != 0) {
        *out++ = '.';
        *out++ = static_cast<char>('0' + std::abs(whole) % 10);
    }
    return out;
}

char* PropertyWriter::putEscaped(char* out, std::string_view value)
{
    for (const char c : value) {
        if (c == '&')
            out = put(out, "&amp;");
        else if (c == '<')
            out = put(out, "&lt;");
        else if (c == '>')
            out = put(out, "&gt;");
        else if (c == '\r')
            out = put(out, "&#13;");
        else
            *out++ = c;
    }
    return out;
}

/// The key with its tags, in room that holds the value too.
char* PropertyWriter::putKey(std::string_view key, std::size_t valueSize)
{
    char* out = put(room(key.size() + valueSize + longestTags), "<key>");
    std::memcpy(out, key.data(), key.size());
    return put(out + key.size(), "</key>");
}

void PropertyWriter::grow(std::size_t bytes)
{
    constexpr std::size_t least = 1024;
    m_text.resize(std::max({m_text.size() * 2, m_used + bytes, least}));
}

std::string PropertyWriter::take()
{
    m_text.resize(std::exchange(m_used, 0));
    return std::exchange(m_text, {});
}

void PropertyWriter::key(std::string_view key)
{
    char* out = put(room(key.size() * longestEscape + longestTags), "<key>");
    finish(put(putEscaped(out, key), "</key>"));
}

void PropertyWriter::boolean(std::string_view key, bool value)
{
    this->key(key);
    append(value ? "<true/>" : "<false/>");
}

void PropertyWriter::text(std::string_view key, std::string_view value)
{
    char* out = put(putKey(key, value.size() * longestEscape), "<string>");
    finish(put(putEscaped(out, value), "</string>"));
}

void PropertyWriter::real(std::string_view key, float value)
{
    char* out = put(putKey(key, longestNumber), "<real>");
    finish(put(putReal(out, value), "</real>"));
}

void PropertyWriter::integer(std::string_view key, long long value)
{
    char* out = put(putKey(key, longestNumber), "<integer>");
    finish(put(putNumber(out, value), "</integer>"));
}

void PropertyWriter::date(std::string_view key, Date value)
{
    using namespace std::chrono;
    const auto second = floor<seconds>(value);
    const auto day = floor<days>(second);
    if (day != m_day || m_dayText[0] == '\0') {
        m_day = day;
        const year_month_day ymd(day);
        char* out = m_dayText.data();
        out = putPadded(
            out, static_cast<unsigned>(std::clamp(static_cast<int>(ymd.year()), 0, 9999)), 4);
        *out++ = '-';
        out = putPadded(out, static_cast<unsigned>(ymd.month()), 2);
        *out++ = '-';
        out = putPadded(out, static_cast<unsigned>(ymd.day()), 2);
        *out = 'T';
    }
    const auto ofDay = static_cast<unsigned>((second - day).count());
    char* out = put(putKey(key, longestNumber), "<date>");
    std::memcpy(out, m_dayText.data(), m_dayText.size());
    out = putPadded(out + m_dayText.size(), ofDay / 3600, 2);
    *out++ = ':';
    out = putPadded(out, ofDay / 60 % 60, 2);
    *out++ = ':';
    out = putPadded(out, ofDay % 60, 2);
    finish(put(out, "Z</date>"));
}

} // namespace kelvox
