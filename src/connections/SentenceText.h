#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvox {

/// The line from its first `$` or `!` on; the whole line when it holds neither.
[[nodiscard]] std::string_view sentenceFromStart(std::string_view line);

/// Whether the line holds a `$` or `!` at all.
[[nodiscard]] bool hasSentenceStart(std::string_view line);

/// Exclusive or of all characters after the first up to `*` or the end: the NMEA 0183 checksum.
[[nodiscard]] std::uint8_t sentenceChecksum(std::string_view sentence);

enum class AddChecksum { No, Yes };

/// A sentence as it goes over a line: "*hh" added when asked for and not there yet, then CR LF.
/// A line end that the sentence already carries is not doubled.
[[nodiscard]] std::string completeSentence(std::string_view sentence, AddChecksum add);

} // namespace kelvox
