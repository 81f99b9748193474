#include "connections/SirfSetup.h"

#include "connections/SentenceText.h"

#include <fmt/format.h>

#include <array>

namespace kelvox {

std::string sirfToNmea(int bitsPerSecond)
{
    // Message 129: mode (2: debug messages stay as they are), then a rate in seconds and a checksum
    // flag each for GGA, GLL, GSA, GSV, RMC, VTG, MSS, one unused, ZDA, one unused; the bit rate.
    const std::array<int, 24> payload = {0x81,
                                         2,
                                         1,
                                         1,
                                         1,
                                         1,
                                         1,
                                         1,
                                         5,
                                         1,
                                         1,
                                         1,
                                         1,
                                         1,
                                         0,
                                         1,
                                         0,
                                         0,
                                         0,
                                         1,
                                         0,
                                         0,
                                         bitsPerSecond >> 8,
                                         bitsPerSecond};
    std::string frame = {'\xA0', '\xA2', 0, static_cast<char>(payload.size())};
    int sum = 0;
    for (const int value : payload) {
        frame += static_cast<char>(value & 0xFF);
        sum = (sum + (value & 0xFF)) & 0x7FFF;
    }
    frame += {static_cast<char>(sum >> 8), static_cast<char>(sum & 0xFF), '\xB0', '\xB3'};
    return frame;
}

std::string sirfToBinary(int bitsPerSecond)
{
    return completeSentence(fmt::format("$PSRF100,0,{},8,1,0", bitsPerSecond), AddChecksum::Yes);
}

} // namespace kelvox
