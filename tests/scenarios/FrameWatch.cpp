#include "scenarios/FrameWatch.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace kelvox {

FrameWatch::FrameWatch(int brightGrey)
    : m_brightGrey(brightGrey)
    , m_thread([this] { watch(); })
{
}

FrameWatch::~FrameWatch()
{
    m_ends = true;
    m_thread.join();
}

bool FrameWatch::isPossible()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

double FrameWatch::brightestShare() const
{
    const std::scoped_lock lock(m_mutex);
    return m_share;
}

QImage FrameWatch::brightestFrame() const
{
    const std::scoped_lock lock(m_mutex);
    return m_frame;
}

void FrameWatch::reset()
{
    const std::scoped_lock lock(m_mutex);
    m_share = 0;
    m_frame = {};
}

void FrameWatch::watch()
{
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    while (!m_ends && screen) {
        const auto cookie = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                          screen->width_in_pixels, screen->height_in_pixels, ~0U);
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(connection, cookie, nullptr), &std::free);
        if (!reply)
            break;
        const QImage frame(xcb_get_image_data(reply.get()), screen->width_in_pixels,
                           screen->height_in_pixels, QImage::Format_RGB32);
        std::size_t bright = 0;
        constexpr int step = 2; // every fourth pixel tells as much
        for (int y = 0; y < frame.height(); y += step) {
            const auto* line = reinterpret_cast<const QRgb*>(frame.constScanLine(y));
            for (int x = 0; x < frame.width(); x += step)
                bright += qGray(line[x]) > m_brightGrey ? 1 : 0;
        }
        const double share = static_cast<double>(bright) * step * step
            / (static_cast<double>(frame.width()) * frame.height());
        {
            const std::scoped_lock lock(m_mutex);
            if (share >= m_share) {
                m_share = share;
                m_frame = frame.copy();
            }
        }
        ++m_frames;
    }
    xcb_disconnect(connection);
}

} // namespace kelvox
