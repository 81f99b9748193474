#include "devices/GarminPacket.h"

#include <cassert>

namespace kelvox {
namespace {

constexpr std::uint8_t dle = 16;
constexpr std::uint8_t etx = 3;
constexpr std::uint8_t otherEnd = 4; // some receivers end a packet so

/// Two's complement of the low eight bits of the sum of id, size and data.
std::uint8_t checksumOf(std::uint8_t id, std::string_view data)
{
    unsigned sum = id + static_cast<unsigned>(data.size());
    for (const char c : data)
        sum += static_cast<std::uint8_t>(c);
    return static_cast<std::uint8_t>(0U - sum);
}

void appendStuffed(std::string& frame, std::uint8_t byte)
{
    frame.append(byte == dle ? 2 : 1, static_cast<char>(byte));
}

} // namespace

std::string garminFrame(std::uint8_t id, std::string_view data)
{
    assert(data.size() <= GarminPacket::largestData);
    std::string frame = {static_cast<char>(dle), static_cast<char>(id)};
    appendStuffed(frame, static_cast<std::uint8_t>(data.size()));
    for (const char c : data)
        appendStuffed(frame, static_cast<std::uint8_t>(c));
    appendStuffed(frame, checksumOf(id, data));
    frame += {static_cast<char>(dle), static_cast<char>(etx)};
    return frame;
}

Result<GarminPacket> readGarminPacket(const NextByte& nextByte)
{
    const auto silent = [] { return failure(Error::Code::Truncated, "the line fell silent"); };
    // The byte after a 16 is dropped whatever it is: a wrong one shows in the checksum.
    const auto unstuffed = [&]() -> std::optional<std::uint8_t> {
        const auto byte = nextByte();
        return byte == dle && !nextByte() ? std::nullopt : byte;
    };

    const auto start = nextByte();
    if (!start)
        return silent();
    if (*start != dle)
        return failure(Error::Code::BadSyntax, "no packet begins here");
    const auto id = nextByte();
    if (!id)
        return silent();
    const auto size = unstuffed();
    if (!size)
        return silent();
    GarminPacket packet{.id = *id, .data = {}};
    packet.data.reserve(*size);
    while (packet.data.size() < *size) {
        const auto byte = unstuffed();
        if (!byte)
            return silent();
        packet.data += static_cast<char>(*byte);
    }
    const auto checksum = unstuffed();
    const auto last = nextByte();
    const auto end = nextByte();
    if (!checksum || !last || !end)
        return silent();
    if (*checksum != checksumOf(packet.id, packet.data))
        return failure(Error::Code::BadSyntax, "the checksum of a packet is wrong");
    if (*last != dle || (*end != etx && *end != otherEnd))
        return failure(Error::Code::BadSyntax, "a packet does not end where it should");
    return packet;
}

} // namespace kelvox
