#pragma once

#include "presentation/Canvas.h"

#include <cstdint>
#include <vector>

namespace kelvox {

/// The names and labels of a picture: collected while the features are drawn, then placed so that
/// no two cross, the more important first.
///
/// What is placed depends on the labels alone, never on the order of work or the view's edge within
/// a picture, so that nothing jumps while the chart is panned.
class S57TextModel {
public:
    enum class Rank : std::uint8_t { Area, Mark, Place, Light, Detail };

    struct Item {
        TextFigure figure;
        Point anchor; ///< pixel
        bool centred = false; ///< over its anchor; else beside it, on whichever side is free
        Rank rank = Rank::Detail;
        std::uint32_t cell = 0; ///< 0 the finest, whose labels come first
        std::uint64_t order = 0; ///< of the feature in its cell
    };

    void add(Item item) { m_items.push_back(std::move(item)); }
    /// Takes the items of another collection.
    void append(S57TextModel&& other);
    [[nodiscard]] const std::vector<Item>& items() const { return m_items; }

    /// Draws the labels that find room.
    void draw(const TextMeasure& measure, double pixelsPerPoint, Canvas& canvas);

private:
    std::vector<Item> m_items;
};

} // namespace kelvox
