#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvox {

/// A consumer's table from command ("RMC"; at most 8 characters) to its handler entry.
///
/// Built once, then only read: look-ups from any thread. Keys are packed into one word each, so
/// that finding one of a dozen commands costs a few comparisons.
template <typename Handler> class SentenceTable {
public:
    SentenceTable(std::initializer_list<std::pair<std::string_view, Handler>> entries)
    {
        for (const auto& [key, handler] : entries) {
            m_keys.push_back(packed(key).value_or(0));
            m_handlers.push_back(handler);
        }
    }
    /// Null when the key is not in the table.
    [[nodiscard]] const Handler* find(std::string_view key) const
    {
        const auto word = packed(key);
        if (!word)
            return nullptr;
        const auto it = std::find(m_keys.begin(), m_keys.end(), *word);
        return it == m_keys.end() ? nullptr : &m_handlers[it - m_keys.begin()];
    }

private:
    static std::optional<std::uint64_t> packed(std::string_view key)
    {
        if (key.empty() || key.size() > 8)
            return std::nullopt;
        std::uint64_t word = 0;
        for (const char c : key)
            word = word << 8 | static_cast<unsigned char>(c);
        return word;
    }

    std::vector<std::uint64_t> m_keys;
    std::vector<Handler> m_handlers;
};

} // namespace kelvox
