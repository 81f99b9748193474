#include "app/WeatherLayer.h"

#include "app/ChartView.h"
#include "app/Program.h"

#include <QPointer>

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

void WeatherLayer::begin(const ViewFrame& frame, const GribLook& look)
{
    m_isStale = false;
    m_isDrawing = true;
    Program& program = m_host.program();
    program.pool().post([layer = QPointer(this), frame, look, &main = program.executor(),
                         shown = std::make_shared<const GribSnapshot>(program.weather())] {
        QImage picture(frame.width, frame.height, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        {
            QPainter painter(&picture);
            paintGrib(painter, shown->weather(), frame, look);
        }
        main.post([layer, frame, picture = std::move(picture)] {
            if (!layer)
                return;
            layer->m_isDrawing = false;
            layer->m_picture = picture;
            layer->m_frame = frame;
            layer->m_host.chart().update();
        });
    });
}

void WeatherLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const GribController& weather = m_host.program().weather();
    if (weather.model().points().empty()) {
        m_picture = {};
        return;
    }
    const GribLook colors = GribLook::of(look.portrayal);
    painter.scale(1 / frame.pixelsPerPoint, 1 / frame.pixelsPerPoint);
    if (look.medium == LayerLook::Medium::Paper) {
        paintGrib(painter, weather, frame, colors);
        return;
    }
    if (m_isStale && !m_isDrawing)
        begin(frame, colors);
    if (m_picture.isNull())
        return;
    if (fits(frame)) {
        painter.drawImage(0, 0, m_picture);
        return;
    }
    if (!m_isDrawing)
        m_rest.start(restTime);
    painter.setTransform(moveBetween(m_frame, frame), true);
    painter.drawImage(0, 0, m_picture);
}

} // namespace kelvox
