#pragma once

#include <string_view>

namespace kelvox {

// The codes of IHO S-57 edition 3.1 that a presentation library can speak of: object classes 1
// (ADMARE) to 160 (TS_FEB), attributes 1 (AGENCY) to 188 (CAT_TS). Meta and cartographic classes
// lie beyond on purpose: they are never drawn by look-up.

[[nodiscard]] std::string_view objectCodeAcronym(int code); ///< "XXXXXX" for any other code
[[nodiscard]] std::string_view attributeCodeAcronym(int code); ///< empty for any other code
[[nodiscard]] int objectCode(std::string_view acronym); ///< 0 when there is no such class
[[nodiscard]] int attributeCode(std::string_view acronym); ///< 0 when there is no such attribute

} // namespace kelvox
