#pragma once

#include <fmt/format.h>

#include <string>
#include <utility>
#include <vector>

namespace kelvox::raw {

/// ISO/IEC 8211 bytes put together by hand, so that readers are not tested against our own writer.
using Fields = std::vector<std::pair<std::string, std::string>>; ///< tag of 4 characters, bytes

inline std::string directory(const Fields& fields, int lengthDigits, int positionDigits)
{
    std::string text;
    std::size_t position = 0;
    for (const auto& [tag, bytes] : fields) {
        text += fmt::format("{}{:0{}}{:0{}}", tag, bytes.size(), lengthDigits, position,
                            positionDigits);
        position += bytes.size();
    }
    return text + '\x1e';
}

inline std::string area(const Fields& fields)
{
    std::string text;
    for (const auto& field : fields)
        text += field.second;
    return text;
}

/// A data descriptive record; each field's bytes are its description.
inline std::string definitions(const Fields& fields)
{
    const std::string entries = directory(fields, 3, 4);
    const std::string body = area(fields);
    return fmt::format("{:05}3LE1 09{:05} ! 3404", 24 + entries.size() + body.size(),
                       24 + entries.size())
        + entries + body;
}

/// The description of a field: structure and type code, labels and formats.
inline std::string description(const std::string& codes, const std::string& labels,
                               const std::string& formats)
{
    return codes + "00;&   name\x1f" + labels + '\x1f' + formats + '\x1e';
}

/// A data record. The identifier is 'D', or 'R' where the following ones reuse its leader.
inline std::string record(const Fields& fields, char identifier = 'D')
{
    const std::string entries = directory(fields, 4, 4);
    const std::string body = area(fields);
    return fmt::format("{:05} {}     {:05}   4404", 24 + entries.size() + body.size(), identifier,
                       24 + entries.size())
        + entries + body;
}

inline std::string littleEndian(long long value, int bytes)
{
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

} // namespace kelvox::raw
