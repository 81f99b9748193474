#pragma once

#include "positioning/BitBuffer.h"

#include <string_view>

namespace kelvox {

/// The fields of a VDM or VDO sentence as they stand in it.
struct AISSentence {
    std::string_view fragmentCount, fragmentNumber, sequentialId, channel, payload, fillBits;
};

/// Puts the fragments of a message together in one single buffer.
///
/// There is one message under way at a time, whatever its channel and talker: a first fragment
/// always begins anew, so of two messages that arrive interleaved the one that began first is
/// lost, and its later fragments are refused by their sequential id. The ids are only compared
/// where both are given. A missing fragment is not noticed: the last one completes the message
/// with what is there.
class AISAssembly {
public:
    enum class Outcome { Refused, Incomplete, Complete };

    /// After Complete, bits() holds the message until clear() or the next sentence.
    Outcome add(const AISSentence& sentence);
    [[nodiscard]] const BitBuffer& bits() const { return m_bits; }
    void clear();

private:
    // Nine fragments of the longest line; a stream that never sends a first fragment adds no more.
    static constexpr std::size_t maximumBits = 16384;
    static constexpr int noId = -1;

    void append(std::string_view payload);

    BitBuffer m_bits;
    int m_sequentialId = noId;
};

} // namespace kelvox
