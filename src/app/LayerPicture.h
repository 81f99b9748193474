#pragma once

#include "base/Executor.h"
#include "chartview/ViewFrame.h"
#include "painting/WorkerPool.h"

#include <QImage>
#include <QObject>
#include <QPainter>

#include <functional>
#include <vector>

namespace kelvox {

/// The picture of a layer that takes too long for the main thread. A worker paints it from a
/// snapshot, somewhat larger than the view; it is shown moved, turned and scaled with the chart
/// until the next one is ready. Main thread.
class LayerPicture final : public QObject {
    Q_OBJECT
public:
    /// Paints on a worker, onto a transparent picture of premultiplied pixels with the size of the
    /// frame; touches nothing but what it holds itself.
    using Paint = std::function<void(QImage& picture, const ViewFrame& frame)>;

    LayerPicture(WorkerPool& pool, Executor& main);

    /// What the picture shows is different now: the next show() has a new one painted.
    void renew() { m_isStale = true; }
    /// Gives the picture up, e.g. because there is nothing to show any more.
    void clear();
    /// Shows the last picture as it lies in the frame. Where that will not do any longer it asks
    /// for a snapshot, unless one is being painted already, of the frame that it is given.
    /// @param painter in display points of the frame
    void show(QPainter& painter, const ViewFrame& frame,
              const std::function<Paint(const ViewFrame&)>& snapshot);
    /// What the picture shown last was painted for; width 0 without a picture.
    [[nodiscard]] const ViewFrame& frame() const { return m_frame; }

signals:
    /// A new picture has been taken over and is to be shown.
    void painted();

private:
    static constexpr int margin = 160; ///< device pixels beyond each edge, for the next drag

    struct Made {
        QImage image;
        std::vector<QRect> inked;
    };
    /// @param spare a picture of before, to be painted over when it has the size
    [[nodiscard]] static Made make(const Paint& paint, const ViewFrame& frame, QImage spare);
    [[nodiscard]] bool covers(const ViewFrame& frame) const;
    void begin(const ViewFrame& frame, Paint paint);

    WorkerPool& m_pool;
    Executor& m_main;
    Made m_made;
    QImage m_spare;
    ViewFrame m_frame;
    bool m_isStale = true;
    bool m_isPainting = false; ///< one picture at a time; the next one shows what is then
};

} // namespace kelvox
