#include "app/TypedPosition.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace kelvox {

namespace {
/// A number or a hemisphere letter.
struct Token {
    char letter = 0; ///< 0 for a number
    double value = 0;
    bool negative = false;
};

std::optional<double> numberOf(std::string_view digits)
{
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size())
        return std::nullopt;
    return value;
}

/// "42.20.150" is degrees and minutes in one word.
bool addNumber(std::vector<Token>& tokens, std::string_view word, bool negative)
{
    const auto first = word.find('.');
    if (first != std::string_view::npos && word.find('.', first + 1) != std::string_view::npos) {
        const auto degrees = numberOf(word.substr(0, first));
        const auto minutes = numberOf(word.substr(first + 1));
        if (!degrees || !minutes)
            return false;
        tokens.push_back({.value = *degrees, .negative = negative});
        tokens.push_back({.value = *minutes});
        return true;
    }
    const auto value = numberOf(word);
    if (value)
        tokens.push_back({.value = *value, .negative = negative});
    return value.has_value();
}

std::optional<std::vector<Token>> split(std::string_view text)
{
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        const char capital = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        const auto isDigit = [&](std::size_t at) {
            return at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0;
        };
        if (isDigit(i) || ((c == '-' || c == '+') && isDigit(i + 1))) {
            const bool negative = c == '-';
            std::size_t end = isDigit(i) ? i : i + 1;
            const std::size_t begin = end;
            while (isDigit(end) || (end < text.size() && text[end] == '.' && isDigit(end + 1)))
                ++end;
            if (!addNumber(tokens, text.substr(begin, end - begin), negative))
                return std::nullopt;
            i = end;
        } else if (capital == 'N' || capital == 'S' || capital == 'E' || capital == 'W') {
            tokens.push_back({.letter = capital});
            ++i;
        } else if (std::isalpha(static_cast<unsigned char>(c)) != 0) {
            return std::nullopt;
        } else {
            ++i; // blanks, commas, and the marks of degrees, minutes and seconds in any writing
        }
    }
    return tokens;
}

std::optional<double> axis(const std::vector<Token>& tokens, std::size_t from, std::size_t to,
                           std::string_view letters, double highest)
{
    double value = 0;
    double share = 1;
    bool negative = false;
    int numbers = 0;
    for (std::size_t i = from; i < to; ++i) {
        const Token& token = tokens[i];
        if (token.letter != 0) {
            if (letters.find(token.letter) == std::string_view::npos)
                return std::nullopt;
            negative = negative || token.letter == letters[1];
            continue;
        }
        if (++numbers > 3 || (numbers > 1 && token.value >= 60))
            return std::nullopt;
        negative = negative || token.negative;
        value += token.value * share;
        share /= 60;
    }
    if (numbers == 0 || value > highest)
        return std::nullopt;
    return negative ? -value : value;
}
} // namespace

std::optional<Position> parseTypedPosition(std::string_view text)
{
    constexpr std::size_t longest = 100;
    if (text.size() > longest)
        return std::nullopt;
    const auto tokens = split(text);
    if (!tokens || tokens->size() < 2)
        return std::nullopt;
    // Where the longitude begins: after the latitude's letter, or at the longitude's when letters
    // stand in front; without letters in the middle.
    std::size_t middle = tokens->size() / 2;
    std::vector<std::size_t> letters;
    for (std::size_t i = 0; i < tokens->size(); ++i)
        if ((*tokens)[i].letter != 0)
            letters.push_back(i);
    if (letters.size() == 2)
        middle = letters[0] == 0 ? letters[1] : letters[0] + 1;
    else if (!letters.empty() || tokens->size() % 2 != 0)
        return std::nullopt;
    const auto latitude = axis(*tokens, 0, middle, "NS", 90);
    const auto longitude = axis(*tokens, middle, tokens->size(), "EW", 180);
    if (!latitude || !longitude)
        return std::nullopt;
    return Position{.longitude = *longitude, .latitude = *latitude};
}

} // namespace kelvox
