#pragma once

#include "base/Result.h"

#include <string>
#include <vector>

namespace kelvox {

/// Runs a program of the system and waits for it. No shell is between: an argument is only itself.
/// @param largestFile bytes of the largest file that the program may write; 0 for no limit
[[nodiscard]] Result<void> runProgram(const std::vector<std::string>& arguments,
                                      unsigned long long largestFile = 0);

} // namespace kelvox
