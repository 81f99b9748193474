#include "painting/ChartPainter.h"

#include "basemap/BaseMapRender.h"
#include "painting/PainterCanvas.h"
#include "presentation/DisplayList.h"
#include "raster/RasterRenderer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
/// Some features of one cell in drawing order: a piece of work for one thread.
struct Work {
    const CellGeometry* geometry;
    std::uint32_t cellRank;
    double longitudeShift;
    std::size_t cellsAbove; ///< how many of the covered waters are those of finer cells
    std::vector<std::uint32_t> features;
};

constexpr std::size_t portionSize = 400;
/// Display points around the picture from which texts are gathered: twice the length of a long
/// name, for a label gives way to one that itself has given way to a third.
constexpr double textMargin = 448;

double textReach(const ViewFrame& frame)
{
    return textMargin * frame.pixelsPerPoint;
}

Rect boxAroundPicture(const ViewFrame& frame, double reach)
{
    return {-reach, -reach, frame.width + reach, frame.height + reach};
}

/// Whether a path that is clipped to a box fills all of it. With a hole it never does.
bool fills(const Path& rings, const Rect& box)
{
    if (rings.subPathCount() != 1)
        return false;
    double twice = 0;
    Point a = rings.points().back();
    for (const Point b : rings.points()) {
        twice += a.x * b.y - b.x * a.y;
        a = b;
    }
    return std::abs(twice) / 2 > box.width() * box.height() * (1 - 1e-9);
}

/// What is to be drawn of a scene, the cell that lies lowest first.
struct Plan {
    std::vector<Work> works;
    std::vector<CoveredWaters> covered; ///< of the finest cell first
};

Plan planOf(const ChartScene& scene, const ViewFrame& frame)
{
    Plan plan;
    const Rect box = frame.coveredBox(textReach(frame));
    const Rect clip = boxAroundPicture(frame, textReach(frame));
    bool full = false;
    for (std::size_t rank = 0; rank < scene.cells.size() && !full; ++rank) {
        const auto& geometry = scene.cells[rank];
        const std::size_t above = plan.covered.size();
        for (const double shift : std::array{-360.0, 0.0, 360.0}) {
            const Rect shifted{box.left - shift, box.bottom, box.right - shift, box.top};
            if (!geometry->bounds().intersects(shifted))
                continue;
            const auto found = geometry->featuresIn(shifted);
            for (auto& waters : coveredWaters(*geometry, found, frame, shift, textReach(frame))) {
                full = full || fills(waters.rings, clip);
                plan.covered.push_back(std::move(waters));
            }
            // Gathered from the top down, drawn from the bottom up: the portions go in backwards.
            for (std::size_t to = found.size(); to > 0;) {
                const std::size_t from = (to - 1) / portionSize * portionSize;
                plan.works.push_back({geometry.get(),
                                      static_cast<std::uint32_t>(rank),
                                      shift,
                                      above,
                                      {found.begin() + static_cast<std::ptrdiff_t>(from),
                                       found.begin() + static_cast<std::ptrdiff_t>(to)}});
                to = from;
            }
        }
    }
    std::ranges::reverse(plan.works);
    return plan;
}

/// The raster charts over what a band of rows shows so far.
void drawRasters(const ChartScene& scene, const ViewFrame& frame, int top,
                 std::span<std::uint32_t> rows, std::size_t stride)
{
    // They are drawn where a picture is still empty, so they get one of their own.
    std::vector<std::uint32_t> pixels(rows.size(), 0);
    const ArgbImage band{pixels, frame.width, static_cast<int>(rows.size() / stride), stride};
    std::vector<const BSBChart*> charts;
    for (const auto& chart : scene.rasters)
        charts.push_back(chart.get());
    RasterRenderer::drawQuilt(
        charts,
        [&](Point pixel) {
            return frame.positionOf({pixel.x, pixel.y + top});
        },
        scene.palette, band);
    std::ranges::transform(
        pixels, rows, rows.begin(),
        [](std::uint32_t above, std::uint32_t below) { return above != 0 ? above : below; });
}

/// What one thread drew of one portion.
struct Drawn {
    explicit Drawn(double pixelsPerPoint)
        : ground(pixelsPerPoint)
        , marks(pixelsPerPoint)
    {
    }
    DisplayList ground;
    DisplayList marks;
    S57TextModel texts;
};
} // namespace

std::shared_ptr<FigureImages> ChartPainter::figuresFor(const ChartScene& scene,
                                                       double pixelsPerPoint) const
{
    const std::lock_guard lock(m_mutex);
    if (!m_figures || m_figures->pixelsPerPoint() != pixelsPerPoint
        || m_portrayal.lock() != scene.portrayal) {
        m_figures = std::make_shared<FigureImages>(pixelsPerPoint);
        m_portrayal = scene.portrayal;
    }
    return m_figures;
}

QImage ChartPainter::paint(const ChartScene& scene, const ViewFrame& frame) const
{
    const std::atomic<bool> never = false;
    return paint(scene, frame, never);
}

QImage ChartPainter::paint(const ChartScene& scene, const ViewFrame& frame,
                           const std::atomic<bool>& cancelled) const
{
    QImage picture(frame.width, frame.height, QImage::Format_RGB32);
    if (picture.isNull())
        return {};

    // First every feature's instructions, then the pixels: each path is built once, and the bands
    // of rows only take what meets them.
    const Plan plan = planOf(scene, frame);
    const S57ObjectRender render(frame, *scene.portrayal, scene.settings);
    std::vector<Drawn> drawn(plan.works.size(), Drawn(frame.pixelsPerPoint));
    DisplayList baseMap(frame.pixelsPerPoint);
    m_pool.forEach(plan.works.size() + 1, [&](std::size_t i) {
        if (cancelled)
            return;
        if (i == plan.works.size()) {
            if (scene.baseMap)
                drawBaseMap(*scene.baseMap, frame, BaseMapColors::from(scene.portrayal->colors),
                            baseMap);
            return;
        }
        const Work& work = plan.works[i];
        render.drawFeatures({.geometry = *work.geometry,
                             .features = work.features,
                             .cellRank = work.cellRank,
                             .longitudeShift = work.longitudeShift,
                             .covered = std::span(plan.covered).first(work.cellsAbove),
                             .textBox = boxAroundPicture(frame, textReach(frame))},
                            {drawn[i].ground, drawn[i].marks, drawn[i].texts});
    });
    const auto figures = figuresFor(scene, frame.pixelsPerPoint);
    S57TextModel texts;
    for (Drawn& part : drawn)
        texts.append(std::move(part.texts));
    DisplayList labels(frame.pixelsPerPoint);
    if (!cancelled)
        texts.draw(*figures, frame.pixelsPerPoint, labels);

    picture.bits(); // detached here, once, not by the workers
    auto* pixels = reinterpret_cast<std::uint32_t*>(picture.bits());
    const int stride = static_cast<int>(picture.bytesPerLine() / 4);
    const int bands = std::clamp(frame.height / 64, 1, static_cast<int>(m_pool.size()) * 4);
    const std::uint32_t background =
        toQColor(RenderColors::from(scene.portrayal->colors).noDataColor).rgb();
    m_pool.forEach(static_cast<std::size_t>(bands), [&](std::size_t i) {
        const int top = static_cast<int>(i) * frame.height / bands;
        const int bottom = (static_cast<int>(i) + 1) * frame.height / bands;
        std::uint32_t* rows = pixels + static_cast<std::ptrdiff_t>(top) * stride;
        std::uint32_t* const end = rows + static_cast<std::ptrdiff_t>(bottom - top) * stride;
        std::fill(rows, end, background);
        PainterCanvas canvas({rows, frame.width, bottom - top, stride}, top, *figures);
        baseMap.replay(canvas, top, bottom);
        if (!scene.rasters.empty())
            drawRasters(scene, frame, top, {rows, end}, static_cast<std::size_t>(stride));
        for (const Drawn& part : drawn) {
            if (cancelled)
                return;
            part.ground.replay(canvas, top, bottom);
        }
        for (const Drawn& part : drawn)
            part.marks.replay(canvas, top, bottom);
        labels.replay(canvas, top, bottom);
    });
    return cancelled ? QImage() : picture;
}

} // namespace kelvox
