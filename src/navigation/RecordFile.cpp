#include "navigation/RecordFile.h"

#include "base/File.h"

#include <fmt/format.h>

#include <algorithm>
#include <unistd.h>

namespace kelvox {

namespace {
constexpr std::size_t backupsKept = 10;
constexpr int numberWidth = 8; // digits: keeps names in the order of their making

std::filesystem::path backupFolder(const std::filesystem::path& file)
{
    return file.parent_path() / "Backups";
}

void keepBackup(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return;
    std::filesystem::create_directories(backupFolder(file), error);
    const auto old = backupsOf(file);
    const std::string prefix = file.stem().string() + "-";
    int number = 1;
    if (!old.empty()) {
        const std::string last = old.back().stem().string();
        number = std::atoi(last.c_str() + prefix.size()) + 1;
    }
    const auto name = backupFolder(file)
        / fmt::format("{}{:0{}}{}", prefix, number, numberWidth, file.extension().string());
    // A link is enough: the file is about to be replaced by a new one, never written into.
    if (::link(file.c_str(), name.c_str()) != 0)
        std::filesystem::copy_file(file, name, error);
    for (std::size_t i = 0; i + backupsKept <= old.size(); ++i)
        std::filesystem::remove(old[i], error);
}
} // namespace

Result<void> PendingSave::prepare() const
{
    auto folder = file.parent_path();
    if (folder.empty())
        folder = ".";
    std::error_code ignored; // the check below reports what matters
    std::filesystem::create_directories(folder, ignored);
    if (::access(folder.c_str(), W_OK) != 0)
        return failure(Error::Code::CannotOpen, folder.string() + ": the folder is not writable");
    if (!refusal.empty())
        return failure(Error::Code::CannotOpen, file.string() + ": " + refusal);
    keepBackup(file);
    return {};
}

Result<void> PendingSave::write() const
{
    if (auto ready = prepare(); !ready)
        return ready;
    return writeFileAtomically(file, bytes);
}

std::vector<std::filesystem::path> backupsOf(const std::filesystem::path& file)
{
    std::vector<std::filesystem::path> backups;
    const std::string prefix = file.stem().string() + "-";
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(backupFolder(file), error)) {
        const auto stem = entry.path().stem().string();
        const bool numbered = stem.size() == prefix.size() + numberWidth
            && stem.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
        if (numbered && stem.starts_with(prefix) && entry.path().extension() == file.extension())
            backups.push_back(entry.path());
    }
    std::sort(backups.begin(), backups.end());
    return backups;
}

} // namespace kelvox
