#include "weather/GribFile.h"

#include "base/RegularFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

/// Waits for the command; a stop ends it.
bool endedWell(pid_t child, const std::stop_token& stop)
{
    {
        const std::stop_callback end(stop, [child] { ::kill(child, SIGTERM); });
        // Its number is not given to another process before it is waited for below.
        siginfo_t info{};
        while (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT) < 0)
            if (errno != EINTR)
                break;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

tl::unexpected<Error> cancelled(const std::filesystem::path& path)
{
    return failure(Error::Code::Cancelled, path.string() + ": cancelled");
}

/// Reads to the end, to the limit or to the stop.
void readPipe(int pipe, const std::stop_token& stop, std::string& bytes)
{
    std::array<char, 65536> block{};
    while (!stop.stop_requested() && bytes.size() <= sizeLimit) {
        const ssize_t got = ::read(pipe, block.data(), block.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return;
        bytes.append(block.data(), static_cast<std::size_t>(got));
    }
}

Result<std::string> unpackInMemory(const std::filesystem::path& path, const std::stop_token& stop)
{
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        return failure(Error::Code::CannotOpen, path.string() + ": no pipe to bunzip2");
    const auto child = startBunzip2("-c", path, pipe[1]);
    ::close(pipe[1]);
    std::string bytes;
    if (child)
        readPipe(pipe[0], stop, bytes);
    ::close(pipe[0]);
    if (!child)
        return tl::unexpected(child.error());
    const bool tooLarge = bytes.size() > sizeLimit;
    if (tooLarge || stop.stop_requested())
        ::kill(*child, SIGTERM);
    const bool good = endedWell(*child, stop);
    if (stop.stop_requested())
        return cancelled(path);
    if (tooLarge)
        return failure(Error::Code::OutOfRange, path.string() + ": too large when unpacked");
    if (!good && bytes.empty()) // of a damaged file what came before the damage is kept
        return failure(Error::Code::BadSyntax, path.string() + ": cannot be unpacked");
    return bytes;
}

Result<std::string> readPlain(const std::filesystem::path& path, const std::stop_token& stop)
{
    constexpr std::size_t block = std::size_t{1} << 22;
    const auto file = RegularFile::open(path);
    if (!file)
        return tl::unexpected(file.error());
    if (file->size() > sizeLimit)
        return failure(Error::Code::OutOfRange, path.string() + ": file too large");
    std::string bytes(file->size(), '\0');
    for (std::size_t at = 0; at < bytes.size();) {
        if (stop.stop_requested())
            return cancelled(path);
        const auto got = file->readAt(at, {bytes.data() + at, std::min(block, bytes.size() - at)});
        if (!got)
            return failure(got.error().code, path.string() + ": " + got.error().message);
        if (*got == 0) // it became shorter meanwhile
            bytes.resize(at);
        at += *got;
    }
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

Result<std::string> readGribFile(const std::filesystem::path& path, const std::stop_token& stop)
{
    if (!isBzip2(path))
        return readPlain(path, stop);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return failure(Error::Code::CannotOpen, path.string() + ": no such file");
    return unpackInMemory(path, stop);
}

Result<std::filesystem::path> unpackInPlace(const std::filesystem::path& path,
                                            const std::stop_token& stop)
{
    const auto child = startBunzip2("-f", path, -1);
    if (!child)
        return tl::unexpected(child.error());
    auto unpacked = path;
    unpacked.replace_extension();
    if (!endedWell(*child, stop) || !std::filesystem::exists(unpacked))
        return failure(Error::Code::BadSyntax, path.string() + ": cannot be unpacked");
    return unpacked;
}

} // namespace kelvox
