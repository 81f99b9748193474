#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "app/LayerPicture.h"

#include <QObject>

namespace kelvox {

/// The weather over the chart, painted on a worker.
class WeatherLayer final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    explicit WeatherLayer(ChartHost& host);

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

private:
    ChartHost& m_host;
    LayerPicture m_picture;
};

} // namespace kelvox
