#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace kelvox {

/// A file that is written beside its target and put into its place whole: a reader sees the old or
/// the new one, whenever the power goes. Without commit() the target stays as it was.
class AtomicFile {
public:
    /// Makes the folder where it is missing.
    [[nodiscard]] static Result<AtomicFile> create(const std::filesystem::path& path);
    AtomicFile(AtomicFile&& other) noexcept;
    AtomicFile& operator=(AtomicFile&& other) noexcept;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    [[nodiscard]] Result<void> append(std::string_view bytes);
    /// Down to the disk, name and all.
    [[nodiscard]] Result<void> commit();

private:
    AtomicFile() = default;
    [[nodiscard]] tl::unexpected<Error> systemFailure() const;

    std::filesystem::path m_target;
    std::string m_temporary; ///< empty once it has its final name
    int m_file = -1;
    std::size_t m_size = 0;
    std::size_t m_flushing = 0; ///< bytes that are on their way to the disk
};

} // namespace kelvox
