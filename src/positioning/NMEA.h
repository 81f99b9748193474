#pragma once

#include "base/NoValue.h"
#include "positioning/BitBuffer.h"
#include "positioning/NmeaFields.h"
#include "positioning/SentenceTable.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvox {

/// Framing, checksums, field access and conversions of NMEA 0183, and the six-bit helpers of AIS.
/// Stateless; any thread.
///
/// A raw sentence is one line as read, line end included. Views returned point into it.
class NMEA {
public:
    enum class Checksum { Valid, NoStart, Missing, Incomplete, Wrong };

    /// The bytes from the first `$` or `!` on; unchanged when there is none.
    [[nodiscard]] static std::string_view start(std::string_view raw);

    /// Tests the checksum and cuts the sentence: its `*` (without one: its CR) becomes NUL.
    /// Without a `*` the sentence is valid only with allowMissing and a CR. Trailing bytes after
    /// the two digits are ignored; digits of either case are taken.
    [[nodiscard]] static Checksum checkSum(std::span<char> raw, bool allowMissing);
    [[nodiscard]] static bool checkSumValid(std::span<char> raw, bool allowMissing)
    {
        return checkSum(raw, allowMissing) == Checksum::Valid;
    }

    /// The characters [offset, offset + length); nothing unless more bytes follow.
    [[nodiscard]] static std::optional<std::string_view>
    address(std::string_view raw, std::size_t offset, std::size_t length);
    [[nodiscard]] static std::optional<std::string_view> prefix(std::string_view raw);
    [[nodiscard]] static std::optional<std::string_view> talker(std::string_view raw);
    [[nodiscard]] static std::optional<std::string_view> command(std::string_view raw);

    template <typename Handler>
    [[nodiscard]] static const Handler* nmeaWithData(std::string_view raw,
                                                     const SentenceTable<Handler>& table)
    {
        return nmeaWithKey(command(raw), table);
    }
    template <typename Handler>
    [[nodiscard]] static const Handler* nmeaWithKey(std::optional<std::string_view> key,
                                                    const SentenceTable<Handler>& table)
    {
        return key ? table.find(*key) : nullptr;
    }
    /// The same look-up by an NMEA 2000 parameter group number.
    template <typename Handler>
    [[nodiscard]] static const Handler* nmeaWithPGN(std::uint32_t number,
                                                    const SentenceTable<Handler>& table)
    {
        return table.find(std::to_string(number));
    }

    /// Component `index` of the NUL-terminated text; NmeaFields is quicker for several.
    [[nodiscard]] static std::optional<std::string_view> parse(std::string_view raw,
                                                               std::size_t index);
    [[nodiscard]] static std::size_t count(std::string_view raw);

    /// Leading number of a field, the rest ignored: 0 when there is none. Nothing for an empty
    /// field or one beyond single precision.
    [[nodiscard]] static std::optional<float> number(std::string_view field);
    /// Leading whole number of a field, limited to what an int holds; 0 when there is none.
    [[nodiscard]] static int integer(std::string_view field);

    /// Hexadecimal digits at the offset; 0 when the text is too short. The 16- and 32-bit forms
    /// swap the bytes, the text being little-endian; the 64-bit form does not, on purpose.
    [[nodiscard]] static std::uint8_t parseUInt8HexValue(std::string_view text, std::size_t offset);
    [[nodiscard]] static std::uint16_t parseUInt16HexValue(std::string_view text,
                                                           std::size_t offset);
    [[nodiscard]] static std::uint32_t parseUInt32HexValue(std::string_view text,
                                                           std::size_t offset);
    [[nodiscard]] static std::uint64_t parseUInt64HexValue(std::string_view text,
                                                           std::size_t offset);
    /// `count` bytes of two digits each; keeps the printable ones except `@`.
    [[nodiscard]] static std::string parseStringHexValue(std::string_view text, std::size_t offset,
                                                         std::size_t count);

    /// Degrees from ddmm.mmmm and N, S, E or W, in single precision on purpose: near 180° one
    /// step is 1.5e-5°. noCoordinate for anything malformed. The range is not checked.
    [[nodiscard]] static float position(std::string_view field, std::string_view hemisphere);
    /// A waypoint or route name with every character outside letters, digits, " +-" made "-".
    [[nodiscard]] static std::string name(std::string_view name);

    /// AIS payload character to its six bits and back.
    [[nodiscard]] static std::uint8_t sixBitToBinary(char c);
    [[nodiscard]] static char binaryToSixBit(std::uint8_t value);
    /// Six bits to the AIS text character and back; a lower-case letter counts as its capital.
    [[nodiscard]] static char binaryToAscii(std::uint8_t value);
    [[nodiscard]] static std::uint8_t asciiToBinary(char c);
    /// 0 when start + count exceeds the buffer or count is 0.
    [[nodiscard]] static std::uint32_t getUnsignedBits(const BitBuffer& bits, std::size_t start,
                                                       std::size_t count);
    /// Six bits a character, "@" made blank, white space trimmed from both ends; empty when the
    /// field is not all there.
    [[nodiscard]] static std::string getAsciiBits(const BitBuffer& bits, std::size_t start,
                                                  std::size_t count);

    /// The UTC day of `now` with the time hhmmss[.sss]; nothing for a malformed time.
    [[nodiscard]] static std::optional<std::chrono::system_clock::time_point>
    dateFromUtc(std::string_view utc, std::chrono::system_clock::time_point now);
    /// "hh:mm:ss" in the time zone of this machine; empty for a malformed time.
    [[nodiscard]] static std::string formatUtcToLocal(std::string_view utc,
                                                      std::chrono::system_clock::time_point now);
};

} // namespace kelvox
