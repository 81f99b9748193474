#include "painting/ChartPainter.h"

#include "painting/PainterCanvas.h"
#include "presentation/DisplayList.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace kelvox {

namespace {
/// Some features of one cell in drawing order: a piece of work for one thread.
struct Portion {
    const CellGeometry* geometry;
    double longitudeShift;
    std::vector<std::uint32_t> features;
};

constexpr std::size_t portionSize = 400;

std::vector<Portion> portionsOf(const ChartScene& scene, const Rect& box)
{
    std::vector<Portion> portions;
    for (const auto& geometry : scene.cells | std::views::reverse)
        for (const double shift : std::array{-360.0, 0.0, 360.0}) {
            const Rect shifted{box.left - shift, box.bottom, box.right - shift, box.top};
            if (!geometry->bounds().intersects(shifted))
                continue;
            const auto found = geometry->featuresIn(shifted);
            for (std::size_t from = 0; from < found.size(); from += portionSize) {
                const auto to = std::min(from + portionSize, found.size());
                portions.push_back({geometry.get(),
                                    shift,
                                    {found.begin() + static_cast<std::ptrdiff_t>(from),
                                     found.begin() + static_cast<std::ptrdiff_t>(to)}});
            }
        }
    return portions;
}
} // namespace

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
    std::vector<DisplayList> lists(portions.size());
    m_pool.forEach(portions.size(), [&](std::size_t i) {
        if (cancelled)
            return;
        const Portion& portion = portions[i];
        S57ObjectRender(frame, scene.colors, scene.settings)
            .drawFeatures(*portion.geometry, portion.features, portion.longitudeShift, lists[i]);
    });

    picture.bits(); // detached here, once, not by the workers
    auto* pixels = reinterpret_cast<std::uint32_t*>(picture.bits());
    const int stride = static_cast<int>(picture.bytesPerLine() / 4);
    const int bands = std::clamp(frame.height / 64, 1, static_cast<int>(m_pool.size()) * 4);
    const QRgb background = toQColor(scene.colors.noDataColor).rgb();
    m_pool.forEach(static_cast<std::size_t>(bands), [&](std::size_t i) {
        const int top = static_cast<int>(i) * frame.height / bands;
        const int bottom = (static_cast<int>(i) + 1) * frame.height / bands;
        std::uint32_t* rows = pixels + static_cast<std::ptrdiff_t>(top) * stride;
        std::fill(rows, rows + static_cast<std::ptrdiff_t>(bottom - top) * stride, background);
        PainterCanvas canvas({rows, frame.width, bottom - top, stride}, top, frame.pixelsPerPoint);
        for (const DisplayList& list : lists) {
            if (cancelled)
                return;
            list.replay(canvas, top, bottom);
        }
    });
    return cancelled ? QImage() : picture;
}

} // namespace kelvox
