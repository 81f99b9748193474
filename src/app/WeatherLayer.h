#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "painting/GribPainter.h"

#include <QImage>
#include <QObject>
#include <QTimer>

namespace kelvox {

/// The weather over the chart. Its picture is drawn on a worker and kept while the view stands
/// still; while it moves the last one moves along, and a new one is drawn when it rests.
class WeatherLayer final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    explicit WeatherLayer(ChartHost& host);

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

private:
    [[nodiscard]] bool fits(const ViewFrame& frame) const;
    void begin(const ViewFrame& frame, const GribLook& look);

    ChartHost& m_host;
    QImage m_picture;
    ViewFrame m_frame; ///< that the picture was drawn for
    QTimer m_rest;
    bool m_isStale = true;
    bool m_isDrawing = false; ///< one picture at a time; the next one shows what is then
};

} // namespace kelvox
