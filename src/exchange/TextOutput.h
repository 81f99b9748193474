#pragma once

#include "base/Result.h"

#include <filesystem>
#include <stop_token>
#include <string>
#include <string_view>

namespace kelvox {

/// Writes a text file in pieces, beside its place until finish() puts it there whole. Without
/// finish() whatever stood there stays. A failure is kept until finish() reports it; a stop that is
/// requested before the file is in its place is one.
class TextOutput {
public:
    explicit TextOutput(const std::filesystem::path& path, std::stop_token stop = {});
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;
    ~TextOutput();

    TextOutput& operator<<(std::string_view text)
    {
        m_text += text;
        if (m_text.size() >= pieceSize)
            flush();
        return *this;
    }
    /// "%f": six decimals. For degrees.
    TextOutput& operator<<(float degrees);
    [[nodiscard]] Result<void> finish();

private:
    static constexpr std::size_t pieceSize = 1 << 16;
    void flush();

    std::filesystem::path m_path;
    std::stop_token m_stop;
    std::string m_temporary;
    int m_file = -1;
    int m_error = 0;
    std::string m_text;
};

} // namespace kelvox
