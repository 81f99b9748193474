#pragma once

#include <string>
#include <string_view>

namespace kelvox {

/// The text with Latin, Greek and Cyrillic capitals made small. UTF-8.
[[nodiscard]] std::string foldedCase(std::string_view text);

/// Whether the name, or else the description, begins with the text, or contains it anywhere where
/// the text has two characters or more; without regard to case. An empty text matches everything.
class TextSearch {
public:
    explicit TextSearch(std::string_view text);
    [[nodiscard]] bool matches(std::string_view name, std::string_view description = {}) const;

private:
    std::string m_text;
    bool m_anywhere; // a single character is looked for at the beginning only
};

/// Order of names for people: without regard to case, numbers by their value ("Buoy 4" before
/// "Buoy 10"). Equal only for equal texts.
[[nodiscard]] bool naturalLess(std::string_view a, std::string_view b);

} // namespace kelvox
