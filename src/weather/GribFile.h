#pragma once

#include "base/Result.h"

#include <filesystem>
#include <stop_token>
#include <string>

namespace kelvox {

/// Whether the extension is "BZ2" in any case.
[[nodiscard]] bool isBzip2(const std::filesystem::path& path);

/// The bytes of a weather file; a bzip2 file is unpacked in memory by the system's bunzip2 and left
/// as it is. Refuses what is larger than 1 GiB unpacked. Gives up once a stop is requested.
[[nodiscard]] Result<std::string> readGribFile(const std::filesystem::path& path,
                                               const std::stop_token& stop = {});

/// Runs "bunzip2 -f" on the file, which then lies unpacked beside its old place. Returns the new
/// path: the old one less its extension. A stop ends the command, which then leaves the file as it
/// was.
[[nodiscard]] Result<std::filesystem::path> unpackInPlace(const std::filesystem::path& path,
                                                          const std::stop_token& stop = {});

} // namespace kelvox
