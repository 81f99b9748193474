#include "exchange/Program.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvox {

Result<void> runProgram(const std::vector<std::string>& arguments, unsigned long long largestFile)
{
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const auto& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str())); // spawn leaves them alone
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    // A question, e.g. for a password, finds no one to answer it and ends.
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), ::environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return failure(Error::Code::CannotOpen, arguments[0] + ": " + std::strerror(error));
    if (largestFile > 0) {
        const rlimit limit{.rlim_cur = largestFile, .rlim_max = largestFile};
        ::prlimit(child, RLIMIT_FSIZE, &limit, nullptr);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return failure(Error::Code::CannotOpen, arguments[0] + ": " + std::strerror(errno));
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return failure(Error::Code::BadSyntax, arguments[0] + " failed");
    return {};
}

} // namespace kelvox
