#pragma once

#include "base/Result.h"

#include <filesystem>

namespace kelvox {

/// A private temporary folder for what a KMZ holds, removed with all of it.
class KmzFolder {
public:
    KmzFolder();
    KmzFolder(const KmzFolder&) = delete;
    KmzFolder& operator=(const KmzFolder&) = delete;
    ~KmzFolder();

    /// Runs the system's unzip command on the document, which is all that is read of the file:
    /// neither names that climb out of the folder nor a flood of other files come into play.
    /// @param largest bytes that the document may measure
    /// @return its "doc.kml"
    [[nodiscard]] Result<std::filesystem::path> unpack(const std::filesystem::path& file,
                                                       unsigned long long largest) const;

private:
    std::filesystem::path m_path;
};

} // namespace kelvox
