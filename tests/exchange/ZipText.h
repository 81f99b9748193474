#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// A member of an archive as its writer claims it to be.
struct ZipMember {
    std::string name;
    std::string content;
    bool isLink = false; ///< then the content is where it leads
};

/// An archive without compression. Names are written as they are, also ones that no honest program
/// would write.
inline std::string zipText(const std::vector<ZipMember>& members)
{
    std::string out;
    const auto put = [](std::string& to, std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            to += static_cast<char>(value >> (8 * i) & 0xFF);
    };
    const auto checksum = [](std::string_view bytes) {
        std::uint32_t crc = 0xFFFFFFFF;
        for (const char c : bytes) {
            crc ^= static_cast<unsigned char>(c);
            for (int bit = 0; bit < 8; ++bit)
                crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
        }
        return ~crc;
    };
    std::string directory;
    for (const auto& member : members) {
        std::string common; // of both headers
        put(common, 20, 2); // version
        put(common, 0, 2); // flags
        put(common, 0, 2); // stored
        put(common, 0x5B000000 + 0x210000, 4); // a date
        put(common, checksum(member.content), 4);
        put(common, static_cast<std::uint32_t>(member.content.size()), 4);
        put(common, static_cast<std::uint32_t>(member.content.size()), 4);
        put(common, static_cast<std::uint32_t>(member.name.size()), 2);
        put(common, 0, 2); // extra field
        const auto place = static_cast<std::uint32_t>(out.size());
        out += "PK\x03\x04" + common + member.name + member.content;
        directory += "PK\x01\x02";
        put(directory, 3U << 8U | 20U, 2); // made on Unix, so that modes count
        directory += common;
        put(directory, 0, 4); // comment, disk
        put(directory, 0, 2);
        put(directory, (member.isLink ? 0120777U : 0100644U) << 16U, 4);
        put(directory, place, 4);
        directory += member.name;
    }
    const auto start = static_cast<std::uint32_t>(out.size());
    out += directory + "PK\x05\x06";
    put(out, 0, 4);
    put(out, static_cast<std::uint32_t>(members.size()), 2);
    put(out, static_cast<std::uint32_t>(members.size()), 2);
    put(out, static_cast<std::uint32_t>(directory.size()), 4);
    put(out, start, 4);
    put(out, 0, 2);
    return out;
}

} // namespace kelvox
