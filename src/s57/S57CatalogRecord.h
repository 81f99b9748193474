#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace kelvox {

/// What a catalogue or a folder says of one file: where it is and which waters it covers.
struct S57CatalogRecord {
    std::filesystem::path path;
    std::string description; ///< the long file name
    std::string format; ///< "BIN" for cells and updates
    std::string comment;
    // Degrees.
    double southLatitude = 0;
    double northLatitude = 0;
    double westLongitude = 0;
    double eastLongitude = 0;
    bool binaryPrimary = false; ///< a base cell, not an update

    /// Whether the entry can be a cell or an update: an extension of three digits, and bounds that
    /// are a place on the earth.
    [[nodiscard]] bool validCell() const;
};

} // namespace kelvox
