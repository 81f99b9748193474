#include "presentation/DisplayList.h"

namespace kelvox {

void DisplayList::add(const Path& path, const Stroke& stroke, bool isArea)
{
    if (path.isEmpty())
        return;
    constexpr double pen = 8; // more than any pen reaches, at any sharpness
    const Rect box = path.bounds();
    m_commands.push_back({path, static_cast<float>(box.bottom - pen),
                          static_cast<float>(box.top + pen), stroke, isArea});
}

void DisplayList::fillArea(const Path& rings, DisplayColor color)
{
    add(rings, {color, 0, LinePattern::Solid}, true);
}

void DisplayList::strokeLine(const Path& lines, const Stroke& stroke)
{
    add(lines, stroke, false);
}

void DisplayList::replay(Canvas& canvas, double top, double bottom) const
{
    for (const Command& command : m_commands) {
        if (command.bottom < top || command.top > bottom)
            continue;
        if (command.isArea)
            canvas.fillArea(command.path, command.stroke.color);
        else
            canvas.strokeLine(command.path, command.stroke);
    }
}

} // namespace kelvox
