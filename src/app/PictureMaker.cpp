#include "app/PictureMaker.h"

#include "base/Background.h"

namespace kelvox {

PictureMaker::PictureMaker(WorkerPool& pool, QObject* parent)
    : QObject(parent)
    , m_painter(pool)
    , m_thread([this] { run(); })
{
}

PictureMaker::~PictureMaker()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_cancelled = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

std::uint64_t PictureMaker::request(std::shared_ptr<const ChartScene> scene, const ViewFrame& frame)
{
    {
        const std::lock_guard lock(m_mutex);
        m_next = Request{std::move(scene), frame, ++m_requests};
        m_cancelled = true;
    }
    m_wake.notify_all();
    return m_requests;
}

void PictureMaker::run()
{
    workInBackground();
    for (;;) {
        Request request;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || m_next; });
            if (m_stopping)
                return;
            request = *std::move(m_next);
            m_next.reset();
            m_cancelled = false;
        }
        ChartPicture picture{m_painter.paint(*request.scene, request.frame, m_cancelled),
                             request.frame, request.number};
        if (!picture.image.isNull())
            QMetaObject::invokeMethod(
                this, [this, picture] { emit pictureReady(picture); }, Qt::QueuedConnection);
    }
}

} // namespace kelvox
