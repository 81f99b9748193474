#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace kelvox {

/// Texts for the user by key, e.g. "NSAnchorAlarm". A key without a text stands for itself.
///
/// Modules look their keys up here; who owns the table loads the user's language. A module that
/// brings keys of its own offers its English texts as defaults with add().
class Strings {
public:
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
    /// Adds the texts of another table whose keys are not known yet.
    void add(const Strings& defaults)
    {
        m_texts.insert(defaults.m_texts.begin(), defaults.m_texts.end());
    }
    [[nodiscard]] std::string text(std::string_view key) const
    {
        const auto it = m_texts.find(key);
        return it == m_texts.end() ? std::string(key) : it->second;
    }

private:
    std::map<std::string, std::string, std::less<>> m_texts;
};

} // namespace kelvox
