#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace kelvox {

/// A file or folder of real data below the folder that KELVOX_DATA names; nothing when the variable
/// is not set or the file is not there. A case that wants it says GTEST_SKIP() without.
inline std::optional<std::filesystem::path> realData(const std::filesystem::path& below)
{
    const char* folder = std::getenv("KELVOX_DATA");
    if (!folder)
        return std::nullopt;
    const auto path = std::filesystem::path(folder) / below;
    return std::filesystem::exists(path) ? std::optional(path) : std::nullopt;
}

} // namespace kelvox
