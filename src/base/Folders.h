#pragma once

#include <filesystem>

namespace kelvox {

/// Where the program's own files and the user's lie (XDG base directories). None is made here.
namespace folders {
/// Resources shipped with the program: beside its build, or in the share folder it was installed
/// to.
[[nodiscard]] std::filesystem::path applicationResources();
/// The folder of the running program.
[[nodiscard]] std::filesystem::path program();
[[nodiscard]] std::filesystem::path userData();
[[nodiscard]] std::filesystem::path userConfiguration();
[[nodiscard]] std::filesystem::path userCache();
[[nodiscard]] std::filesystem::path userState();
} // namespace folders

} // namespace kelvox
