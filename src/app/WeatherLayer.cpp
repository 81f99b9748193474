#include "app/WeatherLayer.h"

#include "app/ChartView.h"
#include "app/Program.h"
#include "painting/GribPainter.h"

namespace kelvox {

WeatherLayer::WeatherLayer(ChartHost& host)
    : QObject(&host.window())
    , m_host(host)
    , m_picture(host.program().pool(), host.program().executor())
{
    const auto show = [this] { m_host.chart().update(); };
    const auto renew = [this, show] {
        m_picture.renew();
        show();
    };
    connect(&host.program(), &Program::weatherChanged, this, renew);
    connect(&host.program(), &Program::unitsChanged, this, renew);
    connect(&host.program(), &Program::schemeChanged, this, renew);
    connect(&m_picture, &LayerPicture::painted, this, show);
}

void WeatherLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const GribController& weather = m_host.program().weather();
    if (weather.model().points().empty()) {
        m_picture.clear();
        return;
    }
    const GribLook colors = GribLook::of(look.portrayal);
    if (look.medium == LayerLook::Medium::Paper) {
        painter.scale(1 / frame.pixelsPerPoint, 1 / frame.pixelsPerPoint);
        paintGrib(painter, weather, frame, colors);
        return;
    }
    m_picture.show(painter, frame, [&](const ViewFrame& /*larger*/) {
        return [shown = std::make_shared<const GribSnapshot>(weather),
                colors](QImage& picture, const ViewFrame& where) {
            QPainter worker(&picture);
            paintGrib(worker, shown->weather(), where, colors);
        };
    });
}

} // namespace kelvox
