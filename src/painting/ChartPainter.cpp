#include "painting/ChartPainter.h"

#include "painting/PainterCanvas.h"
#include "presentation/DisplayList.h"
#include "raster/RasterRenderer.h"

#include <algorithm>
#include <array>

namespace kelvox {

namespace {
/// Some features of one cell in drawing order: a piece of work for one thread.
struct Portion {
    const CellGeometry* geometry;
    std::uint32_t cellRank;
    double longitudeShift;
    std::vector<std::uint32_t> features;
};

constexpr std::size_t portionSize = 400;

std::vector<Portion> portionsOf(const ChartScene& scene, const Rect& box)
{
    std::vector<Portion> portions;
    for (std::size_t rank = scene.cells.size(); rank-- > 0;) {
        const auto& geometry = scene.cells[rank];
        for (const double shift : std::array{-360.0, 0.0, 360.0}) {
            const Rect shifted{box.left - shift, box.bottom, box.right - shift, box.top};
            if (!geometry->bounds().intersects(shifted))
                continue;
            const auto found = geometry->featuresIn(shifted);
            for (std::size_t from = 0; from < found.size(); from += portionSize) {
                const auto to = std::min(from + portionSize, found.size());
                portions.push_back({geometry.get(),
                                    static_cast<std::uint32_t>(rank),
                                    shift,
                                    {found.begin() + static_cast<std::ptrdiff_t>(from),
                                     found.begin() + static_cast<std::ptrdiff_t>(to)}});
            }
        }
    }
    return portions;
}

/// The raster charts in a band of rows that is empty so far.
void drawRasters(const ChartScene& scene, const ViewFrame& frame, int top, const ArgbImage& band)
{
    std::vector<const BSBChart*> charts;
    for (const auto& chart : scene.rasters)
        charts.push_back(chart.get());
    RasterRenderer::drawQuilt(
        charts,
        [&](Point pixel) {
            return frame.positionOf({pixel.x, pixel.y + top});
        },
        scene.palette, band);
}

/// What one thread drew of one portion.
struct Drawn {
    explicit Drawn(double pixelsPerPoint)
        : list(pixelsPerPoint)
    {
    }
    DisplayList list;
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
    QImage picture(frame.width, frame.height, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return {};

    // First every feature's instructions, then the pixels: each path is built once, and the bands
    // of rows only take what meets them.
    const auto portions = portionsOf(scene, frame.coveredBox(ViewPathBuilder::margin));
    std::vector<Drawn> drawn(portions.size(), Drawn(frame.pixelsPerPoint));
    m_pool.forEach(portions.size(), [&](std::size_t i) {
        if (cancelled)
            return;
        const Portion& portion = portions[i];
        S57ObjectRender(frame, *scene.portrayal, scene.settings)
            .drawFeatures(*portion.geometry, portion.features, portion.cellRank,
                          portion.longitudeShift, drawn[i].list, drawn[i].texts);
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
        if (scene.rasters.empty()) {
            std::fill(rows, end, background);
        } else {
            std::fill(rows, end, 0);
            drawRasters(scene, frame, top,
                        {{rows, end}, frame.width, bottom - top, static_cast<std::size_t>(stride)});
            std::replace(rows, end, 0U, background);
        }
        PainterCanvas canvas({rows, frame.width, bottom - top, stride}, top, *figures);
        for (const Drawn& part : drawn) {
            if (cancelled)
                return;
            part.list.replay(canvas, top, bottom);
        }
        labels.replay(canvas, top, bottom);
    });
    return cancelled ? QImage() : picture;
}

} // namespace kelvox
