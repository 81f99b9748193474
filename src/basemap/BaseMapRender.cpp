#include "basemap/BaseMapRender.h"

#include "chartview/Clipping.h"
#include "s57/CellGeometry.h"

#include <array>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double margin = 16; ///< pixels around the picture that are still drawn
constexpr double tolerance = 0.4; ///< pixels that a simplified shore may stray

DisplayColor mixed(DisplayColor a, DisplayColor b, double partOfB)
{
    const auto part = [&](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * partOfB));
    };
    return {part(a.red, b.red), part(a.green, b.green), part(a.blue, b.blue), 255};
}

/// One copy of the Earth in one picture.
class Drawing {
public:
    Drawing(const BaseMap& map, const ViewFrame& frame, double longitudeShift,
            const BaseMapColors& colors, Canvas& canvas)
        : m_map(map)
        , m_colors(colors)
        , m_canvas(canvas)
        , m_toPixels(frame.toPixels())
        , m_clip{-margin, -margin, frame.width + margin, frame.height + margin}
        , m_box(frame.coveredBox(margin))
    {
        m_box.left -= longitudeShift;
        m_box.right -= longitudeShift;
        m_toPixels.tx += m_toPixels.a * longitudeShift;
        m_toPixels.ty += m_toPixels.b * longitudeShift;
        const double pixelsPerOrdinate = std::hypot(m_toPixels.c, m_toPixels.d);
        m_minimumDetail =
            CellGeometry::detailCode(static_cast<float>(tolerance / pixelsPerOrdinate));
    }

    void draw(const BaseMap::Bin& bin)
    {
        const Rect box{bin.west, m_map.ordinate(bin, 0), bin.west + m_map.binDegrees(),
                       m_map.ordinate(bin, 65535)};
        if (!m_box.intersects(box))
            return;
        m_clipping = !isInside(box);
        m_land.clear();
        m_shore.clear();
        for (const auto& ring : m_map.rings(bin))
            if (ring.detail >= m_minimumDetail)
                append(bin, ring);
        m_canvas.fillArea(m_land, m_colors.land);
        m_canvas.strokeLine(m_shore, {.color = m_colors.shore});
    }

private:
    [[nodiscard]] bool isInside(const Rect& box) const
    {
        for (const double x : {box.left, box.right})
            for (const double y : {box.bottom, box.top})
                if (!m_clip.contains(m_toPixels.map({x, y})))
                    return false;
        return true;
    }
    void append(const BaseMap::Bin& bin, const BaseMap::Ring& ring)
    {
        const auto vertices = m_map.vertices(ring);
        const auto details = m_map.details(ring);
        m_points.clear();
        m_kept.clear();
        for (std::size_t i = 0; i < vertices.size(); ++i)
            if (details[i] >= m_minimumDetail) {
                m_kept.push_back(vertices[i]);
                m_points.push_back(m_toPixels.map(
                    {m_map.longitude(bin, vertices[i].x), m_map.ordinate(bin, vertices[i].y)}));
            }
        if (m_points.size() < 3 || isPuddle())
            return;
        appendShore();
        if (m_clipping)
            clipRing(m_clip, m_points, m_scratch);
        m_land.appendRing(m_points);
    }
    /// Whether the points go around water too small to be told from dirt: the lakes of the north
    /// would otherwise darken half a continent. Islands are kept, however small.
    [[nodiscard]] bool isPuddle() const
    {
        constexpr double smallest = 16; // square pixels
        double twice = 0; // the area, positive around water since pixels count downwards
        Point a = m_points.back();
        for (const Point b : m_points) {
            twice += a.x * b.y - b.x * a.y;
            a = b;
        }
        return twice > 0 && twice < 2 * smallest;
    }
    void appendShore()
    {
        bool open = false;
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const std::size_t next = i + 1 < m_points.size() ? i + 1 : 0;
            Point a = m_points[i];
            Point b = m_points[next];
            if (BaseMap::isBorder(m_kept[i], m_kept[next])
                || (m_clipping && !clipSegment(m_clip, a, b))) {
                open = false;
                continue;
            }
            if (!open || !(a == m_shore.currentPoint()))
                m_shore.moveTo(a);
            m_shore.lineTo(b);
            open = true;
        }
    }

    const BaseMap& m_map;
    const BaseMapColors& m_colors;
    Canvas& m_canvas;
    AffineTransform m_toPixels;
    Rect m_clip;
    Rect m_box; ///< of longitude and ordinate that is drawn
    std::uint8_t m_minimumDetail = 0;
    bool m_clipping = true;
    std::vector<BaseMap::Vertex> m_kept;
    std::vector<Point> m_points; ///< beside them
    std::vector<Point> m_scratch;
    Path m_land;
    Path m_shore;
};

/// Slanting lines that stand still on the Earth while the picture moves.
void drawHatching(const ViewFrame& frame, DisplayColor color, Canvas& canvas)
{
    constexpr double spacing = 24; // display points across the lines
    const double step = spacing * std::numbers::sqrt2 * frame.pixelsPerPoint;
    // Lines x + y = constant in pixels; each passes left to right or top to bottom.
    const Point anchor = frame.pixelOf(Point{});
    const double firstSum = std::fmod(anchor.x + anchor.y, step);
    const int count = static_cast<int>((frame.width + frame.height) / step) + 2;
    const Rect picture{0, 0, static_cast<double>(frame.width), static_cast<double>(frame.height)};
    Path lines;
    for (int i = 0; i < count; ++i) {
        const double sum = firstSum + i * step;
        Point from{sum, 0};
        Point to{sum - frame.height, static_cast<double>(frame.height)};
        if (!clipSegment(picture, from, to))
            continue;
        lines.moveTo(from);
        lines.lineTo(to);
    }
    canvas.strokeLine(lines, {.color = color});
}
} // namespace

BaseMapColors BaseMapColors::from(const S52CcieMap& colors)
{
    const auto colorOf = [&](std::string_view token) {
        const auto it = colors.find(token);
        return it == colors.end() ? DisplayColor{0, 0, 0, 0} : it->second.color;
    };
    const DisplayColor sea = colorOf("NODTA");
    const DisplayColor land = mixed(sea, colorOf("LANDA"), 0.55);
    return {.land = land,
            .shore = mixed(land, colorOf("CSTLN"), 0.8),
            .hatch = colorOf("CSTLN").withOpacity(0.35)};
}

void drawBaseMap(const BaseMap& map, const ViewFrame& frame, const BaseMapColors& colors,
                 Canvas& canvas)
{
    for (const double shift : std::array{-360.0, 0.0, 360.0}) {
        Drawing drawing(map, frame, shift, colors, canvas);
        for (const auto& bin : map.bins())
            drawing.draw(bin);
    }
    if (frame.view.scale() < map.coarsestGoodScale())
        drawHatching(frame, colors.hatch, canvas);
}

} // namespace kelvox
