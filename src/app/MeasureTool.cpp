#include "app/MeasureTool.h"

#include "app/ChartView.h"
#include "app/GlassText.h"
#include "app/Text.h"
#include "app/nav/SheetLine.h"
#include "navigation/NavMath.h"
#include "navigation/ValueFormatters.h"

#include <QKeyEvent>

#include <cmath>

namespace kelvox {

namespace {
QString distanceText(double miles)
{
    return QString::fromStdString(NSDtwFormatter().stringForObjectValue(miles));
}

QString bearingText(double degrees)
{
    return QString::fromStdString(
        NSCogFormatter(textCatalog().strings()).stringForObjectValue(degrees));
}
} // namespace

MeasureTool::MeasureTool(ChartHost& host)
    : QObject(&host.window())
    , m_host(host)
{
}

void MeasureTool::start()
{
    m_points.clear();
    m_pointer.reset();
    m_host.setTool(this);
    m_host.chart().installEventFilter(this);
    m_host.chart().setFocus();
    m_host.showNote(text("NSMeasureHint"));
    emit changed();
}

void MeasureTool::startAt(Position position)
{
    start();
    m_points.push_back(position);
    emit changed();
}

void MeasureTool::stop()
{
    if (!isActive())
        return;
    m_host.chart().removeEventFilter(this);
    m_points.clear();
    m_host.setTool(nullptr);
    emit changed();
}

void MeasureTool::removeLast()
{
    if (m_points.empty())
        return;
    m_points.pop_back();
    m_host.chart().update();
    emit changed();
}

double MeasureTool::miles() const
{
    double miles = 0;
    for (std::size_t i = 1; i < m_points.size(); ++i)
        miles += NavMath::distanceFromPoint(m_points[i - 1], m_points[i]);
    return miles;
}

void MeasureTool::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    std::vector<Position> points = m_points;
    if (m_pointer && !points.empty())
        points.push_back(*m_pointer);
    const SheetToPoints toPoints(frame);
    const QColor ink = look.color("CHMGD");
    const GlassText letters{look.color("UINFD"), look.color("DEPDW"), 13 * look.scale, true};
    double total = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Position from = points[i - 1];
        const Position to = points[i];
        const double miles = NavMath::distanceFromPoint(from, to);
        total += miles;
        // Long legs are drawn as the great circles that they are measured along.
        constexpr double straight = 60; // nautical miles
        const int pieces = miles > straight ? 48 : 1;
        SheetLine line;
        for (int piece = 0; piece <= pieces; ++piece) {
            const float share = static_cast<float>(piece) / static_cast<float>(pieces);
            const Position place = piece == 0 ? from
                : piece == pieces             ? to
                                              : NavMath::intermediatePosition(from, to, share);
            line.add(place);
        }
        // Only what is seen: a pen pays for every pixel, also for those an ocean away.
        line.project(toPoints, 8 * look.scale, [&](const QPolygonF& part) {
            painter.setPen(QPen(letters.halo, 4 * look.scale, Qt::SolidLine, Qt::RoundCap));
            painter.drawPolyline(part);
            painter.setPen(QPen(ink, 2 * look.scale, Qt::SolidLine, Qt::RoundCap));
            painter.drawPolyline(part);
        });
        const QPointF a = pointOf(from, frame);
        const QPointF b = pointOf(to, frame);
        constexpr double visible = 10; // pixels: below it the figures would hide the point
        if (QLineF(a, b).length() < visible * look.scale)
            continue;
        const QString words = distanceText(miles) + QStringLiteral("  ")
            + bearingText(NavMath::bearingFromPoint(from, to));
        const QPointF along = b - a;
        const double length = std::hypot(along.x(), along.y());
        if (length > letters.width(words) * 0.6 || i + 1 == points.size()) {
            const QPointF beside = length > 0 ? QPointF(-along.y(), along.x()) / length : QPointF();
            const QPointF up = beside.y() > 0 ? -beside : beside;
            letters.paint(painter, (a + b) / 2 + up * 14 * look.scale, words);
        }
    }
    painter.setPen(QPen(letters.halo, 1.5 * look.scale));
    painter.setBrush(ink);
    for (const Position point : points)
        painter.drawEllipse(pointOf(point, frame), 4.5 * look.scale, 4.5 * look.scale);
    if (points.size() > 2)
        letters.paint(painter, pointOf(points.back(), frame) + QPointF(0, 24 * look.scale),
                      text("NSTotal", {distanceText(total)}));
}

bool MeasureTool::click(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    m_points.push_back(pointer.position);
    emit changed();
    return true;
}

bool MeasureTool::doubleClick(const ChartPointer& /*pointer*/, const ViewFrame& /*frame*/)
{
    return true; // the chart stays where it is; the clicks have set their points
}

void MeasureTool::hover(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    m_pointer = pointer.position;
}

bool MeasureTool::cancel()
{
    stop();
    return true;
}

bool MeasureTool::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Backspace) {
        removeLast();
        return true;
    }
    return QObject::eventFilter(object, event);
}

} // namespace kelvox
