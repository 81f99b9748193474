#include "presentation/ViewPathBuilder.h"

#include "chartview/Clipping.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

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
        clipRing(m_clip, m_points, m_scratch);
    m_path.appendRing(m_points);
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
