#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

/// Cuts a stream of bytes into lines. Holds at most one read and one unfinished line, whatever
/// comes in.
class LineBuffer {
public:
    /// @param longestLine a longer line is delivered in pieces of this size
    explicit LineBuffer(std::size_t longestLine, char terminator = '\n')
        : m_longest(longestLine)
        , m_terminator(terminator)
    {
    }
    void append(std::string_view bytes)
    {
        m_bytes.erase(0, m_start);
        m_start = 0;
        m_bytes.append(bytes);
    }
    /// The next line with its terminator, or a full piece of an overlong one; nothing while the
    /// line is unfinished. Valid until the next append().
    [[nodiscard]] std::optional<std::string_view> next()
    {
        const auto rest = std::string_view(m_bytes).substr(m_start);
        const auto window = rest.substr(0, m_longest);
        const auto end = window.find(m_terminator);
        if (end == std::string_view::npos && window.size() < m_longest)
            return std::nullopt;
        const auto line = window.substr(0, end == std::string_view::npos ? end : end + 1);
        m_start += line.size();
        return line;
    }
    /// What is left of an unfinished line, taken out.
    [[nodiscard]] std::string takeRest()
    {
        auto rest = m_bytes.substr(m_start);
        clear();
        return rest;
    }
    void clear()
    {
        m_bytes.clear();
        m_start = 0;
    }
    [[nodiscard]] std::size_t pending() const { return m_bytes.size() - m_start; }

private:
    std::size_t m_longest;
    char m_terminator;
    std::string m_bytes;
    std::size_t m_start = 0;
};

} // namespace kelvox
