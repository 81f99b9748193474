#pragma once

#include <string>
#include <string_view>

namespace kelvox {

/// An attribute's value as one reads it: meanings of listed values, numbers with their unit
/// (depths and heights in the user's), dates as days and months. Text that is no number or date
/// where one belongs stands as it is.
/// @param depthUnit 0 feet, 1 metres, 2 fathoms; anything else counts as metres
[[nodiscard]] std::string attributeWords(int attributeCode, std::string_view value, int depthUnit,
                                         bool heightsInMetres);

/// Attributes about how the object was recorded rather than what it is: sources, dates of
/// recording, display scales, names of files.
[[nodiscard]] bool isRecordAttribute(int attributeCode);

} // namespace kelvox
