#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvox {

/// The bytes of a chart file, undoing the constant that older files add to each of them.
class ChartBytes {
public:
    ChartBytes() = default;
    explicit ChartBytes(std::span<const char> bytes, std::uint8_t added = 0)
        : m_bytes(bytes)
        , m_added(added)
    {
    }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] std::uint8_t operator[](std::size_t at) const
    {
        return static_cast<std::uint8_t>(static_cast<std::uint8_t>(m_bytes[at]) - m_added);
    }
    /// Four bytes, most significant first.
    [[nodiscard]] std::uint32_t bigEndian(std::size_t at) const
    {
        return std::uint32_t{(*this)[at]} << 24 | std::uint32_t{(*this)[at + 1]} << 16
            | std::uint32_t{(*this)[at + 2]} << 8 | std::uint32_t{(*this)[at + 3]};
    }

private:
    std::span<const char> m_bytes;
    std::uint8_t m_added = 0;
};

} // namespace kelvox
