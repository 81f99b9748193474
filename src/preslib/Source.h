#pragma once

#include "preslib/Library.h"
#include "preslib/TableReader.h"

namespace kelvox::preslib {

/// The source folder, read and checked: colours.txt, monitor.txt, lookups/*.txt and drawings/*.txt,
/// the drawings in order of their file names.
struct Source {
    Library library;
    Monitor monitor;
    Diagnostics diagnostics; ///< the result may be used when this is empty
};

[[nodiscard]] Source readSource(const std::filesystem::path& folder);

} // namespace kelvox::preslib
