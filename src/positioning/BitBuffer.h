#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvox {

/// An ordered row of bits, 64 to a word, first bit first: the payload of an AIS message.
class BitBuffer {
public:
    /// Appends the lowest `count` bits of value (at most 64), most significant first.
    void append(std::uint64_t value, unsigned count);
    /// Removes bits from the end, never below empty.
    void removeLast(std::size_t count);
    void clear()
    {
        m_words.clear();
        m_size = 0;
    }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool isEmpty() const { return m_size == 0; }
    /// `count` bits from `start`, most significant first; 0 when they are not all there, or when
    /// count is 0 or above 64.
    [[nodiscard]] std::uint64_t bits(std::size_t start, std::size_t count) const;

private:
    std::vector<std::uint64_t> m_words; // bits beyond m_size in the last word are 0
    std::size_t m_size = 0;
};

} // namespace kelvox
