#pragma once

#include "connections/SentenceText.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// Writes AIS messages bit by bit, for tests and benchmarks.
class AISWriter {
public:
    AISWriter& add(std::int64_t value, unsigned count)
    {
        for (unsigned bit = count; bit > 0; --bit)
            m_bits.push_back(bit <= 64 && (value >> (bit - 1) & 1));
        return *this;
    }
    /// Text in the six-bit alphabet, padded with "@".
    AISWriter& add(std::string_view text, unsigned characters)
    {
        for (unsigned i = 0; i < characters; ++i)
            add(NMEA::asciiToBinary(i < text.size() ? text[i] : '@'), 6);
        return *this;
    }
    [[nodiscard]] std::string payload() const
    {
        std::string text;
        for (std::size_t at = 0; at < m_bits.size(); at += 6) {
            std::uint8_t value = 0;
            for (std::size_t bit = at; bit < at + 6; ++bit)
                value = static_cast<std::uint8_t>(value << 1
                                                  | (bit < m_bits.size() && m_bits[bit] ? 1 : 0));
            text += NMEA::binaryToSixBit(value);
        }
        return text;
    }
    /// The message in one sentence on channel A.
    [[nodiscard]] std::string sentence(std::string_view address = "AIVDM") const
    {
        const auto fill = (6 - m_bits.size() % 6) % 6;
        return checked(fmt::format("!{},1,1,,A,{},{}", address, payload(), fill));
    }
    /// A sentence with its checksum and line end.
    [[nodiscard]] static std::string checked(const std::string& text)
    {
        return completeSentence(text, AddChecksum::Yes);
    }

private:
    std::vector<bool> m_bits;
};

/// A type 1 or 18 report in the raw units of the message; the defaults are "not available".
struct RawReport {
    std::uint32_t mmsi = 0;
    int longitude = 108'600'000; ///< 1/10000 minute
    int latitude = 54'600'000;
    int speed = 1023; ///< 0.1 knots
    int course = 3600; ///< 0.1 degrees
    int heading = 511;

    [[nodiscard]] AISWriter classA(int type = 1) const
    {
        AISWriter writer;
        writer.add(type, 6).add(0, 2).add(mmsi, 30).add(0, 12).add(speed, 10).add(0, 1);
        writer.add(longitude, 28).add(latitude, 27).add(course, 12).add(heading, 9).add(0, 31);
        return writer;
    }
    [[nodiscard]] AISWriter classB() const
    {
        AISWriter writer;
        writer.add(18, 6).add(0, 2).add(mmsi, 30).add(0, 8).add(speed, 10).add(0, 1);
        writer.add(longitude, 28).add(latitude, 27).add(course, 12).add(heading, 9).add(0, 35);
        return writer;
    }
    /// Raw units of a number of degrees, for places given by hand.
    [[nodiscard]] static int raw(double degrees) { return static_cast<int>(degrees * 600'000); }
};

} // namespace kelvox
