#include "base/File.h"

#include "base/AtomicFile.h"
#include "base/RegularFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kelvox {

namespace {
/// Closes its descriptor on every way out.
class Descriptor {
public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    [[nodiscard]] int get() const { return m_fd; }

private:
    int m_fd;
};

tl::unexpected<Error> systemFailure(const std::filesystem::path& path)
{
    return failure(Error::Code::CannotOpen, path.string() + ": " + std::strerror(errno));
}

/// Checks what fstat says: only a regular file has a size that can be trusted.
Result<std::size_t> regularFileSize(int fd, const std::filesystem::path& path)
{
    struct stat info { };
    if (::fstat(fd, &info) != 0)
        return systemFailure(path);
    if (!S_ISREG(info.st_mode))
        return failure(Error::Code::CannotOpen, path.string() + ": not a regular file");
    return static_cast<std::size_t>(info.st_size);
}
} // namespace

Result<MappedFile> MappedFile::open(const std::filesystem::path& path)
{
    // Non-blocking, so that a named pipe in a chart folder cannot hang the reader.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0)
        return systemFailure(path);
    const auto size = regularFileSize(file.get(), path);
    if (!size)
        return tl::unexpected(size.error());
    MappedFile mapped;
    if (*size == 0)
        return mapped;
    void* data = ::mmap(nullptr, *size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (data == MAP_FAILED)
        return systemFailure(path);
    ::madvise(data, *size, MADV_SEQUENTIAL);
    mapped.m_data = static_cast<const char*>(data);
    mapped.m_size = *size;
    return mapped;
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr))
    , m_size(std::exchange(other.m_size, 0))
    , m_released(std::exchange(other.m_released, 0))
{
}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept
{
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_released, other.m_released);
    return *this;
}

void MappedFile::releaseBefore(std::size_t offset)
{
    constexpr std::size_t block = std::size_t{256} * 1024;
    const std::size_t end = offset / block * block;
    if (end <= m_released)
        return;
    ::madvise(const_cast<char*>(m_data) + m_released, end - m_released, MADV_DONTNEED);
    m_released = end;
}

MappedFile::~MappedFile()
{
    if (m_data)
        ::munmap(const_cast<char*>(m_data), m_size);
}

Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit)
{
    const auto file = RegularFile::open(path);
    if (!file)
        return tl::unexpected(file.error());
    if (file->size() > limit)
        return failure(Error::Code::OutOfRange, path.string() + ": file too large");
    std::string bytes(file->size(), '\0');
    const auto have = file->readAt(0, bytes);
    if (!have)
        return failure(have.error().code, path.string() + ": " + have.error().message);
    bytes.resize(*have);
    return bytes;
}

Result<void> writeFileAtomically(const std::filesystem::path& path, std::string_view bytes)
{
    auto file = AtomicFile::create(path);
    if (!file)
        return tl::unexpected(file.error());
    if (auto written = file->append(bytes); !written)
        return written;
    return file->commit();
}

} // namespace kelvox
