#include "presentation/S57TextModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <span>
#include <tuple>
#include <unordered_map>

namespace kelvox {

namespace {
constexpr double sameNameApart = 150; ///< display points

/// Boxes found through the squares of a grid.
class BoxGrid {
public:
    /// Calls visit(index) for each box that meets this one, once, until it returns false.
    template <typename Visit> void forMet(const Rect& box, Visit visit) const
    {
        forSquares(box, [&](std::int32_t x, std::int32_t y) {
            const auto found = m_squares.find(keyOf(x, y));
            if (found == m_squares.end())
                return true;
            return std::ranges::all_of(found->second, [&](std::uint32_t i) {
                // Two boxes may share several squares: the one with their common corner counts.
                const Rect& other = m_boxes[i];
                return !other.intersects(box) || indexOf(std::max(box.left, other.left)) != x
                    || indexOf(std::max(box.bottom, other.bottom)) != y || visit(i);
            });
        });
    }
    [[nodiscard]] bool meets(const Rect& box) const
    {
        bool hit = false;
        forMet(box, [&](std::uint32_t) {
            hit = true;
            return false;
        });
        return hit;
    }
    void add(const Rect& box)
    {
        m_boxes.push_back(box);
        const auto index = static_cast<std::uint32_t>(m_boxes.size() - 1);
        forSquares(box, [&](std::int32_t x, std::int32_t y) {
            m_squares[keyOf(x, y)].push_back(index);
            return true;
        });
    }

private:
    static constexpr double side = 64;
    static std::int32_t indexOf(double v)
    {
        return static_cast<std::int32_t>(std::floor(v / side));
    }
    static std::uint64_t keyOf(std::int32_t x, std::int32_t y)
    {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32U
            | static_cast<std::uint32_t>(y);
    }
    template <typename Visit> static void forSquares(const Rect& box, Visit visit)
    {
        for (auto x = indexOf(box.left); x <= indexOf(box.right); ++x)
            for (auto y = indexOf(box.bottom); y <= indexOf(box.top); ++y)
                if (!visit(x, y))
                    return;
    }
    std::vector<Rect> m_boxes;
    std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> m_squares;
};

Rect boxAround(Point middle, Size size)
{
    return {middle.x - size.width / 2, middle.y - size.height / 2, middle.x + size.width / 2,
            middle.y + size.height / 2};
}

/// About as large as the figure comes out; measuring thousands of them would cost more than it
/// brings.
Rect soundingBox(const S57TextModel::Sounding& sounding, double pixelsPerPoint)
{
    const TextFigure& figure = sounding.figure;
    const double width = 0.64 * static_cast<double>(figure.text.size())
        + 0.5 * static_cast<double>(figure.subscript.size());
    const double size = figure.size * pixelsPerPoint;
    return boxAround(sounding.at, {width * size, size});
}

/// Finds a place for one label after the other.
class Placement {
public:
    Placement(const std::vector<S57TextModel::Sounding>& soundings, const std::vector<Rect>& marks,
              double pixelsPerPoint)
        : m_soundings(soundings)
        , m_dropped(soundings.size(), false)
        , m_pixelsPerPoint(pixelsPerPoint)
    {
        // Of two figures that would cross the shoaler is shown.
        std::vector<std::uint32_t> order(soundings.size());
        std::iota(order.begin(), order.end(), 0U);
        std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return soundings[i].depth; });
        for (const std::uint32_t i : order) {
            const Rect box = soundingBox(soundings[i], pixelsPerPoint);
            m_dropped[i] = m_figures.meets(box);
            if (!m_dropped[i]) {
                m_figures.add(box);
                m_figureSounding.push_back(i);
            }
        }
        for (const Rect& mark : marks)
            if (!mark.isEmpty())
                m_marks.add(mark);
    }

    /// The middle of the label; nothing when there is no room.
    std::optional<Point> place(const S57TextModel::Item& item, Size size)
    {
        const double away = 7 * m_pixelsPerPoint; // clear of the mark itself
        const double sideways = away + size.width / 2;
        const double updown = away + size.height / 2;
        const std::array<Point, 6> beside{{{sideways, 0},
                                           {-sideways, 0},
                                           {sideways, -updown},
                                           {sideways, updown},
                                           {0, updown},
                                           {0, -updown}}};
        constexpr std::array<Point, 1> over{{{0, 0}}};
        std::optional<Point> best;
        int least = item.rank == S57TextModel::Rank::Detail ? 1 : impossible;
        for (const Point offset : item.centred ? std::span<const Point>(over) : beside) {
            const Point middle = item.anchor + offset;
            if (const int cost = costOf(boxAround(middle, size), item.centred); cost < least) {
                least = cost;
                best = middle;
            }
        }
        if (best)
            take(boxAround(*best, size));
        return best;
    }
    [[nodiscard]] bool isDropped(std::size_t sounding) const { return m_dropped[sounding]; }

private:
    static constexpr int impossible = 1'000;

    [[nodiscard]] int costOf(const Rect& box, bool centred) const
    {
        if (m_labels.meets(box))
            return impossible;
        int cost = 0;
        m_figures.forMet(box, [&](std::uint32_t i) {
            const std::uint32_t sounding = m_figureSounding[i];
            if (!m_dropped[sounding])
                cost = m_soundings[sounding].stays ? impossible : cost + 1;
            return cost < impossible;
        });
        // A name set over its own place lies on the symbol that marks it.
        if (!centred && cost < impossible)
            m_marks.forMet(box, [&](std::uint32_t) {
                cost += 2;
                return cost < impossible;
            });
        return cost;
    }
    void take(const Rect& box)
    {
        m_labels.add(box);
        m_figures.forMet(box, [&](std::uint32_t i) {
            m_dropped[m_figureSounding[i]] = true;
            return true;
        });
    }

    const std::vector<S57TextModel::Sounding>& m_soundings;
    std::vector<bool> m_dropped;
    double m_pixelsPerPoint;
    BoxGrid m_labels;
    BoxGrid m_figures;
    std::vector<std::uint32_t> m_figureSounding; ///< beside the boxes of the grid
    BoxGrid m_marks;
};
} // namespace

void S57TextModel::append(S57TextModel&& other)
{
    const auto move = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()),
                  std::make_move_iterator(from.end()));
        from.clear();
    };
    move(m_items, other.m_items);
    move(m_soundings, other.m_soundings);
    move(m_marks, other.m_marks);
}

void S57TextModel::draw(const TextMeasure& measure, double pixelsPerPoint, Canvas& canvas)
{
    std::ranges::stable_sort(
        m_items, {}, [](const Item& item) { return std::tuple(item.rank, item.cell, item.order); });
    Placement placement(m_soundings, m_marks, pixelsPerPoint);
    std::unordered_map<std::string, std::vector<Point>> placed;
    std::vector<std::pair<const Item*, Point>> labels;
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
        if (const auto place = placement.place(item, size)) {
            sameText.push_back(item.anchor);
            labels.emplace_back(&item, *place);
        }
    }
    for (std::size_t i = 0; i < m_soundings.size(); ++i)
        if (!placement.isDropped(i))
            canvas.placeText(m_soundings[i].figure, m_soundings[i].at);
    for (const auto& [item, place] : labels)
        canvas.placeText(item->figure, place);
}

} // namespace kelvox
