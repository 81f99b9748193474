#include "base/Folders.h"

#include <cstdlib>

namespace kelvox::folders {

namespace {
/// The variable's folder where it is absolute, as the XDG rules want it, else one below home.
std::filesystem::path xdg(const char* variable, const char* belowHome)
{
    const char* value = std::getenv(variable);
    std::filesystem::path base = value ? value : "";
    if (!base.is_absolute()) {
        const char* home = std::getenv("HOME");
        base = std::filesystem::path(home ? home : "/") / belowHome;
    }
    return base / "kelvox";
}
} // namespace

std::filesystem::path program()
{
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

std::filesystem::path applicationResources()
{
    return program().parent_path() / "share" / "kelvox";
}

std::filesystem::path userData()
{
    return xdg("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path userConfiguration()
{
    return xdg("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path userCache()
{
    return xdg("XDG_CACHE_HOME", ".cache");
}

std::filesystem::path userState()
{
    return xdg("XDG_STATE_HOME", ".local/state");
}

} // namespace kelvox::folders
