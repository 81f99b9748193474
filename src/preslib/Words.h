#pragma once

#include "preslib/Diagnostics.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox::preslib {

/// A line of source cut at blanks. Text in double quotes is one word without the quotes; from a
/// hash sign on the line is comment.
class Words {
public:
    explicit Words(std::string_view line);

    [[nodiscard]] bool isAtEnd() const { return m_next >= m_words.size(); }
    /// The next word, which stays the next; empty at the end.
    [[nodiscard]] std::string peek() const { return isAtEnd() ? std::string() : m_words[m_next]; }
    std::string next() { return isAtEnd() ? std::string() : m_words[m_next++]; }
    /// Takes the next word if it is this one.
    bool skip(std::string_view word);
    /// All words that are left, a blank between.
    std::string rest();

private:
    std::vector<std::string> m_words;
    std::size_t m_next = 0;
};

[[nodiscard]] std::optional<int> wholeNumber(std::string_view text);
[[nodiscard]] std::optional<double> decimalNumber(std::string_view text);

/// Calls use(place, text) for each line of the text, the first being line 1.
template <typename Use>
void forEachLine(const std::filesystem::path& file, std::string_view text, Use use)
{
    for (int line = 1; !text.empty(); ++line) {
        const auto end = text.find('\n');
        std::string_view content = text.substr(0, end);
        if (!content.empty() && content.back() == '\r')
            content.remove_suffix(1);
        use(Place{file, line}, content);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

} // namespace kelvox::preslib
