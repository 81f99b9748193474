#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kelvox {

/// A small report of a crash in the user's state folder, for the next start and for the developers.
class CrashReport {
public:
    /// From here on a fatal signal writes the report and then ends the program as it would have.
    /// @param version of the program, the report's first line
    static void install(const std::filesystem::path& folder, const std::string& version);
    /// The report of a crash since the last call, kept under a name of its own; nothing without.
    [[nodiscard]] static std::optional<std::filesystem::path>
    takeLast(const std::filesystem::path& folder);
};

} // namespace kelvox
