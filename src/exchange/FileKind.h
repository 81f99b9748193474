#pragma once

#include <filesystem>
#include <string_view>

namespace kelvox {

/// Whether the path ends in the extension, given in capitals with its dot, whatever its case.
[[nodiscard]] inline bool hasExtension(const std::filesystem::path& path,
                                       std::string_view extension)
{
    std::string own = path.extension().string();
    for (char& c : own)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return own == extension;
}

} // namespace kelvox
