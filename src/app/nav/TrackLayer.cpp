#include "app/nav/TrackLayer.h"

#include "app/ChartView.h"
#include "app/Text.h"
#include "app/nav/NavText.h"
#include "painting/LineFiller.h"

#include <QMenu>

#include <cmath>

namespace kelvox {

namespace {
constexpr std::size_t chunkPoints = 256;
constexpr std::size_t mostAtOnce = 1'000; ///< points that are painted with the chart
constexpr double reach = 8; ///< widget pixels at interface scale 1
constexpr double lineWidth = 1; // display points
constexpr double chosenWidth = 3;
} // namespace

struct TrackLayer::Style {
    QColor own; ///< the chart's colour of tracks
    bool isDay = true;
    std::size_t selected = Route::notFound;
    std::size_t hovered = Route::notFound;

    Style(const LayerLook& look, const NavSelection& selection)
        : own(look.color("PSTRK"))
        , isDay(look.color("DEPDW").lightness() > 127)
        , selected(selection.trackLine())
        , hovered(selection.hoveredTrackLine())
    {
    }
    /// The colour a line was recorded in; black stands for the chart's own colour of tracks.
    [[nodiscard]] QColor colorOf(const TrackColor& color) const
    {
        if (color == TrackColor{})
            return own;
        // By day as it is; in the dark no brighter than the chart's own track.
        const float share = isDay ? 1 : own.lightnessF();
        const auto part = [&](float value) { return std::clamp(value, 0.0F, 1.0F) * share; };
        return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue));
    }
    [[nodiscard]] double widthOf(std::size_t line) const
    {
        return line == selected || line == hovered ? chosenWidth : lineWidth;
    }
};

TrackLayer::TrackLayer(NavActions& actions)
    : m_actions(actions)
    , m_picture(actions.program().pool(), actions.program().executor())
{
    Program& program = actions.program();
    const auto renew = [this] { m_picture.renew(); };
    connect(&program, &Program::tracksChanged, this, [this] { m_layOut = true; });
    connect(&program, &Program::tracksChanged, this, renew);
    connect(&program, &Program::schemeChanged, this, renew);
    for (const auto signal : {&NavSelection::changed, &NavSelection::hoverChanged})
        connect(&actions.selection(), signal, this, renew);
    connect(&m_picture, &LayerPicture::painted, this, [this] {
        if (m_coming) {
            m_parts = std::move(m_coming);
            m_frame = m_picture.frame();
        }
        m_actions.host().chart().update();
    });
}

void TrackLayer::layOut()
{
    m_layOut = false;
    // Lines go by the number of their first point: what lies about no longer says which is which.
    m_frame = {};
    m_coming.reset();
    auto chunks = std::make_shared<Chunks>();
    m_points = 0;
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
        if (isStart || chunks->empty() || chunks->back().line != line
            || chunks->back().way.places.size() >= chunkPoints) {
            chunks->push_back({line, point->color, {}});
            if (before.isKnown())
                chunks->back().way.add(before); // the chunks of a line join
        }
        before = point->positionOnGPS();
        chunks->back().way.add(before);
        ++m_points;
    }
    m_chunks = std::move(chunks);
}

TrackLayer::Parts TrackLayer::partsOf(const Chunks& chunks, const ViewFrame& frame)
{
    Parts parts;
    const SheetToPoints toPoints(frame);
    for (const Chunk& chunk : chunks)
        chunk.way.project(toPoints, 8, [&](const QPolygonF& part) {
            parts.push_back({chunk.line, chunk.color, part});
        });
    return parts;
}

void TrackLayer::project(const ViewFrame& frame)
{
    if (m_frame.center == frame.center && m_frame.view.scale() == frame.view.scale()
        && m_frame.view.rotate() == frame.view.rotate() && m_frame.width == frame.width
        && m_frame.height == frame.height && m_frame.pixelsPerPoint == frame.pixelsPerPoint)
        return;
    m_frame = frame;
    m_parts = std::make_shared<Parts>(partsOf(*m_chunks, frame));
}

void TrackLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    m_interfaceScale = look.scale;
    if (!m_actions.program().settings().boolean("showTracks", true)) {
        m_parts = std::make_shared<Parts>();
        m_frame = {};
        m_picture.clear();
        return;
    }
    if (m_layOut)
        layOut();
    const Style style(look, m_actions.selection());
    if (look.medium == LayerLook::Medium::Paper) {
        paintParts(painter, partsOf(*m_chunks, frame), style);
    } else if (m_points <= mostAtOnce) {
        m_picture.clear();
        project(frame);
        paintParts(painter, *m_parts, style);
    } else {
        m_picture.show(painter, frame, [&](const ViewFrame& /*larger*/) {
            auto parts = std::make_shared<Parts>();
            m_coming = parts;
            return [parts, chunks = m_chunks, style](QImage& picture, const ViewFrame& where) {
                *parts = partsOf(*chunks, where);
                paintParts(picture, where.pixelsPerPoint, *parts, style);
            };
        });
    }
}

void TrackLayer::paintParts(QPainter& painter, const Parts& parts, const Style& style)
{
    painter.setBrush(Qt::NoBrush);
    for (const DrawnPart& part : parts) {
        // A pen of one pixel is an order of magnitude quicker than a wider one.
        painter.setPen(QPen(style.colorOf(part.color), style.widthOf(part.line)));
        if (part.points.size() == 1)
            painter.drawPoint(part.points.first());
        else
            painter.drawPolyline(part.points);
    }
}

void TrackLayer::paintParts(QImage& picture, double pixelsPerPoint, const Parts& parts,
                            const Style& style)
{
    const PixelBuffer buffer{reinterpret_cast<std::uint32_t*>(picture.bits()), picture.width(),
                             picture.height(), static_cast<int>(picture.bytesPerLine() / 4)};
    Path path;
    for (const DrawnPart& part : parts) {
        path.clear();
        for (const QPointF p : part.points)
            path.lineTo(Point{p.x(), p.y()} * pixelsPerPoint);
        if (part.points.size() == 1) // a dot
            path.lineTo(path.points().front() + Point{pixelsPerPoint, 0});
        const QColor color = style.colorOf(part.color);
        LineFiller::stroke(buffer, path, style.widthOf(part.line) * pixelsPerPoint,
                           {static_cast<std::uint8_t>(color.red()),
                            static_cast<std::uint8_t>(color.green()),
                            static_cast<std::uint8_t>(color.blue())},
                           0);
    }
}

std::optional<std::size_t> TrackLayer::lineAt(QPointF point, const ViewFrame& frame) const
{
    if (m_frame.width == 0)
        return std::nullopt;
    // A picture may still lie under the pointer as it was painted for another view.
    const QPointF there =
        moveBetween(frame, m_frame).map(point * frame.pixelsPerPoint) / m_frame.pixelsPerPoint;
    std::optional<std::size_t> best;
    double nearest = reach * m_interfaceScale;
    for (const DrawnPart& part : *m_parts)
        for (qsizetype i = 0; i + 1 < part.points.size(); ++i) {
            const QPointF along = part.points[i + 1] - part.points[i];
            const QPointF to = there - part.points[i];
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

std::optional<ChartItem> TrackLayer::itemAt(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto line = lineAt(pointer.at, frame);
    if (!line)
        return std::nullopt;
    const auto first = m_actions.program().tracks().track(*line);
    return ChartItem{text("NSTrackOf", {navtext::date(first ? first->date : std::nullopt)}),
                     pointer.position, [this, line] { m_actions.openTrack(*line); }};
}

void TrackLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto line = lineAt(pointer.at, frame);
    if (!line)
        return;
    menu.addAction(text("NSRouteFromTrack"), &m_actions,
                   [this, line] { m_actions.routeFromTrack(*line); });
    menu.addAction(text("NSDeleteTrackLine"), &m_actions,
                   [this, line] { m_actions.removeTrackLines({*line}); });
    menu.addSeparator();
}

bool TrackLayer::click(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto line = lineAt(pointer.at, frame);
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

bool TrackLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto line = lineAt(pointer.at, frame);
    if (!line)
        return false;
    m_actions.openTrack(*line);
    return true;
}

} // namespace kelvox
