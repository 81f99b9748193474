#include "app/nav/TrackLayer.h"

#include "app/ChartView.h"
#include "app/Text.h"
#include "app/nav/NavText.h"

#include <QMenu>

#include <cmath>

namespace kelvox {

namespace {
constexpr std::size_t chunkPoints = 256;
constexpr double reach = 8; ///< widget pixels at interface scale 1

/// The colour a line was recorded in; black stands for the chart's own colour of tracks.
QColor colorOf(const TrackColor& color, const LayerLook& look)
{
    if (color == TrackColor{})
        return look.color("PSTRK");
    // By day as it is; in the dark no brighter than the chart's own track.
    const bool day = look.color("DEPDW").lightness() > 127;
    const float share = day ? 1 : look.color("PSTRK").lightnessF();
    const auto part = [&](float value) { return std::clamp(value, 0.0F, 1.0F) * share; };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue));
}
} // namespace

TrackLayer::TrackLayer(NavActions& actions)
    : m_actions(actions)
{
    connect(&actions.program(), &Program::tracksChanged, this, [this] { m_layOut = true; });
}

void TrackLayer::layOut()
{
    m_layOut = false;
    m_scale = 0;
    m_chunks.clear();
    const TracksModel& tracks = m_actions.program().tracks();
    std::size_t index = 0;
    std::size_t line = 0;
    Position before;
    for (const auto& point : tracks.objectEnumerator()) {
        const bool isStart = tracks.isStart(index);
        if (isStart) {
            line = index;
            before = {};
        }
        ++index;
        if (!point->hasPosition())
            continue;
        if (isStart || m_chunks.empty() || m_chunks.back().line != line
            || m_chunks.back().way.places.size() >= chunkPoints) {
            m_chunks.push_back({line, point->color, {}});
            if (before.isKnown())
                m_chunks.back().way.add(before); // the chunks of a line join
        }
        before = point->positionOnGPS();
        m_chunks.back().way.add(before);
    }
}

void TrackLayer::project(const ViewFrame& frame)
{
    const Size size{static_cast<double>(frame.width), static_cast<double>(frame.height)};
    if (m_center == frame.center && m_scale == frame.view.scale()
        && m_rotation == frame.view.rotate() && m_size == size)
        return;
    m_center = frame.center;
    m_scale = frame.view.scale();
    m_rotation = frame.view.rotate();
    m_size = size;
    m_parts.clear();
    const SheetToPoints toPoints(frame);
    for (const Chunk& chunk : m_chunks)
        chunk.way.project(toPoints, 8, [&](const QPolygonF& part) {
            m_parts.push_back({chunk.line, chunk.color, part});
        });
}

void TrackLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    m_interfaceScale = look.scale;
    if (!m_actions.program().settings().boolean("showTracks", true)) {
        m_parts.clear();
        m_scale = 0;
        return;
    }
    if (m_layOut)
        layOut();
    project(frame);
    const NavSelection& selection = m_actions.selection();
    painter.setBrush(Qt::NoBrush);
    for (const DrawnPart& part : m_parts) {
        const bool chosen =
            part.line == selection.trackLine() || part.line == selection.hoveredTrackLine();
        // A pen of one pixel is an order of magnitude quicker than a wider one.
        painter.setPen(QPen(colorOf(part.color, look), chosen ? 3 : 1));
        if (part.points.size() == 1)
            painter.drawPoint(part.points.first());
        else
            painter.drawPolyline(part.points);
    }
}

std::optional<std::size_t> TrackLayer::lineAt(QPointF point) const
{
    std::optional<std::size_t> best;
    double nearest = reach * m_interfaceScale;
    for (const DrawnPart& part : m_parts)
        for (qsizetype i = 0; i + 1 < part.points.size(); ++i) {
            const QPointF along = part.points[i + 1] - part.points[i];
            const QPointF to = point - part.points[i];
            const double length = QPointF::dotProduct(along, along);
            const double share =
                length > 0 ? std::clamp(QPointF::dotProduct(to, along) / length, 0.0, 1.0) : 0;
            const QPointF off = to - along * share;
            if (const double distance = std::hypot(off.x(), off.y()); distance < nearest) {
                nearest = distance;
                best = part.line;
            }
        }
    return best;
}

std::optional<ChartItem> TrackLayer::itemAt(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const auto line = lineAt(pointer.at);
    if (!line)
        return std::nullopt;
    const auto first = m_actions.program().tracks().track(*line);
    return ChartItem{text("NSTrackOf", {navtext::date(first ? first->date : std::nullopt)}),
                     pointer.position, [this, line] { m_actions.openTrack(*line); }};
}

void TrackLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const auto line = lineAt(pointer.at);
    if (!line)
        return;
    menu.addAction(text("NSRouteFromTrack"), &m_actions,
                   [this, line] { m_actions.routeFromTrack(*line); });
    menu.addAction(text("NSDeleteTrackLine"), &m_actions,
                   [this, line] { m_actions.removeTrackLines({*line}); });
    menu.addSeparator();
}

bool TrackLayer::click(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const auto line = lineAt(pointer.at);
    if (!line)
        return false;
    m_actions.selection().selectTrackLine(*line);
    const auto point = m_actions.program().trackController().selectPosition(
        pointer.position.longitude, pointer.position.latitude);
    if (point) {
        QString words = navtext::date(point->date);
        for (const auto& [label, value] :
             {std::pair{"SOG", navtext::speed(point->sog)},
              std::pair{"COG", navtext::bearing(m_actions.program(), point->cog)}})
            words += QStringLiteral("   %1 %2").arg(QLatin1String(label), value);
        m_actions.host().showNote(words);
    }
    return true;
}

bool TrackLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const auto line = lineAt(pointer.at);
    if (!line)
        return false;
    m_actions.openTrack(*line);
    return true;
}

} // namespace kelvox
