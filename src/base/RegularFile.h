#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace kelvox {

/// A regular file opened for reading at any place of it. Reading may be shared by threads.
class RegularFile {
public:
    [[nodiscard]] static Result<RegularFile> open(const std::filesystem::path& path);
    RegularFile(RegularFile&& other) noexcept;
    RegularFile& operator=(RegularFile&& other) noexcept;
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;
    ~RegularFile();

    [[nodiscard]] std::size_t size() const { return m_size; } ///< when it was opened
    /// @return how many bytes were read: fewer only at the end of the file
    [[nodiscard]] Result<std::size_t> readAt(std::size_t offset, std::span<char> bytes) const;

private:
    RegularFile(int file, std::size_t size)
        : m_file(file)
        , m_size(size)
    {
    }
    int m_file;
    std::size_t m_size;
};

} // namespace kelvox
