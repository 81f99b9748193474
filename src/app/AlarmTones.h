#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The names of the alarm tones, e.g. "Buzz", in the order in which they are offered.
[[nodiscard]] const std::vector<std::string>& alarmToneNames();

/// A tone as a WAV file: mono, 16 bits, 22,050 samples a second. A name that is not known gives the
/// first tone, because some sound is better than none.
[[nodiscard]] std::string alarmTone(std::string_view name);

} // namespace kelvox
