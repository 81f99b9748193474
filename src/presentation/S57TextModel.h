#pragma once

#include "presentation/Canvas.h"

#include <cstdint>
#include <vector>

namespace kelvox {

/// The soundings, names and labels of a picture: collected while the features are drawn, then
/// placed so that no two cross, the more important first.
///
/// A label goes where it covers nothing, else where it covers only marks or soundings that have a
/// shoaler one near by; those soundings then are left out. Seabed and other detail never takes the
/// place of a sounding. What is placed depends on what was collected alone, never on the order of
/// work, so that nothing jumps while the chart is panned.
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

    struct Sounding {
        TextFigure figure;
        Point at; ///< pixel of its middle
        float depth = 0; ///< metres
        bool stays = false; ///< gives way to no label
    };

    void add(Item item) { m_items.push_back(std::move(item)); }
    void addSounding(Sounding sounding) { m_soundings.push_back(std::move(sounding)); }
    /// A place, in pixels, that labels leave free when they can: a symbol is there.
    void avoid(const Rect& box) { m_marks.push_back(box); }
    /// Takes the items of another collection.
    void append(S57TextModel&& other);
    [[nodiscard]] const std::vector<Item>& items() const { return m_items; }
    [[nodiscard]] const std::vector<Sounding>& soundings() const { return m_soundings; }

    /// Draws the soundings, then the labels that find room.
    void draw(const TextMeasure& measure, double pixelsPerPoint, Canvas& canvas);

private:
    std::vector<Item> m_items;
    std::vector<Sounding> m_soundings;
    std::vector<Rect> m_marks;
};

} // namespace kelvox
