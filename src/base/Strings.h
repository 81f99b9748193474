#pragma once

#include <initializer_list>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kelvox {

/// Texts for the user by key, e.g. "NSAnchorAlarm". A key without a text stands for itself.
///
/// Modules are handed a table and look their keys up when they need them, so that another language
/// shows at once; englishStrings() is the table for programs that speak English only.
class Strings {
public:
    using Arguments = std::span<const std::string_view>;

    Strings() = default;
    Strings(std::initializer_list<std::pair<std::string_view, std::string_view>> texts)
    {
        for (const auto& [key, text] : texts)
            set(key, std::string(text));
    }
    void set(std::string_view key, std::string text)
    {
        m_texts.insert_or_assign(std::string(key), std::move(text));
    }
    /// The texts of another table take the place of those here.
    void overlay(const Strings& other);

    [[nodiscard]] std::string text(std::string_view key) const
    {
        const auto it = m_texts.find(key);
        return it == m_texts.end() ? std::string(key) : it->second;
    }
    /// The text with {0}, {1} … replaced by the arguments; a number without one is left standing.
    [[nodiscard]] std::string text(std::string_view key, Arguments arguments) const;
    [[nodiscard]] std::string text(std::string_view key,
                                   std::initializer_list<std::string_view> arguments) const
    {
        return text(key, Arguments(arguments.begin(), arguments.size()));
    }
    /// The form of the text for a count: "KEY.zero", "KEY.one" or else "KEY.other", the last where
    /// one of the others is missing. {0} is the count, {1} the first argument.
    [[nodiscard]] std::string counted(std::string_view key, std::size_t count,
                                      Arguments arguments = {}) const;

    [[nodiscard]] bool contains(std::string_view key) const { return m_texts.contains(key); }
    [[nodiscard]] const std::map<std::string, std::string, std::less<>>& texts() const
    {
        return m_texts;
    }

private:
    std::map<std::string, std::string, std::less<>> m_texts;
};

/// Every key of the program in English, built in: no missing file can silence an alarm.
[[nodiscard]] const Strings& englishStrings();

} // namespace kelvox
