#include "app/ChartNotesLayer.h"

#include "app/GlassText.h"
#include "app/Text.h"

#include <QLocale>

#include <cmath>

namespace kelvox {

namespace {
/// Even-odd over all rings, by the crossings of a ray to the east.
bool ringsContain(const std::vector<std::vector<Point>>& rings, Point p)
{
    bool inside = false;
    for (const auto& ring : rings)
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Point a = ring[i];
            const Point b = ring[(i + 1) % ring.size()];
            if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y))
                inside = !inside;
        }
    return inside;
}

bool covers(const ChartRecord& chart, Position position)
{
    for (const double shift : {0.0, 360.0}) {
        const Point p{position.longitude + shift, position.latitude};
        if (chart.bounds.contains(p) && (chart.coverage.empty() || ringsContain(chart.coverage, p)))
            return true;
    }
    return false;
}
} // namespace

std::optional<int> ChartNotesLayer::finestScaleAt(const ChartRecords& records, Position position)
{
    std::optional<int> finest;
    for (const auto& chart : records)
        if (chart->isUsable() && covers(*chart, position)
            && (!finest || *finest == 0 || (chart->scale > 0 && chart->scale < *finest)))
            finest = chart->scale;
    return finest;
}

void ChartNotesLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    constexpr double tolerated = 1.5; // a little larger is how charts are read anyway
    const ChartRecords& records = m_records();
    if (records.empty())
        return; // the status line says so
    // Of what can be seen.
    const double x = (frame.width / frame.pixelsPerPoint + m_covered()) / 2;
    Position middle = frame.positionOf({x * frame.pixelsPerPoint, frame.height / 2.0});
    middle.longitude -= 360 * std::floor((middle.longitude + 180) / 360);
    const auto finest = finestScaleAt(records, middle);
    const double enlarged = finest ? *finest / static_cast<double>(frame.view.scale()) : 0;
    QString words;
    if (!finest)
        words = text("NSNoChartHere");
    else if (enlarged > tolerated)
        words = text("NSOverscale",
                     {QString::number(enlarged, 'f', enlarged < 10 ? 1 : 0),
                      QLocale(QLocale::English).toString(*finest)});
    if (words.isEmpty())
        return;
    const GlassText letters{look.color("CHMGD"), look.color("DEPDW"), 14 * look.scale, true};
    letters.paint(painter, {x, frame.height / frame.pixelsPerPoint - 50 * look.scale}, words);
}

} // namespace kelvox
