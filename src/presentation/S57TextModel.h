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
    /// The name of an island or a country, a mark, a light's character, waters, a place, the
    /// seabed.
    enum class Rank : std::uint8_t { Land, Mark, Light, Area, Place, Detail };

    struct Item {
        TextFigure figure;
        Point anchor; ///< pixel
        double across = 0; ///< pixels from corner to corner of the area that it names
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
    /// Whether a sounding can still be read where a symbol stands on it.
    enum class Cover : std::uint8_t { Open, Solid };
    /// A place, in pixels, that labels leave free when they can: a symbol is there. Soundings in
    /// the midst of a solid one are left out when there is a shoaler near by.
    void avoid(const Rect& box, Cover cover = Cover::Open) { m_marks.push_back({box, cover}); }
    /// Takes the items of another collection.
    void append(S57TextModel&& other);
    [[nodiscard]] const std::vector<Item>& items() const { return m_items; }
    [[nodiscard]] const std::vector<Sounding>& soundings() const { return m_soundings; }

    /// Draws the soundings, then the labels that find room.
    void draw(const TextMeasure& measure, double pixelsPerPoint, Canvas& canvas);

    struct Mark {
        Rect box;
        Cover cover = Cover::Open;
    };

private:
    std::vector<Item> m_items;
    std::vector<Sounding> m_soundings;
    std::vector<Mark> m_marks;
};

} // namespace kelvox
