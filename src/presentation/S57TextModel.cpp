#include "presentation/S57TextModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <tuple>
#include <unordered_map>

namespace kelvox {

namespace {
constexpr double sameNameApart = 150; ///< display points

/// Boxes taken so far, found through the squares of a grid.
class Occupied {
public:
    [[nodiscard]] bool meets(const Rect& box) const
    {
        bool hit = false;
        forSquares(box, [&](std::uint64_t square) {
            const auto found = m_squares.find(square);
            if (found == m_squares.end())
                return;
            for (const std::uint32_t i : found->second)
                hit = hit || m_boxes[i].intersects(box);
        });
        return hit;
    }
    void take(const Rect& box)
    {
        m_boxes.push_back(box);
        const auto index = static_cast<std::uint32_t>(m_boxes.size() - 1);
        forSquares(box, [&](std::uint64_t square) { m_squares[square].push_back(index); });
    }

private:
    static constexpr double side = 64;
    template <typename Visit> static void forSquares(const Rect& box, Visit visit)
    {
        const auto index = [](double v) { return static_cast<std::int32_t>(std::floor(v / side)); };
        for (auto x = index(box.left); x <= index(box.right); ++x)
            for (auto y = index(box.bottom); y <= index(box.top); ++y)
                visit(static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32U
                      | static_cast<std::uint32_t>(y));
    }
    std::vector<Rect> m_boxes;
    std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> m_squares;
};

Rect boxAround(Point middle, Size size)
{
    return {middle.x - size.width / 2, middle.y - size.height / 2, middle.x + size.width / 2,
            middle.y + size.height / 2};
}

/// Where the label goes: the first place that is free.
std::optional<Point> freePlace(const S57TextModel::Item& item, Size size, double pixelsPerPoint,
                               const Occupied& occupied)
{
    const double away = 7 * pixelsPerPoint; // clear of the mark itself
    const double sideways = away + size.width / 2;
    const double updown = away + size.height / 2;
    const std::array<Point, 6> beside{{{sideways, 0},
                                       {-sideways, 0},
                                       {sideways, -updown},
                                       {sideways, updown},
                                       {0, updown},
                                       {0, -updown}}};
    if (item.centred)
        return occupied.meets(boxAround(item.anchor, size)) ? std::nullopt
                                                            : std::optional(item.anchor);
    for (const Point offset : beside)
        if (!occupied.meets(boxAround(item.anchor + offset, size)))
            return item.anchor + offset;
    return std::nullopt;
}
} // namespace

void S57TextModel::append(S57TextModel&& other)
{
    m_items.insert(m_items.end(), std::make_move_iterator(other.m_items.begin()),
                   std::make_move_iterator(other.m_items.end()));
    other.m_items.clear();
}

void S57TextModel::draw(const TextMeasure& measure, double pixelsPerPoint, Canvas& canvas)
{
    std::ranges::stable_sort(
        m_items, {}, [](const Item& item) { return std::tuple(item.rank, item.cell, item.order); });
    Occupied occupied;
    std::unordered_map<std::string, std::vector<Point>> placed;
    const double apart = sameNameApart * pixelsPerPoint;
    for (const Item& item : m_items) {
        // An area and what lies in it often bear one name: once is enough.
        auto& sameText = placed[item.figure.text];
        if (std::ranges::any_of(sameText, [&](Point p) {
                return std::hypot(p.x - item.anchor.x, p.y - item.anchor.y) < apart;
            }))
            continue;
        const Size points = measure.size(item.figure);
        const Size size{points.width * pixelsPerPoint, points.height * pixelsPerPoint};
        if (const auto place = freePlace(item, size, pixelsPerPoint, occupied)) {
            occupied.take(boxAround(*place, size));
            sameText.push_back(item.anchor);
            canvas.placeText(item.figure, *place);
        }
    }
}

} // namespace kelvox
