#include "base/RegularFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kelvox {

Result<RegularFile> RegularFile::open(const std::filesystem::path& path)
{
    const auto systemFailure = [&] {
        return failure(Error::Code::CannotOpen, path.string() + ": " + std::strerror(errno));
    };
    // Non-blocking, so that a named pipe cannot hang the reader.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return systemFailure();
    RegularFile file(descriptor, 0); // closes it on every way out
    struct stat info { };
    if (::fstat(descriptor, &info) != 0)
        return systemFailure();
    if (!S_ISREG(info.st_mode))
        return failure(Error::Code::CannotOpen, path.string() + ": not a regular file");
    file.m_size = static_cast<std::size_t>(info.st_size);
    return file;
}

RegularFile::RegularFile(RegularFile&& other) noexcept
    : m_file(std::exchange(other.m_file, -1))
    , m_size(std::exchange(other.m_size, 0))
{
}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept
{
    std::swap(m_file, other.m_file);
    std::swap(m_size, other.m_size);
    return *this;
}

RegularFile::~RegularFile()
{
    if (m_file >= 0)
        ::close(m_file);
}

Result<std::size_t> RegularFile::readAt(std::size_t offset, std::span<char> bytes) const
{
    std::size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = ::pread(m_file, bytes.data() + have, bytes.size() - have,
                                    static_cast<off_t>(offset + have));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return failure(Error::Code::CannotOpen, std::strerror(errno), offset + have);
        if (got == 0)
            break;
        have += static_cast<std::size_t>(got);
    }
    return have;
}

} // namespace kelvox
