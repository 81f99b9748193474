#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvox {

/// The comma-separated fields of a checked sentence, split once; field 0 is the address.
///
/// A view: the sentence must outlive it. Reads up to the first NUL, which NMEA::checkSumValid()
/// has put over the star, so that the last field carries neither star nor line end.
class NmeaFields {
public:
    explicit NmeaFields(std::string_view sentence);
    [[nodiscard]] std::size_t count() const { return m_count; }
    /// Empty when the sentence has no such field.
    [[nodiscard]] std::string_view operator[](std::size_t index) const;

private:
    // More fields than any defined sentence has; later ones are found by searching on.
    static constexpr std::size_t inlineFields = 32;
    std::string_view m_text;
    std::array<std::uint32_t, inlineFields + 1>
        m_start; // where each field begins; one past the end
    std::size_t m_count = 0;
};

} // namespace kelvox
