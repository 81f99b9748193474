#include "preslib/Library.h"

#include <algorithm>

namespace kelvox::preslib {

bool Library::hasColor(const std::string& token) const
{
    return std::ranges::any_of(colors, [&](const Color& color) { return color.token == token; });
}

bool Library::hasDrawing(Drawing::Kind kind, const std::string& name) const
{
    return std::ranges::any_of(drawings, [&](const Drawing& drawing) {
        return drawing.kind == kind && drawing.name == name;
    });
}

} // namespace kelvox::preslib
