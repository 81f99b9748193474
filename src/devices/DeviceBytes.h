#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kelvox {

/// Builds a binary record, low byte first, fields one after the other without gaps.
class DeviceRecord {
public:
    template <typename Number> DeviceRecord& number(Number value)
    {
        static_assert(std::is_integral_v<Number>);
        auto bits = static_cast<std::make_unsigned_t<Number>>(value);
        for (std::size_t i = 0; i < sizeof(Number); ++i) {
            m_bytes += static_cast<char>(bits & 0xFFU);
            bits = static_cast<decltype(bits)>(static_cast<std::uint64_t>(bits) >> 8U);
        }
        return *this;
    }
    DeviceRecord& real(float value) { return number(std::bit_cast<std::uint32_t>(value)); }
    DeviceRecord& fill(std::size_t count, unsigned char byte)
    {
        m_bytes.append(count, static_cast<char>(byte));
        return *this;
    }
    /// Filled with blanks, or cut, to the width.
    DeviceRecord& text(std::string_view text, std::size_t width)
    {
        m_bytes += text.substr(0, width);
        return fill(width - std::min(width, text.size()), ' ');
    }
    DeviceRecord& endedText(std::string_view text) ///< and a NUL
    {
        m_bytes += text;
        return fill(1, 0);
    }
    DeviceRecord& fillTo(std::size_t size)
    {
        return fill(size - std::min(size, m_bytes.size()), 0);
    }
    [[nodiscard]] std::string take() { return std::move(m_bytes); }

private:
    std::string m_bytes;
};

/// Reads the fields of such a record. Beyond the end everything is zero and isWhole() false.
class DeviceRecordReader {
public:
    explicit DeviceRecordReader(std::string_view bytes)
        : m_rest(bytes)
    {
    }
    template <typename Number> Number number()
    {
        std::uint64_t bits = 0;
        const auto bytes = take(sizeof(Number));
        for (std::size_t i = bytes.size(); i-- > 0;)
            bits = bits << 8U | static_cast<unsigned char>(bytes[i]);
        return static_cast<Number>(bits);
    }
    float real() { return std::bit_cast<float>(number<std::uint32_t>()); }
    std::string_view text(std::size_t width) { return take(width); }
    /// Up to the next NUL, or to the end where there is none.
    std::string_view endedText()
    {
        const auto text = m_rest.substr(0, m_rest.find('\0'));
        m_rest.remove_prefix(std::min(text.size() + 1, m_rest.size()));
        return text;
    }
    void skip(std::size_t count) { take(count); }
    [[nodiscard]] bool isWhole() const { return m_isWhole; }

private:
    std::string_view take(std::size_t count)
    {
        if (count > m_rest.size()) {
            m_isWhole = false;
            m_rest = {};
            return {};
        }
        const auto bytes = m_rest.substr(0, count);
        m_rest.remove_prefix(count);
        return bytes;
    }
    std::string_view m_rest;
    bool m_isWhole = true;
};

} // namespace kelvox
