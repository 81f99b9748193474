#include "presentation/ViewPathBuilder.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
struct HalfPlane {
    bool alongX;
    double limit;
    bool keepAbove;

    [[nodiscard]] bool keeps(Point p) const
    {
        const double value = alongX ? p.x : p.y;
        return keepAbove ? value >= limit : value <= limit;
    }
    [[nodiscard]] Point crossing(Point a, Point b) const
    {
        const double t = alongX ? (limit - a.x) / (b.x - a.x) : (limit - a.y) / (b.y - a.y);
        return alongX ? Point{limit, a.y + t * (b.y - a.y)} : Point{a.x + t * (b.x - a.x), limit};
    }
};

std::array<HalfPlane, 4> sidesOf(const Rect& clip)
{
    return {HalfPlane{true, clip.left, true}, HalfPlane{true, clip.right, false},
            HalfPlane{false, clip.bottom, true}, HalfPlane{false, clip.top, false}};
}

/// The part of the segment inside the box; false when there is none (Liang and Barsky, 1984).
bool clipSegment(const Rect& clip, Point& a, Point& b)
{
    double enter = 0;
    double leave = 1;
    const Point d = b - a;
    const auto cut = [&](double step, double room) {
        if (step == 0)
            return room >= 0;
        const double t = room / step;
        if (step < 0)
            enter = std::max(enter, t);
        else
            leave = std::min(leave, t);
        return enter <= leave;
    };
    if (!cut(-d.x, a.x - clip.left) || !cut(d.x, clip.right - a.x) || !cut(-d.y, a.y - clip.bottom)
        || !cut(d.y, clip.top - a.y))
        return false;
    const Point start = a;
    if (leave < 1)
        b = start + d * leave;
    if (enter > 0)
        a = start + d * enter;
    return true;
}
} // namespace

ViewPathBuilder::ViewPathBuilder(const ViewFrame& frame, double longitudeShift, double reach)
    : m_toPixels(frame.toPixels())
    , m_clip{-reach, -reach, frame.width + reach, frame.height + reach}
{
    m_toPixels.tx += m_toPixels.a * longitudeShift;
    m_toPixels.ty += m_toPixels.b * longitudeShift;
    // Pixels for each unit of ordinate: the same in both directions to 0.16 %.
    const double pixelsPerOrdinate = std::hypot(m_toPixels.c, m_toPixels.d);
    m_minimumDetail = CellGeometry::detailCode(static_cast<float>(tolerance / pixelsPerOrdinate));
}

bool ViewPathBuilder::insideClip(const Rect& box) const
{
    for (const double x : {box.left, box.right})
        for (const double y : {box.bottom, box.top})
            if (!m_clip.contains(m_toPixels.map({x, y})))
                return false;
    return true;
}

void ViewPathBuilder::appendUse(const CellGeometry& geometry, const CellGeometry::Use& use)
{
    const auto& edge = geometry.edge(use);
    const auto vertices = geometry.vertices(edge);
    const auto details = geometry.details(edge);
    const auto append = [&](std::size_t i) {
        if (details[i] >= m_minimumDetail)
            m_points.push_back(m_toPixels.map({vertices[i].longitude, vertices[i].ordinate}));
    };
    if (use.reversed)
        for (std::size_t i = vertices.size(); i > 0; --i)
            append(i - 1);
    else
        for (std::size_t i = 0; i < vertices.size(); ++i)
            append(i);
}

void ViewPathBuilder::flushRing()
{
    if (m_clipping)
        for (const HalfPlane& side : sidesOf(m_clip)) {
            // Sutherland and Hodgman (1974): the pieces stay joined along the clip's border,
            // outside the picture.
            m_scratch.clear();
            for (std::size_t i = 0; i < m_points.size(); ++i) {
                const Point a = m_points[i == 0 ? m_points.size() - 1 : i - 1];
                const Point b = m_points[i];
                if (side.keeps(a) != side.keeps(b))
                    m_scratch.push_back(side.crossing(a, b));
                if (side.keeps(b))
                    m_scratch.push_back(b);
            }
            m_points.swap(m_scratch);
        }
    if (m_points.size() > 2) {
        m_path.moveTo(m_points.front());
        for (const Point p : std::span(m_points).subspan(1))
            m_path.lineTo(p);
    }
    m_points.clear();
}

void ViewPathBuilder::flushLine()
{
    bool open = false;
    for (std::size_t i = 1; i < m_points.size(); ++i) {
        Point a = m_points[i - 1];
        Point b = m_points[i];
        if (m_clipping && !clipSegment(m_clip, a, b)) {
            open = false;
            continue;
        }
        if (!open || !(a == m_path.currentPoint()))
            m_path.moveTo(a);
        m_path.lineTo(b);
        open = true;
    }
    m_points.clear();
}

const Path& ViewPathBuilder::areaPath(const CellGeometry& geometry, std::size_t feature)
{
    m_path.clear();
    m_points.clear();
    m_clipping = !insideClip(geometry.bounds(feature));
    for (const auto& use : geometry.uses(feature)) {
        const auto& edge = geometry.edge(use);
        const bool fromNode = use.reversed ? edge.hasEnd : edge.hasStart;
        if (use.startsRing && fromNode)
            flushRing();
        if (m_points.empty() && !fromNode && m_path.isEmpty())
            continue; // begins nowhere: left out as in the cell model's paths
        appendUse(geometry, use);
    }
    flushRing();
    return m_path;
}

template <typename Flush>
void ViewPathBuilder::walkLine(const CellGeometry& geometry, std::size_t feature, Flush flush)
{
    m_path.clear();
    m_points.clear();
    m_clipping = !insideClip(geometry.bounds(feature));
    bool begun = false;
    for (const auto& use : geometry.uses(feature)) {
        const auto& edge = geometry.edge(use);
        const bool fromNode = use.reversed ? edge.hasEnd : edge.hasStart;
        if (fromNode)
            flush();
        else if (!begun)
            continue;
        begun = true;
        appendUse(geometry, use);
    }
    flush();
}

const Path& ViewPathBuilder::linePath(const CellGeometry& geometry, std::size_t feature)
{
    walkLine(geometry, feature, [this] { flushLine(); });
    return m_path;
}

void ViewPathBuilder::flushDashes(Dashes dashes, double& along)
{
    const auto endRun = [&](double start) {
        if (m_scratch.size() > 1)
            appendDashes(m_scratch, dashes, start, m_path);
        m_scratch.clear();
    };
    double runStart = along;
    m_scratch.clear();
    for (std::size_t i = 1; i < m_points.size(); ++i) {
        Point a = m_points[i - 1];
        Point b = m_points[i];
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        if (m_clipping && !clipSegment(m_clip, a, b)) {
            endRun(runStart);
        } else {
            if (m_scratch.empty() || !(a == m_scratch.back())) {
                endRun(runStart);
                const Point from = m_points[i - 1];
                runStart = along + std::hypot(a.x - from.x, a.y - from.y);
                m_scratch.push_back(a);
            }
            m_scratch.push_back(b);
        }
        along += length;
    }
    endRun(runStart);
    m_points.clear();
}

const Path& ViewPathBuilder::dashedPath(const CellGeometry& geometry, std::size_t feature,
                                        Dashes dashes)
{
    double along = 0;
    walkLine(geometry, feature, [&] { flushDashes(dashes, along); });
    return m_path;
}

} // namespace kelvox
