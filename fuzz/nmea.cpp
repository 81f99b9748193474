// Framing, checksum, fields and every conversion on arbitrary lines.

#include "positioning/NMEA.h"

#include <cstdlib>
#include <string>

using kelvox::NMEA;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string line(NMEA::start(input));
    const bool allowMissing = size % 2 == 0;
    (void)NMEA::checkSum(line, allowMissing);
    (void)NMEA::command(line);
    const kelvox::NmeaFields fields(line);
    std::size_t bytes = 0;
    kelvox::BitBuffer bits;
    for (std::size_t i = 0; i < fields.count() && i < 64; ++i) {
        const auto field = fields[i];
        bytes += field.size() + 1;
        (void)NMEA::number(field);
        (void)NMEA::integer(field);
        (void)NMEA::position(field, fields[i + 1]);
        (void)NMEA::dateFromUtc(field, {});
        (void)NMEA::parseStringHexValue(field, i, 8);
        (void)NMEA::parseUInt64HexValue(field, i);
        if (NMEA::name(field).size() != field.size())
            std::abort();
        for (const char c : field.substr(0, 100))
            bits.append(NMEA::sixBitToBinary(c), 6);
        bits.removeLast(i);
        (void)NMEA::getAsciiBits(bits, i, 42);
        (void)NMEA::getUnsignedBits(bits, i * 7, 30);
    }
    if (fields.count() <= 64 && fields.count() > 0
        && bytes != line.substr(0, line.find('\0')).size() + 1)
        std::abort();
    return 0;
}
