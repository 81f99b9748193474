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
constexpr double figuresApart = 3; ///< display points between two soundings side by side

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
    Placement(const std::vector<S57TextModel::Sounding>& soundings,
              const std::vector<S57TextModel::Mark>& marks, double pixelsPerPoint)
        : m_soundings(soundings)
        , m_dropped(soundings.size(), false)
        , m_pixelsPerPoint(pixelsPerPoint)
    {
        for (const auto& mark : marks)
            if (!mark.box.isEmpty())
                (mark.cover == S57TextModel::Cover::Solid ? m_marks : m_areaMarks).add(mark.box);
        // Of two figures that would cross the shoaler is shown.
        std::vector<std::uint32_t> order(soundings.size());
        std::iota(order.begin(), order.end(), 0U);
        std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return soundings[i].depth; });
        for (const std::uint32_t i : order) {
            const Rect box = soundingBox(soundings[i], pixelsPerPoint);
            m_dropped[i] = m_figures.meets(box.grownBy(figuresApart * pixelsPerPoint, 0));
            if (m_dropped[i])
                continue;
            m_figures.add(box);
            m_figureSounding.push_back(i);
            // Beneath a symbol nobody reads it. It keeps its place all the same: no deeper figure
            // shall stand there instead.
            m_dropped[i] = !soundings[i].stays
                && m_marks.meets(box.grownBy(-box.width() / 4, -box.height() / 4));
        }
    }

    /// The middle of the label; nothing when there is no room.
    std::optional<Point> place(const S57TextModel::Item& item, Size size)
    {
        const double clear = 7 * m_pixelsPerPoint; // of the mark itself
        const double sideways = clear + size.width / 2;
        const double updown = clear + size.height / 2;
        const std::array<Candidate, 8> beside{{{{sideways, 0}},
                                               {{-sideways, 0}},
                                               {{sideways, -updown}},
                                               {{sideways, updown}},
                                               {{0, updown}},
                                               {{0, -updown}},
                                               {{-sideways, -updown}},
                                               {{-sideways, updown}}}};
        // Over its place; what tells of waters also a little above or below, off a symbol that
        // stands in their midst. The name of an island stays on it.
        const double near = 1.4 * size.height;
        const double off = 2.1 * size.height;
        const std::array<Candidate, 5> over{
            {{{0, 0}}, {{0, -near}, 1}, {{0, near}, 1}, {{0, -off}, 3}, {{0, off}, 3}}};
        std::span<const Candidate> candidates = beside;
        if (item.centred) {
            // Farther off only where that is still in or at the area.
            const bool isRoomy = off - size.height / 2 < item.across / 2;
            const bool isLand = item.rank == S57TextModel::Rank::Land;
            candidates = std::span(over).first(isLand ? 1 : isRoomy ? 5 : 3);
        }
        std::optional<Point> best;
        const bool isDetail = item.rank == S57TextModel::Rank::Detail;
        int least = isDetail ? 1 : impossible;
        for (const Candidate& candidate : candidates) {
            const Point middle = item.anchor + candidate.offset;
            const int away = isDetail ? 0 : candidate.cost;
            if (const int cost = costOf(boxAround(middle, size)) + away; cost < least) {
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
    /// A place for a label and how much worse it is than the best one.
    struct Candidate {
        Point offset; ///< pixels from the anchor to the label's middle
        int cost = 0; ///< in soundings left out
    };
    static constexpr int impossible = 1'000;
    static constexpr int markCost = 2;
    static constexpr int areaMarkCost = 4; ///< it stands in the midst of what is named

    [[nodiscard]] int costOf(const Rect& box) const
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
        if (cost == impossible)
            return cost;
        m_marks.forMet(box, [&](std::uint32_t) {
            cost += markCost;
            return true;
        });
        m_areaMarks.forMet(box, [&](std::uint32_t) {
            cost += areaMarkCost;
            return true;
        });
        return std::min(cost, impossible - 1);
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
    BoxGrid m_areaMarks;
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
