#include "navigation/PositionFormatter.h"

#include "base/NoValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace kelvox {

namespace {
constexpr std::string_view degreeSign = "\u00B0";

struct Parts {
    double degrees; ///< whole ones
    double minutes;

    explicit Parts(double value)
        : degrees(std::trunc(value))
        , minutes((value - degrees) * 60)
    {
    }
};

/// What can be wrong with a position text. The numbers are those of the message keys.
enum class Range { Degrees = 1, Minutes = 2, Seconds = 3 };

/// Walks along a text from part to part, over blanks.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
        , m_size(text.size())
    {
    }
    [[nodiscard]] std::size_t offset() const { return m_size - m_rest.size(); }

    [[nodiscard]] bool atEnd()
    {
        skipBlanks();
        return m_rest.empty();
    }
    enum class Number { Whole, Decimal };
    std::optional<double> number(Number kind)
    {
        skipBlanks();
        const auto length =
            std::min(m_rest.find_first_not_of(kind == Number::Whole ? "0123456789" : "0123456789."),
                     m_rest.size());
        double value = 0;
        const char* begin = m_rest.data();
        const auto [end, error] = std::from_chars(begin, begin + length, value);
        if (error != std::errc{})
            return std::nullopt;
        m_rest.remove_prefix(static_cast<std::size_t>(end - begin));
        return value;
    }
    bool accept(std::string_view mark)
    {
        skipBlanks();
        if (!m_rest.starts_with(mark))
            return false;
        m_rest.remove_prefix(mark.size());
        return true;
    }
    std::optional<char> letter()
    {
        skipBlanks();
        if (m_rest.empty())
            return std::nullopt;
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }

private:
    void skipBlanks()
    {
        while (!m_rest.empty()
               && (m_rest.front() == ' ' || (m_rest.front() >= '\t' && m_rest.front() <= '\r')))
            m_rest.remove_prefix(1);
    }
    std::string_view m_rest;
    std::size_t m_size;
};

/// The degree marks accepted beside the sign itself; two are scars of old character sets.
std::string withPlainDegreeMarks(std::string_view text)
{
    std::string plain(text);
    for (const std::string_view mark : {"\u00B0", "\u00BC", "0xBC"})
        for (auto at = plain.find(mark); at != std::string::npos; at = plain.find(mark, at))
            plain.replace(at, mark.size(), 1, '*');
    return plain;
}
} // namespace

char NSPositionFormatter::hemisphere(double degrees) const
{
    if (isLatitude())
        return degrees >= 0 ? 'N' : 'S';
    return degrees > 0 ? 'E' : 'W';
}

std::string NSPositionFormatter::stringForObjectValue(double degrees) const
{
    if (!std::isfinite(degrees) || degrees == noCoordinate)
        return {};
    const double v = std::abs(degrees);
    const Parts parts(v);
    const int width = isLatitude() ? 2 : 3;
    const char letter = hemisphere(degrees);

    std::string text;
    switch (m_units.positionFormatUnits) {
    case UnitsModel::DegreesMinutes: // sixty minutes may show, on purpose
        text = m_highPrecision ? fmt::format("{:0{}.0f}{}{:06.3f}'{}", parts.degrees, width,
                                             degreeSign, parts.minutes, letter)
                               : fmt::format("{:0{}.0f}{}{:05.2f}'{}", parts.degrees, width,
                                             degreeSign, parts.minutes, letter);
        break;
    case UnitsModel::LetterFirst:
        text = fmt::format("{}{:0{}.0f}.{:06.3f}", letter, parts.degrees, width, parts.minutes);
        break;
    case UnitsModel::DecimalDegrees:
        text = fmt::format("{:0{}.6f}{}", v, width + 7, letter);
        break;
    case UnitsModel::DegreesMinutesSeconds: {
        const double minutes = std::min(std::trunc(parts.minutes), 59.9);
        const double seconds = std::min((parts.minutes - std::trunc(parts.minutes)) * 60, 59.9);
        text = fmt::format("{:0{}.0f}{}{:02}'{:04.1f}\"{}", parts.degrees, width, degreeSign,
                           static_cast<int>(minutes), seconds, letter);
        break;
    }
    default:
        return {};
    }
    if (m_align && isLatitude())
        text.insert(0, 2, ' ');
    return text;
}

std::string NSPositionFormatter::nmeaFormat(double degrees) const
{
    if (!std::isfinite(degrees) || degrees == noCoordinate)
        return {};
    // In thousandths of a minute, so that a sentence never says sixty minutes.
    const double thousandths = std::round(std::abs(degrees) * 60'000);
    const double minutes = std::fmod(thousandths, 60'000);
    if (!std::isfinite(minutes))
        return {};
    return fmt::format("{:0{}.0f}{:06.3f}", (thousandths - minutes) / 60'000, isLatitude() ? 2 : 3,
                       minutes / 1000);
}

bool NSPositionFormatter::isPartialStringValid(std::string_view text)
{
    return text.find_first_not_of("0123456789.NSWE") == std::string_view::npos;
}

Result<double> NSPositionFormatter::getObjectValue(std::string_view text) const
{
    const std::string plain = withPlainDegreeMarks(text);
    Scanner scanner(plain);
    const int format = m_units.positionFormatUnits;
    const std::string axis = isLatitude() ? "Latitude" : "Longitude";
    const auto badFormat = [&] {
        const int number = format >= 0 && format <= 3 ? format + 1 : 1;
        return failure(Error::Code::BadSyntax,
                       m_strings.text(fmt::format("NSInvalid{}Format{}", axis, number)),
                       scanner.offset());
    };
    const auto outOfRange = [&](Range part) {
        return failure(
            Error::Code::OutOfRange,
            m_strings.text(fmt::format("NSInvalid{}Range{}", axis, static_cast<int>(part))),
            scanner.offset());
    };
    using Number = Scanner::Number;

    const bool letterFirst = format == UnitsModel::LetterFirst;
    std::optional<char> letter = letterFirst ? scanner.letter() : std::nullopt;
    const auto degrees = scanner.number(letterFirst ? Number::Whole : Number::Decimal);
    std::optional<double> minutes = 0;
    std::optional<double> seconds = 0;
    switch (format) {
    case UnitsModel::DegreesMinutes:
        scanner.accept("*");
        minutes = scanner.number(Number::Decimal);
        scanner.accept("'");
        break;
    case UnitsModel::LetterFirst:
        if (!scanner.accept("."))
            return badFormat();
        minutes = scanner.number(Number::Decimal);
        scanner.accept("'");
        break;
    case UnitsModel::DecimalDegrees:
        scanner.accept("*");
        break;
    case UnitsModel::DegreesMinutesSeconds:
        scanner.accept("*");
        minutes = scanner.number(Number::Decimal);
        scanner.accept("'");
        seconds = scanner.number(Number::Decimal);
        scanner.accept("\"");
        break;
    default:
        return badFormat();
    }
    if (!degrees || !minutes || !seconds)
        return badFormat();
    if (!letterFirst)
        letter = scanner.letter();
    const std::string_view letters = isLatitude() ? "NS" : "EW";
    if (!letter || letters.find(*letter) == std::string_view::npos || !scanner.atEnd())
        return badFormat();

    // Sixty itself is let through: the display may show it.
    if (*minutes > 60)
        return outOfRange(Range::Minutes);
    if (*seconds > 60)
        return outOfRange(Range::Seconds);
    const double value = *degrees + *minutes / 60 + *seconds / 3600;
    if (value > (isLatitude() ? 90 : 180))
        return outOfRange(Range::Degrees);
    return *letter == 'S' || *letter == 'W' ? -value : value;
}

} // namespace kelvox
