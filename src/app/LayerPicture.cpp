#include "app/LayerPicture.h"

#include "app/ChartLayer.h"

#include <QPointer>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kelvox {

namespace {
/// The parts of a picture that are not all empty. Most of a layer is, and skipping it costs less
/// than laying nothing over the chart.
std::vector<QRect> inkedParts(const QImage& image)
{
    constexpr int width = 128;
    constexpr int height = 32;
    std::vector<QRect> parts;
    for (int y = 0; y < image.height(); y += height) {
        const int rows = std::min(height, image.height() - y);
        bool joins = false; // the part to the left has ink, too
        for (int x = 0; x < image.width(); x += width) {
            const int columns = std::min(width, image.width() - x);
            bool inked = false;
            for (int row = y; row < y + rows && !inked; ++row) {
                const auto* pixels =
                    reinterpret_cast<const std::uint32_t*>(image.constScanLine(row));
                inked = std::any_of(pixels + x, pixels + x + columns,
                                    [](std::uint32_t pixel) { return pixel != 0; });
            }
            if (inked && joins)
                parts.back().setRight(x + columns - 1);
            else if (inked)
                parts.emplace_back(x, y, columns, rows);
            joins = inked;
        }
    }
    return parts;
}

bool sameSheet(const ViewFrame& a, const ViewFrame& b)
{
    return a.view.scale() == b.view.scale() && a.view.rotate() == b.view.rotate()
        && a.view.dpi() == b.view.dpi() && a.pixelsPerPoint == b.pixelsPerPoint;
}
} // namespace

LayerPicture::LayerPicture(WorkerPool& pool, Executor& main)
    : m_pool(pool)
    , m_main(main)
{
}

void LayerPicture::clear()
{
    m_made = {};
    m_spare = {};
    m_frame = {};
    m_isStale = true;
}

LayerPicture::Made LayerPicture::make(const Paint& paint, const ViewFrame& frame, QImage spare)
{
    const QSize size(frame.width, frame.height);
    if (spare.size() != size)
        spare = QImage(size, QImage::Format_ARGB32_Premultiplied);
    if (spare.isNull()) // no memory for one
        return {};
    spare.fill(Qt::transparent);
    paint(spare, frame);
    std::vector<QRect> inked = inkedParts(spare);
    return {std::move(spare), std::move(inked)};
}

bool LayerPicture::covers(const ViewFrame& frame) const
{
    if (m_frame.width == 0 || !sameSheet(m_frame, frame))
        return false;
    constexpr double reserve = margin / 2.0; // so that the next one comes before the edge does
    const QTransform move = moveBetween(frame, m_frame);
    const QRectF all(0, 0, m_frame.width, m_frame.height);
    const QRectF view(-reserve, -reserve, frame.width + 2 * reserve, frame.height + 2 * reserve);
    return all.contains(move.mapRect(view));
}

void LayerPicture::begin(const ViewFrame& frame, Paint paint)
{
    m_isStale = false;
    m_isPainting = true;
    m_pool.post([picture = QPointer(this), frame, paint = std::move(paint),
                 spare = std::exchange(m_spare, {}), &main = m_main]() mutable {
        main.post([picture, frame, made = make(paint, frame, std::move(spare))]() mutable {
            if (!picture)
                return;
            picture->m_isPainting = false;
            picture->m_spare = std::exchange(picture->m_made.image, {});
            picture->m_made = std::move(made);
            picture->m_frame = frame;
            emit picture->painted();
        });
    });
}

void LayerPicture::show(QPainter& painter, const ViewFrame& frame,
                        const std::function<Paint(const ViewFrame&)>& snapshot)
{
    if ((m_isStale || !covers(frame)) && !m_isPainting && frame.width > 0 && frame.height > 0) {
        const ViewFrame larger =
            ViewFrame::at(frame.placeOf({frame.width / 2.0, frame.height / 2.0}),
                          frame.view.scale(), frame.view.rotate(), frame.width + 2 * margin,
                          frame.height + 2 * margin, frame.pixelsPerPoint, frame.view.dpi());
        begin(larger, snapshot(larger));
    }
    if (m_made.image.isNull())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.scale(1 / frame.pixelsPerPoint, 1 / frame.pixelsPerPoint);
    const QTransform move = moveBetween(m_frame, frame);
    if (sameSheet(m_frame, frame)) {
        // Only moved: whole pixels keep it sharp.
        const QPoint by(qRound(move.dx()), qRound(move.dy()));
        const QRect view(0, 0, frame.width, frame.height);
        for (const QRect& part : m_made.inked)
            if (view.intersects(part.translated(by)))
                painter.drawImage(part.topLeft() + by, m_made.image, part);
    } else {
        painter.setTransform(move, true);
        for (const QRect& part : m_made.inked)
            painter.drawImage(part.topLeft(), m_made.image, part);
    }
    painter.restore();
}

} // namespace kelvox
