#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace kelvox {

/// A whole file, read-only, as bytes. Movable; the bytes live as long as the object.
///
/// Regular files are mapped. A file that another program truncates while it is mapped raises
/// SIGBUS, so files that others may be writing (user data, logs) are read with readFile() instead.
class MappedFile {
public:
    [[nodiscard]] static Result<MappedFile> open(const std::filesystem::path& path);
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    [[nodiscard]] std::span<const char> bytes() const { return {m_data, m_size}; }
    /// Lets the memory go of what stands before the offset, once it is worth the call. The bytes
    /// stay readable; they would come from the file again.
    void releaseBefore(std::size_t offset);

private:
    MappedFile() = default;
    const char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_released = 0;
};

/// The whole file as a string; refuses files above the limit.
[[nodiscard]] Result<std::string> readFile(const std::filesystem::path& path,
                                           std::size_t limit = std::size_t{1} << 30);

/// Writes beside the target, syncs, renames over it: a reader sees the old or the new file whole,
/// whenever the power goes. Makes the folder where it is missing.
[[nodiscard]] Result<void> writeFileAtomically(const std::filesystem::path& path,
                                               std::string_view bytes);

} // namespace kelvox
