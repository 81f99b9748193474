#pragma once

#include <QImage>

#include <atomic>
#include <mutex>
#include <thread>

namespace kelvox {

/// Looks at the screen as fast as it can while it lives, over a connection and on a thread of its
/// own: it sees what stands there for one frame only, even while the program is busy.
class FrameWatch {
public:
    /// @param brightGrey from which grey value a pixel counts as bright
    explicit FrameWatch(int brightGrey);
    ~FrameWatch();

    /// Whether there is a screen to look at: only that of X11.
    [[nodiscard]] static bool isPossible();

    [[nodiscard]] int frames() const { return m_frames; }
    [[nodiscard]] double brightestShare() const; ///< of all frames since the last reset()
    [[nodiscard]] QImage brightestFrame() const;
    void reset();

private:
    void watch();

    const int m_brightGrey;
    std::atomic<bool> m_ends = false;
    std::atomic<int> m_frames = 0;
    mutable std::mutex m_mutex;
    double m_share = 0;
    QImage m_frame;
    std::thread m_thread;
};

} // namespace kelvox
