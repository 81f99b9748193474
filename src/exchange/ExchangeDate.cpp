#include "exchange/ExchangeDate.h"

#include "navigation/PropertyList.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>
#include <vector>

namespace kelvox {

namespace {
using std::chrono::seconds;
constexpr long long latestSecond = 7'258'118'400; // the year 2200; a time point ends in 2262

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Walks along a text, taking what it recognises.
class Cursor {
public:
    explicit Cursor(std::string_view text)
        : m_rest(text)
    {
    }
    [[nodiscard]] bool atEnd() const { return m_rest.empty(); }
    [[nodiscard]] char front() const { return m_rest.empty() ? '\0' : m_rest.front(); }
    void skip() { m_rest.remove_prefix(1); }
    bool accept(char c)
    {
        if (front() != c)
            return false;
        skip();
        return true;
    }
    std::string_view digits(std::size_t most = 20)
    {
        std::size_t length = 0;
        while (length < m_rest.size() && length < most && isDigit(m_rest[length]))
            ++length;
        return take(length);
    }
    std::string_view letters()
    {
        std::size_t length = 0;
        while (length < m_rest.size()
               && ((m_rest[length] | 32) >= 'a' && (m_rest[length] | 32) <= 'z'))
            ++length;
        return take(length);
    }
    /// Exactly so many digits.
    std::optional<int> number(std::size_t width)
    {
        const auto text = digits(width);
        if (text.size() != width)
            return std::nullopt;
        return value(text);
    }
    static int value(std::string_view digits)
    {
        int number = 0;
        for (const char c : digits.substr(0, 9))
            number = number * 10 + (c - '0');
        return number;
    }

private:
    std::string_view take(std::size_t length)
    {
        const auto taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return taken;
    }
    std::string_view m_rest;
};

struct Parts {
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0;
    std::chrono::nanoseconds fraction{0};
    int zoneMinutes = 0;

    [[nodiscard]] std::optional<Date> date() const
    {
        using namespace std::chrono;
        const year_month_day day_{std::chrono::year(year),
                                  std::chrono::month(static_cast<unsigned>(month)),
                                  std::chrono::day(static_cast<unsigned>(day))};
        // Within what a time point of nanoseconds can hold.
        if (year < 1700 || year > 2200 || month < 1 || day < 1 || !day_.ok() || hour > 24
            || minute > 59 || second > 60)
            return std::nullopt;
        return Date(duration_cast<Date::duration>(sys_days(day_).time_since_epoch() + hours(hour)
                                                  + minutes(minute - zoneMinutes) + seconds(second)
                                                  + fraction));
    }
};

std::chrono::nanoseconds fractionOf(std::string_view digits)
{
    long long value = 0;
    for (std::size_t i = 0; i < 9; ++i)
        value = value * 10 + (i < digits.size() ? digits[i] - '0' : 0);
    return std::chrono::nanoseconds(value);
}

/// ":mm[:ss[.fff]]" after the hour.
bool readTimeAfterHour(Cursor& cursor, Parts& parts)
{
    if (!cursor.accept(':'))
        return false;
    const auto minute = cursor.number(2);
    if (!minute)
        return false;
    parts.minute = *minute;
    if (cursor.accept(':')) {
        const auto second = cursor.number(2);
        if (!second)
            return false;
        parts.second = *second;
        if (cursor.accept('.') || cursor.accept(','))
            parts.fraction = fractionOf(cursor.digits());
    }
    return true;
}

/// "+hh", "+hhmm" or "+hh:mm" after the sign.
bool readZone(Cursor& cursor, int sign, Parts& parts)
{
    const auto hours = cursor.number(2);
    if (!hours)
        return false;
    cursor.accept(':');
    const auto minutes = isDigit(cursor.front()) ? cursor.number(2) : std::optional(0);
    if (!minutes || *hours > 15 || *minutes > 59)
        return false;
    parts.zoneMinutes = sign * (*hours * 60 + *minutes);
    return true;
}

std::string lowered(std::string_view text)
{
    std::string small(text);
    for (char& c : small)
        c = static_cast<char>(c | 32);
    return small;
}

int monthOf(std::string_view word)
{
    constexpr std::array names{"jan", "feb", "mar", "apr", "may", "jun",
                               "jul", "aug", "sep", "oct", "nov", "dec"};
    const auto small = lowered(word.substr(0, 3));
    const auto it = std::find(names.begin(), names.end(), small);
    return it == names.end() ? 0 : static_cast<int>(it - names.begin()) + 1;
}

struct Number {
    std::string_view digits;
    char separator; ///< that follows
};

/// Which number is year, month and day.
bool readDay(const std::vector<Number>& numbers, Parts& parts)
{
    const auto value = [&](std::size_t i) { return Cursor::value(numbers[i].digits); };
    const auto fullYear = [](int year) {
        return year < 70 ? year + 2000 : year < 100 ? year + 1900 : year;
    };
    if (parts.month != 0) { // it was a word
        if (numbers.size() < 2)
            return false;
        const bool yearFirst = numbers[0].digits.size() > 2;
        parts.year = fullYear(value(yearFirst ? 0 : 1));
        parts.day = value(yearFirst ? 1 : 0);
        return true;
    }
    if (numbers.size() < 3)
        return false;
    if (numbers[0].digits.size() > 2) {
        parts.year = value(0);
        parts.month = value(1);
        parts.day = value(2);
        return true;
    }
    const bool monthFirst = numbers[0].separator == '/' ? value(0) <= 12 : value(1) > 12;
    parts.month = value(monthFirst ? 0 : 1);
    parts.day = value(monthFirst ? 1 : 0);
    parts.year = fullYear(value(2));
    return true;
}
} // namespace

std::optional<Date> parseIsoDate(std::string_view text)
{
    Cursor cursor(trimmed(text));
    Parts parts;
    const auto year = cursor.number(4);
    if (!year || !cursor.accept('-'))
        return std::nullopt;
    const auto month = cursor.number(2);
    if (!month || !cursor.accept('-'))
        return std::nullopt;
    const auto day = cursor.number(2);
    if (!day || !(cursor.accept('T') || cursor.accept(' ')))
        return std::nullopt;
    const auto hour = cursor.number(2);
    parts.year = *year;
    parts.month = *month;
    parts.day = *day;
    parts.hour = hour.value_or(99);
    if (!hour || !readTimeAfterHour(cursor, parts))
        return std::nullopt;
    if (cursor.accept('+') || cursor.front() == '-') {
        const int sign = cursor.accept('-') ? -1 : 1;
        if (!readZone(cursor, sign, parts))
            return std::nullopt;
    } else {
        cursor.accept('Z');
    }
    return cursor.atEnd() ? parts.date() : std::nullopt;
}

std::optional<Date> parseLenientDate(std::string_view text)
{
    text = trimmed(text);
    if (auto date = parseIsoDate(text))
        return date;
    Cursor cursor(text.substr(0, 100));
    Parts parts;
    std::vector<Number> numbers;
    bool hasTime = false;
    while (!cursor.atEnd()) {
        const char c = cursor.front();
        if (isDigit(c)) {
            const auto digits = cursor.digits();
            if (!hasTime && digits.size() <= 2 && cursor.front() == ':') {
                parts.hour = Cursor::value(digits);
                if (!readTimeAfterHour(cursor, parts))
                    return std::nullopt;
                hasTime = true;
            } else if (numbers.empty() && (digits.size() == 8 || digits.size() == 14)) {
                numbers = {{digits.substr(0, 4), '-'},
                           {digits.substr(4, 2), '-'},
                           {digits.substr(6, 2), ' '}};
                if (digits.size() == 14) {
                    parts.hour = Cursor::value(digits.substr(8, 2));
                    parts.minute = Cursor::value(digits.substr(10, 2));
                    parts.second = Cursor::value(digits.substr(12, 2));
                    hasTime = true;
                }
            } else if (numbers.size() == 3 && !hasTime && digits.size() == 6) {
                parts.hour = Cursor::value(digits.substr(0, 2));
                parts.minute = Cursor::value(digits.substr(2, 2));
                parts.second = Cursor::value(digits.substr(4, 2));
                hasTime = true;
            } else if (numbers.empty() && cursor.atEnd() && digits.size() >= 9
                       && digits.size() <= 10) {
                {
                    const auto second = std::stoll(std::string(digits));
                    return second < latestSecond ? std::optional(Date(seconds(second)))
                                                 : std::nullopt;
                }
            } else {
                numbers.push_back({digits, cursor.front()});
            }
        } else if (((c | 32) >= 'a') && ((c | 32) <= 'z')) {
            const auto word = lowered(cursor.letters());
            if (const int month = monthOf(word))
                parts.month = month;
            else if (hasTime && (word == "pm" || word == "am"))
                parts.hour = parts.hour % 12 + (word == "pm" ? 12 : 0);
        } else if (hasTime && (c == '+' || c == '-')) {
            cursor.skip();
            if (!readZone(cursor, c == '-' ? -1 : 1, parts))
                return std::nullopt;
        } else {
            cursor.skip();
        }
    }
    return readDay(numbers, parts) ? parts.date() : std::nullopt;
}

namespace {
std::string dateText(Date date, char between, const char* zone)
{
    using namespace std::chrono;
    const auto whole = floor<seconds>(date);
    const auto days_ = floor<days>(whole);
    const year_month_day day(days_);
    const hh_mm_ss time(whole - days_);
    return fmt::format("{:04}-{:02}-{:02}{}{:02}:{:02}:{:02}{}", static_cast<int>(day.year()),
                       static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                       between, time.hours().count(), time.minutes().count(),
                       time.seconds().count(), zone);
}
} // namespace

std::string isoDate(Date date)
{
    return dateText(date, 'T', "Z");
}

std::string plainDate(Date date)
{
    return dateText(date, ' ', " +0000");
}

} // namespace kelvox
