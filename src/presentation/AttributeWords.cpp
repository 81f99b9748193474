#include "presentation/AttributeWords.h"

#include "s57/S57ObjectCatalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace kelvox {

namespace {
constexpr double feetPerMetre = 3.2808399;
constexpr double feetPerFathom = 6;

enum class Unit { None, Depth, Height, Metres, Degrees, Seconds, NauticalMiles, Minutes, Date };

/// Units of the numeric attributes (S-57 attribute catalogue, 2000).
Unit unitOf(int code)
{
    switch (code) {
    case 5: // BURDEP
    case 87: // DRVAL1
    case 88: // DRVAL2
    case 144: // SOUACC
    case 174: // VALDCO
    case 179: // VALSOU
        return Unit::Depth;
    case 90: // ELEVAT
    case 95: // HEIGHT
    case 181: // VERCLR
    case 182: // VERCCL
    case 183: // VERCOP
    case 184: // VERCSA
    case 186: // VERLEN
        return Unit::Height;
    case 97: // HORACC
    case 98: // HORCLR
    case 99: // HORLEN
    case 100: // HORWID
    case 127: // RADIUS
    case 145: // SDISMX
    case 146: // SDISMN
    case 180: // VERACC
    case 401: // POSACC
        return Unit::Metres;
    case 117: // ORIENT
    case 136: // SECTR1
    case 137: // SECTR2
    case 175: // VALLMA
    case 176: // VALMAG
        return Unit::Degrees;
    case 142: // SIGPER
        return Unit::Seconds;
    case 91: // ESTRNG
    case 177: // VALMXR
    case 178: // VALNMR
        return Unit::NauticalMiles;
    case 173: // VALACM
        return Unit::Minutes;
    case 79: // CPDATE
    case 85: // DATEND
    case 86: // DATSTA
    case 115: // NMDATE
    case 118: // PEREND
    case 119: // PERSTA
    case 128: // RECDAT
    case 147: // SORDAT
    case 151: // SUREND
    case 152: // SURSTA
        return Unit::Date;
    default:
        return Unit::None;
    }
}

std::string_view suffixOf(int code)
{
    switch (code) {
    case 84: // CURVEL
        return " kn";
    case 106: // LIFCAP
        return " t";
    case 139: // SIGFRQ
        return " Hz";
    default:
        return "";
    }
}

std::optional<double> numberOf(std::string_view text)
{
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = read.ec == std::errc{} && read.ptr == text.data() + text.size();
    return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string rounded(double value, double steps)
{
    const double result = std::round(value * steps) / steps;
    return fmt::format("{:.7g}", result == 0 ? 0 : result); // no minus before a zero
}

/// "20040305", "200403", "2004", "--0401", "---15", or nothing when it is none of them.
std::optional<std::string> dateWords(std::string_view text)
{
    static constexpr std::array months{"January",   "February", "March",    "April",
                                       "May",       "June",     "July",     "August",
                                       "September", "October",  "November", "December"};
    const auto dashes = std::min(text.find_first_not_of('-'), text.size());
    std::string_view year;
    std::string_view rest = text.substr(dashes);
    if (!std::ranges::all_of(rest, [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    if (dashes == 0) {
        if (rest.size() != 4 && rest.size() != 6 && rest.size() != 8)
            return std::nullopt;
        year = rest.substr(0, 4);
        rest.remove_prefix(4);
    } else if (!(dashes == 2 && (rest.size() == 4 || rest.size() == 2))
               && !(dashes == 3 && rest.size() == 2)) {
        return std::nullopt;
    }
    const auto two = [](std::string_view digits) {
        return static_cast<std::size_t>((digits[0] - '0') * 10 + digits[1] - '0');
    };
    std::string words;
    if (dashes == 3)
        return fmt::format("day {} of the month", two(rest));
    if (!rest.empty()) {
        const std::size_t month = two(rest);
        if (month < 1 || month > months.size())
            return std::nullopt;
        words = months[month - 1];
        if (rest.size() == 4)
            words = fmt::format("{} {}", two(rest.substr(2)), words);
    }
    if (!year.empty())
        words += (words.empty() ? "" : " ") + std::string(year);
    return words;
}

std::string depthWords(double metres, int depthUnit)
{
    switch (depthUnit) {
    case 0:
        return rounded(metres * feetPerMetre, 10) + " ft";
    case 2:
        return rounded(metres * feetPerMetre / feetPerFathom, 10) + " fm";
    default:
        return rounded(metres, 100) + " m";
    }
}
} // namespace

std::string attributeWords(int attributeCode, std::string_view value, int depthUnit,
                           bool heightsInMetres)
{
    const Unit unit = unitOf(attributeCode);
    if (unit == Unit::Date)
        return dateWords(value).value_or(std::string(value));
    const auto number = numberOf(value);
    if (!number)
        return S57ObjectCatalogue::readableValue(attributeCode, value);
    switch (unit) {
    case Unit::Depth:
        return depthWords(*number, depthUnit);
    case Unit::Height:
        return heightsInMetres ? rounded(*number, 100) + " m"
                               : rounded(*number * feetPerMetre, 10) + " ft";
    case Unit::Metres:
        return rounded(*number, 100) + " m";
    case Unit::Degrees:
        return rounded(*number, 100) + "°";
    case Unit::Seconds:
        return rounded(*number, 100) + " s";
    case Unit::NauticalMiles:
        return rounded(*number, 100) + " NM";
    case Unit::Minutes:
        return rounded(*number, 100) + "'";
    default:
        return S57ObjectCatalogue::readableValue(attributeCode, value)
            + std::string(suffixOf(attributeCode));
    }
}

bool isRecordAttribute(int attributeCode)
{
    constexpr std::array codes{1,   79,  80,  111, 115, 120, 122, 128, 129, 132,
                               133, 147, 148, 150, 151, 152, 158, 304};
    return std::ranges::find(codes, attributeCode) != codes.end();
}

} // namespace kelvox
