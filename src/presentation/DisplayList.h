#pragma once

#include "presentation/Canvas.h"

#include <cstdint>
#include <vector>

namespace kelvox {

/// A canvas that remembers what was drawn on it, to be painted later, elsewhere and in parts.
class DisplayList final : public Canvas {
public:
    void fillArea(const Path& rings, DisplayColor color) override;
    void strokeLine(const Path& lines, const Stroke& stroke) override;

    /// Draws what meets the rows from top to bottom onto another canvas, in order.
    void replay(Canvas& canvas, double top, double bottom) const;
    [[nodiscard]] std::size_t size() const { return m_commands.size(); }
    void clear() { m_commands.clear(); }

private:
    struct Command {
        Path path;
        float top = 0; ///< rows that the drawing may touch
        float bottom = 0;
        Stroke stroke; ///< of an area only the colour counts
        bool isArea = false;
    };
    void add(const Path& path, const Stroke& stroke, bool isArea);
    std::vector<Command> m_commands;
};

} // namespace kelvox
