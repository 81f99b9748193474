#include "ais/AISAssembly.h"

#include "positioning/NMEA.h"

#include <algorithm>

namespace kelvox {

void AISAssembly::clear()
{
    m_bits.clear();
    m_sequentialId = noId;
}

void AISAssembly::append(std::string_view payload)
{
    constexpr std::size_t charactersAtOnce = 10; // 60 bits
    while (!payload.empty() && m_bits.size() < maximumBits) {
        const auto count = std::min(payload.size(), charactersAtOnce);
        std::uint64_t bits = 0;
        for (const char c : payload.substr(0, count))
            bits = bits << 6 | NMEA::sixBitToBinary(c);
        m_bits.append(bits, static_cast<unsigned>(count * 6));
        payload.remove_prefix(count);
    }
}

AISAssembly::Outcome AISAssembly::add(const AISSentence& sentence)
{
    if (sentence.payload.empty() || sentence.fillBits.empty())
        return Outcome::Refused;
    const int count = NMEA::integer(sentence.fragmentCount);
    const int number = NMEA::integer(sentence.fragmentNumber);
    if (count < 1 || count > 9 || number < 1 || number > 9)
        return Outcome::Refused;

    const int id = sentence.sequentialId.empty() ? noId : NMEA::integer(sentence.sequentialId);
    if (number == 1) {
        m_bits.clear();
        m_sequentialId = id;
    } else if (id != noId && m_sequentialId != noId && id != m_sequentialId) {
        return Outcome::Refused;
    }

    append(sentence.payload);
    m_bits.removeLast(static_cast<std::size_t>(std::max(NMEA::integer(sentence.fillBits), 0)));
    return number == count ? Outcome::Complete : Outcome::Incomplete;
}

} // namespace kelvox
