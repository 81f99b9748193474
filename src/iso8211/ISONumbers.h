#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvox {

/// Decimal as atoi reads it: blanks, a sign, digits; what follows is ignored. Saturates.
[[nodiscard]] constexpr std::int64_t isoDecimal(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r')))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        if (value < 1'000'000'000'000'000)
            value = value * 10 + (text[i] - '0');
    return negative ? -value : value;
}

} // namespace kelvox
