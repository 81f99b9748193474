#pragma once

#include <span>
#include <string_view>

namespace kelvox {

// The names by which the program and a presentation library must agree.

/// Conditional procedures that the program dispatches; any other name draws nothing.
[[nodiscard]] std::span<const std::string_view> conditionalProcedureNames();
/// Symbols, patterns and colours that the program's own routines name.
[[nodiscard]] std::span<const std::string_view> routineSymbolNames();
[[nodiscard]] std::span<const std::string_view> routinePatternNames();
[[nodiscard]] std::span<const std::string_view> routineColorTokens();
/// The three tables that setColorTable(1 to 3) selects, in that order.
[[nodiscard]] std::span<const std::string_view> colorTableNames();

} // namespace kelvox
