#include "positioning/BitBuffer.h"

#include <algorithm>

namespace kelvox {

void BitBuffer::append(std::uint64_t value, unsigned count)
{
    if (count == 0)
        return;
    count = std::min(count, 64U);
    value <<= 64 - count;
    const auto used = static_cast<unsigned>(m_size % 64);
    if (used == 0) {
        m_words.push_back(value);
    } else {
        m_words.back() |= value >> used;
        if (used + count > 64)
            m_words.push_back(value << (64 - used));
    }
    m_size += count;
}

void BitBuffer::removeLast(std::size_t count)
{
    m_size -= std::min(count, m_size);
    m_words.resize((m_size + 63) / 64);
    if (m_size % 64 != 0)
        m_words.back() &= ~std::uint64_t{0} << (64 - m_size % 64);
}

std::uint64_t BitBuffer::bits(std::size_t start, std::size_t count) const
{
    if (count == 0 || count > 64 || start > m_size || count > m_size - start)
        return 0;
    const auto word = start / 64;
    const auto shift = start % 64;
    auto value = m_words[word] << shift;
    if (shift + count > 64)
        value |= m_words[word + 1] >> (64 - shift);
    return value >> (64 - count);
}

} // namespace kelvox
