#pragma once

#include <iterator>

namespace kelvox {

/// A range seen from its end to its beginning, for range-based loops. The range must outlive it.
/// (std::views::reverse of GCC 12's library cannot be parsed by clang 14, which lints this code.)
template <typename Range> class Reversed {
public:
    explicit Reversed(Range& range)
        : m_range(range)
    {
    }
    [[nodiscard]] auto begin() const { return std::rbegin(m_range); }
    [[nodiscard]] auto end() const { return std::rend(m_range); }

private:
    Range& m_range;
};

} // namespace kelvox
