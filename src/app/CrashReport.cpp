#include "app/CrashReport.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvox {

namespace {
constexpr const char* fileName = "crash.txt";

// All that the handler touches is made ready beforehand: in a crash nothing may be allocated.
std::array<char, 4096> reportPath{};
std::array<char, 256> heading{};

void writeText(int file, const char* text)
{
    [[maybe_unused]] const auto written = ::write(file, text, std::strlen(text));
}

void writeNumber(int file, int number)
{
    std::array<char, 12> digits{};
    std::size_t at = digits.size() - 1;
    do {
        digits[--at] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0 && at > 0);
    writeText(file, &digits[at]);
}

void report(int signal)
{
    constexpr mode_t onlyTheUser = 0600;
    const int file = ::open(reportPath.data(), O_WRONLY | O_CREAT | O_TRUNC, onlyTheUser);
    if (file >= 0) {
        writeText(file, heading.data());
        writeText(file, "signal ");
        writeNumber(file, signal);
        writeText(file, "\n");
        std::array<void*, 64> frames{};
        const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
        ::backtrace_symbols_fd(frames.data(), count, file);
        ::fsync(file);
        ::close(file);
    }
    // The handler was for one time only: now it ends as it would have.
    ::raise(signal);
}
} // namespace

void CrashReport::install(const std::filesystem::path& folder, const std::string& version)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const std::string path = (folder / fileName).string();
    if (path.size() >= reportPath.size())
        return;
    std::copy(path.begin(), path.end(), reportPath.begin());
    const std::string words = version.substr(0, heading.size() - 2) + "\n";
    std::copy(words.begin(), words.end(), heading.begin());
    // The first call loads a library; in a handler that would allocate.
    std::array<void*, 1> frame{};
    ::backtrace(frame.data(), 1);
    struct sigaction action = {};
    action.sa_handler = report;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        ::sigaction(signal, &action, nullptr);
}

std::optional<std::filesystem::path> CrashReport::takeLast(const std::filesystem::path& folder)
{
    const auto last = folder / fileName;
    std::error_code error;
    if (!std::filesystem::exists(last, error))
        return std::nullopt;
    struct ::stat status = {};
    std::time_t written = std::time(nullptr);
    if (::stat(last.c_str(), &status) == 0)
        written = status.st_mtime;
    std::tm parts{};
    ::localtime_r(&written, &parts);
    std::array<char, 40> name{};
    std::strftime(name.data(), name.size(), "crash-%Y%m%d-%H%M%S.txt", &parts);
    const auto kept = folder / name.data();
    std::filesystem::rename(last, kept, error);
    if (error)
        return std::nullopt;
    return kept;
}

} // namespace kelvox
