#pragma once

#include "app/PictureMaker.h"
#include "app/nav/NavActions.h"
#include "navigation/RoutePlan.h"

#include <QObject>
#include <QPagedPaintDevice>

#include <memory>

namespace kelvox {

/// A printed page of the chart as it is seen, or of a route: its chart above, the table of its legs
/// below and on as many pages as it takes. The chart is painted in the background at the printer's
/// resolution, in the colours of the day. Deletes itself.
class PrintJob final : public QObject {
    Q_OBJECT
public:
    /// Asks for paper or PDF. @param route null for the chart as it is seen
    static void askAndStart(NavActions& actions, const RoutePointer& route);
    /// @param what names the output in the note at the end
    static PrintJob* start(NavActions& actions, const RoutePointer& route,
                           std::unique_ptr<QPagedPaintDevice> device, const QString& what);

signals:
    void finished(bool written);

private:
    PrintJob(NavActions& actions, RoutePointer route, std::unique_ptr<QPagedPaintDevice> device,
             QString what);
    [[nodiscard]] ViewFrame frameFor(QSize pixels) const;
    void paint(const ChartPicture& picture);
    void paintTable(QPainter& painter, int top);

    NavActions& m_actions;
    RoutePointer m_route;
    RoutePlan m_plan;
    std::unique_ptr<QPagedPaintDevice> m_device;
    QString m_what;
    std::shared_ptr<const Portrayal> m_portrayal;
    PictureMaker m_maker;
    QRect m_page; ///< device pixels within the margins
    int m_titleHeight = 0;
    double m_pixel = 1; ///< device pixels of one point of type
};

} // namespace kelvox
