#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// One drawing instruction of a look-up entry or a conditional procedure, read once.
struct Instruction {
    enum class Kind : std::uint8_t { None, AC, AP, CS, LC, LS, SY, TE, TX };

    Kind kind = Kind::None;
    std::string name; ///< of a symbol, pattern, line style, procedure or colour token
    bool usesOrientation = false; ///< SY: the angle is the feature's orientation
    float angle = 0; ///< SY: degrees clockwise
    int transparency = 0; ///< AC: quarters of opacity 1 to 3, else opaque
    std::string pattern; ///< LS: SOLID, DASH or DOTT
    float width = 0; ///< LS: display points, at most 2
    std::string attribute; ///< TX, TE: OBJNAM, INFORM or ELEVAT; empty for any other
    int offsetX = 0; ///< TX: in steps of 20 display points, right
    int offsetY = 0; ///< TX: up

    /// Anything malformed gives an instruction that draws nothing.
    [[nodiscard]] static Instruction parse(std::string_view text);
};

} // namespace kelvox
