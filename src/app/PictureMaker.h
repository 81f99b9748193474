#pragma once

#include "painting/ChartPainter.h"

#include <QObject>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace kelvox {

/// A finished picture and what it shows.
struct ChartPicture {
    QImage image;
    ViewFrame frame;
    std::uint64_t number = 0; ///< of the request
};

/// Paints pictures of the chart in the background, always the last one asked for: a newer request
/// cancels the one at work. Lives on the main thread and reports there.
class PictureMaker final : public QObject {
    Q_OBJECT
public:
    explicit PictureMaker(WorkerPool& pool, QObject* parent = nullptr);
    ~PictureMaker() override;

    /// The number of the request, ever growing.
    std::uint64_t request(std::shared_ptr<const ChartScene> scene, const ViewFrame& frame);

signals:
    void pictureReady(const kelvox::ChartPicture& picture);

private:
    struct Request {
        std::shared_ptr<const ChartScene> scene;
        ViewFrame frame;
        std::uint64_t number = 0;
    };
    void run();

    ChartPainter m_painter;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::optional<Request> m_next;
    std::uint64_t m_requests = 0; ///< main thread
    std::atomic<bool> m_cancelled = false;
    bool m_stopping = false;
    std::thread m_thread; ///< waits for requests; the pool does the work
};

} // namespace kelvox
