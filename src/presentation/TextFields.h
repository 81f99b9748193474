#pragma once

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace kelvox {

// Reading of fixed-position text: nothing here fails, what is missing is empty or zero.

/// The part of text from position on, as much of it as there is.
[[nodiscard]] inline std::string_view part(std::string_view text, std::size_t position,
                                           std::size_t length = std::string_view::npos)
{
    return position < text.size() ? text.substr(position, length) : std::string_view();
}

[[nodiscard]] inline std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
        ? std::string_view()
        : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The number that the text begins with, whatever the user's locale; zero when there is none.
template <typename Number> [[nodiscard]] Number leadingNumber(std::string_view text)
{
    text = trimmed(text);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    Number value{};
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() ? value : Number{};
}
[[nodiscard]] inline int integerValue(std::string_view text)
{
    return leadingNumber<int>(text);
}
[[nodiscard]] inline double decimalValue(std::string_view text)
{
    const auto value = leadingNumber<double>(text);
    return std::isfinite(value) ? value : 0;
}

/// Calls use(part) for each part between separators; an empty text has one empty part.
template <typename Use> void forEachPart(std::string_view text, char separator, Use use)
{
    for (;;) {
        const auto end = text.find(separator);
        use(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

} // namespace kelvox
