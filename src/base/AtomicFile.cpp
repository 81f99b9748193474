#include "base/AtomicFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kelvox {

Result<AtomicFile> AtomicFile::create(const std::filesystem::path& path)
{
    std::error_code ignored; // the open below reports what matters
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path(), ignored);

    // A link is followed, so that a user who keeps the file elsewhere keeps it there.
    std::error_code notALink;
    AtomicFile file;
    file.m_target = std::filesystem::canonical(path, notALink);
    if (notALink)
        file.m_target = path;

    std::string name = file.m_target.string() + ".XXXXXX";
    file.m_file = ::mkostemp(name.data(), O_CLOEXEC);
    if (file.m_file < 0)
        return file.systemFailure();
    file.m_temporary = std::move(name);
    struct stat old { };
    const mode_t mode = ::stat(file.m_target.c_str(), &old) == 0 ? old.st_mode & 07777 : 0644;
    if (::fchmod(file.m_file, mode) != 0)
        return file.systemFailure();
    return file;
}

AtomicFile::AtomicFile(AtomicFile&& other) noexcept
    : m_target(std::move(other.m_target))
    , m_temporary(std::exchange(other.m_temporary, {}))
    , m_file(std::exchange(other.m_file, -1))
    , m_size(other.m_size)
    , m_flushing(other.m_flushing)
{
}

AtomicFile& AtomicFile::operator=(AtomicFile&& other) noexcept
{
    std::swap(m_target, other.m_target);
    std::swap(m_temporary, other.m_temporary);
    std::swap(m_file, other.m_file);
    std::swap(m_size, other.m_size);
    std::swap(m_flushing, other.m_flushing);
    return *this;
}

AtomicFile::~AtomicFile()
{
    if (m_file >= 0)
        ::close(m_file);
    if (!m_temporary.empty())
        ::unlink(m_temporary.c_str());
}

tl::unexpected<Error> AtomicFile::systemFailure() const
{
    return failure(Error::Code::CannotOpen, m_target.string() + ": " + std::strerror(errno));
}

Result<void> AtomicFile::append(std::string_view bytes)
{
    constexpr std::size_t flushEvery = std::size_t{1} << 20;
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return systemFailure();
        bytes.remove_prefix(static_cast<std::size_t>(written));
        m_size += static_cast<std::size_t>(written);
    }
    // The disk begins while more is made, so that commit() has less to wait for. It may refuse.
    if (m_size - m_flushing >= flushEvery) {
        (void)::sync_file_range(m_file, static_cast<off_t>(m_flushing),
                                static_cast<off_t>(m_size - m_flushing), SYNC_FILE_RANGE_WRITE);
        m_flushing = m_size;
    }
    return {};
}

Result<void> AtomicFile::commit()
{
    if (::fsync(m_file) != 0 || ::close(std::exchange(m_file, -1)) != 0
        || ::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        return systemFailure();
    m_temporary.clear();
    auto folder = m_target.parent_path();
    if (folder.empty())
        folder = ".";
    const int parent = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
    if (parent >= 0) {
        ::fsync(parent); // the rename itself survives a power cut
        ::close(parent);
    }
    return {};
}

} // namespace kelvox
