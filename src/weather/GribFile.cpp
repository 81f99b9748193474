#include "weather/GribFile.h"

#include "base/File.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace kelvox {

namespace {
constexpr std::size_t sizeLimit = std::size_t{1} << 30;

/// Starts bunzip2 without a shell, so that no character of a path means anything.
Result<pid_t> startBunzip2(const char* option, const std::filesystem::path& path, int output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (output >= 0)
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    std::string program = "bunzip2";
    std::string flag = option;
    std::string endOfOptions = "--";
    std::string file = path.string();
    char* arguments[] = {program.data(), flag.data(), endOfOptions.data(), file.data(), nullptr};
    pid_t child = 0;
    const int error =
        ::posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return failure(Error::Code::CannotOpen, path.string() + ": cannot run bunzip2");
    return child;
}

bool endedWell(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Result<std::string> unpackInMemory(const std::filesystem::path& path)
{
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        return failure(Error::Code::CannotOpen, path.string() + ": no pipe to bunzip2");
    const auto child = startBunzip2("-c", path, pipe[1]);
    ::close(pipe[1]);
    std::string bytes;
    bool tooLarge = false;
    if (child) {
        std::array<char, 65536> block{};
        for (;;) {
            const ssize_t got = ::read(pipe[0], block.data(), block.size());
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            bytes.append(block.data(), static_cast<std::size_t>(got));
            if ((tooLarge = bytes.size() > sizeLimit))
                break;
        }
    }
    ::close(pipe[0]);
    if (!child)
        return tl::unexpected(child.error());
    if (tooLarge)
        ::kill(*child, SIGTERM);
    const bool good = endedWell(*child);
    if (tooLarge)
        return failure(Error::Code::OutOfRange, path.string() + ": too large when unpacked");
    if (!good && bytes.empty()) // of a damaged file what came before the damage is kept
        return failure(Error::Code::BadSyntax, path.string() + ": cannot be unpacked");
    return bytes;
}
} // namespace

bool isBzip2(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return extension == ".BZ2";
}

Result<std::string> readGribFile(const std::filesystem::path& path)
{
    if (!isBzip2(path))
        return readFile(path, sizeLimit);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return failure(Error::Code::CannotOpen, path.string() + ": no such file");
    return unpackInMemory(path);
}

Result<std::filesystem::path> unpackInPlace(const std::filesystem::path& path)
{
    const auto child = startBunzip2("-f", path, -1);
    if (!child)
        return tl::unexpected(child.error());
    auto unpacked = path;
    unpacked.replace_extension();
    if (!endedWell(*child) || !std::filesystem::exists(unpacked))
        return failure(Error::Code::BadSyntax, path.string() + ": cannot be unpacked");
    return unpacked;
}

} // namespace kelvox
