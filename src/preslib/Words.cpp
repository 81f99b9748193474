#include "preslib/Words.h"

#include <charconv>
#include <cmath>

namespace kelvox::preslib {

namespace {
template <typename Number> std::optional<Number> wholeText(std::string_view text)
{
    Number value{};
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ec != std::errc() || read.ptr != end)
        return std::nullopt;
    return value;
}
} // namespace

Words::Words(std::string_view line)
{
    std::string word;
    bool quoted = false;
    bool hasWord = false;
    const auto finish = [&] {
        if (hasWord)
            m_words.push_back(std::move(word));
        word.clear();
        hasWord = false;
    };
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
            hasWord = true;
        } else if (!quoted && c == '#' && !hasWord) {
            break;
        } else if (!quoted && (c == ' ' || c == '\t')) {
            finish();
        } else {
            word += c;
            hasWord = true;
        }
    }
    finish();
}

bool Words::skip(std::string_view word)
{
    if (isAtEnd() || m_words[m_next] != word)
        return false;
    ++m_next;
    return true;
}

std::string Words::rest()
{
    std::string result;
    while (!isAtEnd()) {
        if (!result.empty())
            result += ' ';
        result += next();
    }
    return result;
}

std::optional<int> wholeNumber(std::string_view text)
{
    return wholeText<int>(text);
}

std::optional<double> decimalNumber(std::string_view text)
{
    const auto value = wholeText<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

} // namespace kelvox::preslib
