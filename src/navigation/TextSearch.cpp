#include "navigation/TextSearch.h"

#include <algorithm>
#include <cstdint>

namespace kelvox {

namespace {
/// Two-byte characters only: every capital folded here lies below U+0800.
std::uint32_t small(std::uint32_t code)
{
    if ((code >= 0xC0 && code <= 0xDE && code != 0xD7) || (code >= 0x391 && code <= 0x3A9)
        || (code >= 0x410 && code <= 0x42F))
        return code + 0x20;
    if (code >= 0x400 && code <= 0x40F)
        return code + 0x50;
    const bool evenCapital = (code >= 0x100 && code <= 0x137) || (code >= 0x14A && code <= 0x177);
    if (evenCapital && code % 2 == 0)
        return code + 1;
    const bool oddCapital = (code >= 0x139 && code <= 0x148) || (code >= 0x179 && code <= 0x17E);
    if (oddCapital && code % 2 == 1)
        return code + 1;
    return code;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char smallAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string_view takeNumber(std::string_view& text)
{
    const auto length = std::min(text.find_first_not_of("0123456789"), text.size());
    auto number = text.substr(0, length);
    text.remove_prefix(length);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}
} // namespace

std::string foldedCase(std::string_view text)
{
    std::string folded(text);
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const auto first = static_cast<unsigned char>(folded[i]);
        if (first < 0x80) {
            folded[i] = smallAscii(folded[i]);
        } else if (first >= 0xC2 && first < 0xE0 && i + 1 < folded.size()) {
            const auto second = static_cast<unsigned char>(folded[i + 1]);
            const auto code = small((first & 0x1FU) << 6 | (second & 0x3FU));
            folded[i++] = static_cast<char>(0xC0 | code >> 6);
            folded[i] = static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return folded;
}

TextSearch::TextSearch(std::string_view text)
    : m_text(foldedCase(text))
    , m_anywhere(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; })
                 >= 2)
{
}

bool TextSearch::matches(std::string_view name, std::string_view description) const
{
    const auto found = [this](std::string_view text) {
        const auto folded = foldedCase(text);
        return folded.starts_with(m_text)
            || (m_anywhere && folded.find(m_text) != std::string::npos);
    };
    return m_text.empty() || found(name) || (!description.empty() && found(description));
}

bool naturalLess(std::string_view a, std::string_view b)
{
    const auto wholeA = a;
    const auto wholeB = b;
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            const auto x = takeNumber(a);
            const auto y = takeNumber(b);
            if (x.size() != y.size())
                return x.size() < y.size();
            if (x != y)
                return x < y;
            continue;
        }
        const char x = smallAscii(a.front());
        const char y = smallAscii(b.front());
        if (x != y)
            return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    if (a.empty() != b.empty())
        return a.empty();
    return wholeA < wholeB;
}

} // namespace kelvox
