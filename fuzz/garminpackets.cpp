// Garmin packets: any bytes end; what is read, written again, reads the same.

#include "devices/GarminPacket.h"

#include <cstdlib>

using namespace kelvox;

namespace {
Result<GarminPacket> readFrom(std::string_view bytes, std::size_t& at)
{
    return readGarminPacket([&]() -> std::optional<std::uint8_t> {
        return at < bytes.size() ? std::optional(static_cast<std::uint8_t>(bytes[at++]))
                                 : std::nullopt;
    });
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    for (std::size_t at = 0; at < input.size();) {
        const auto before = at;
        const auto packet = readFrom(input, at);
        if (at == before)
            std::abort(); // it must get on
        if (!packet)
            continue;
        std::size_t again = 0;
        const auto frame = garminFrame(packet->id, packet->data);
        const auto copy = readFrom(frame, again);
        if (!copy || *copy != *packet || again != frame.size())
            std::abort();
    }
    // As data of a packet they come through whole.
    const auto payload = input.substr(0, GarminPacket::largestData);
    const auto frame = garminFrame(35, payload);
    std::size_t at = 0;
    const auto packet = readFrom(frame, at);
    if (!packet || packet->data != payload)
        std::abort();
    return 0;
}
