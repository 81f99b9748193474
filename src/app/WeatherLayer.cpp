#include "app/WeatherLayer.h"

#include "app/ChartView.h"
#include "app/Program.h"
#include "painting/GribPainter.h"

namespace kelvox {

namespace {
constexpr auto restTime = std::chrono::milliseconds(120);
}

WeatherLayer::WeatherLayer(ChartHost& host)
    : QObject(&host.window())
    , m_host(host)
{
    m_rest.setSingleShot(true);
    connect(&m_rest, &QTimer::timeout, this, [this] {
        m_isStale = true;
        m_host.chart().update();
    });
    const auto renew = [this] {
        m_isStale = true;
        m_host.chart().update();
    };
    connect(&host.program(), &Program::weatherChanged, this, renew);
    connect(&host.program(), &Program::unitsChanged, this, renew);
    connect(&host.program(), &Program::schemeChanged, this, renew);
}

bool WeatherLayer::fits(const ViewFrame& frame) const
{
    return m_frame.width == frame.width && m_frame.height == frame.height
        && m_frame.pixelsPerPoint == frame.pixelsPerPoint && m_frame.center == frame.center
        && m_frame.view.scale() == frame.view.scale()
        && m_frame.view.rotate() == frame.view.rotate();
}

void WeatherLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    GribController& weather = m_host.program().weather();
    if (weather.model().points().empty()) {
        m_picture = {};
        return;
    }
    if (m_isStale || m_picture.isNull()) {
        m_isStale = false;
        m_picture = QImage(frame.width, frame.height, QImage::Format_ARGB32_Premultiplied);
        m_picture.fill(Qt::transparent);
        m_frame = frame;
        QPainter onPicture(&m_picture);
        const DisplayColor* const paper = look.portrayal.color("DEPDW");
        paintGrib(onPicture, weather, frame, paper ? *paper : DisplayColor{});
    }
    painter.scale(1 / frame.pixelsPerPoint, 1 / frame.pixelsPerPoint);
    if (fits(frame)) {
        painter.drawImage(0, 0, m_picture);
        return;
    }
    m_rest.start(restTime);
    painter.setTransform(moveBetween(m_frame, frame), true);
    painter.drawImage(0, 0, m_picture);
}

} // namespace kelvox
