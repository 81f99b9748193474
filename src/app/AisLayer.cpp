#include "app/AisLayer.h"

#include "app/AisTargetDetails.h"
#include "app/ChartView.h"
#include "app/Program.h"
#include "app/Text.h"
#include "app/nav/SheetLine.h"
#include "base/Reversed.h"
#include "painting/LineFiller.h"

#include <QMenu>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace kelvox {

namespace {
constexpr double metresPerInch = 0.0254;
constexpr double tolerance = 10; // widget pixels about a symbol that still count as on it

/// Display points of pictures run upward, those of painters down.
QPointF painted(Point p)
{
    return {p.x, -p.y};
}

QSizeF sizeOf(const ViewFrame& frame)
{
    return QSizeF(frame.width, frame.height) / frame.pixelsPerPoint;
}

/// The frame's display points, from its upper left corner. Holds a reference to the frame.
AISView viewOf(const ViewFrame& frame)
{
    AISView view;
    view.pointAt = [toPoints = SheetToPoints(frame)](Position position) {
        const QPointF p = toPoints.nearest(sheetPlaceOf(position));
        return Point{p.x(), -p.y()};
    };
    view.pointsPerMetre = [&frame](double latitude) {
        return frame.view.dpi() / metresPerInch / frame.view.scale()
            / std::cos(latitude * std::numbers::pi / 180);
    };
    view.rotation = frame.view.rotate();
    const QSizeF size = sizeOf(frame);
    view.visible = {0, -size.height(), size.width(), 0};
    return view;
}

bool isOneOf(std::span<const std::int32_t> some, const AISSymbol& symbol)
{
    return std::ranges::find(some, symbol.mmsi) != some.end();
}

void paintHull(QPainter& painter, const AISSymbol& symbol, const QColor& line, const QColor& fill)
{
    const auto polygon = [](const Path& path) {
        QPolygonF result;
        for (const Point p : path.points())
            result << painted(p);
        return result;
    };
    painter.setPen(
        QPen(line, symbol.selected ? 3 : 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(fill);
    painter.drawPolygon(polygon(symbol.outline));
    if (!symbol.headingLine.isEmpty())
        painter.drawPolyline(polygon(symbol.headingLine));
    const auto strike = polygon(symbol.strike);
    for (qsizetype i = 0; i + 1 < strike.size(); i += 2)
        painter.drawLine(strike[i], strike[i + 1]);
}
} // namespace

AisLayer::AisLayer(LiveData& live, ChartHost& host)
    : m_live(live)
    , m_host(host)
    , m_others(host.program().pool(), host.program().executor())
{
    Program& program = host.program();
    const auto renew = [this] { m_others.renew(); };
    for (const auto signal :
         {&LiveData::targetsMoved, &LiveData::selectionChanged, &LiveData::proximityAlarmChanged})
        connect(&live, signal, this, renew);
    connect(&program, &Program::schemeChanged, this, renew);
    connect(&program, &Program::settingChanged, this, renew);
    connect(&m_others, &LayerPicture::painted, this, [this] {
        m_spare = std::exchange(m_kept, std::move(m_coming));
        m_host.chart().update();
    });
}

std::size_t AisLayer::shownTargets() const
{
    return m_kept ? m_kept->picture.symbols().size() : m_picture.symbols().size();
}

AisLayer::Style AisLayer::styleOf(const QPainter& painter, const ViewFrame& frame,
                                  const LayerLook& look) const
{
    Style style{.display = AISDisplay::fromSettings(m_live.settings()),
                .now = m_live.now(),
                .images = {.line = look.color("ARPAT"),
                           .fill = look.color("DEPDW"),
                           .text = look.color("UINFD"), // a thin green is hard to read
                           .halo = look.color("DEPDW"),
                           .scale = look.scale,
                           .pixelRatio = frame.pixelsPerPoint},
                .font = painter.font(),
                .alarm = look.color("DNGHL"),
                .mark = look.color("CHBLK"),
                .pointed = m_live.pointedTarget()};
    style.display.symbolLength *= look.scale;
    style.display.selected = m_live.selectedTarget();
    style.display.alarmed = m_live.ais().alarmTarget();
    style.font.setPixelSize(qRound(11 * look.scale));
    return style;
}

std::vector<std::int32_t> AisLayer::watched() const
{
    std::vector<std::int32_t> all;
    for (const auto& one :
         {m_live.selectedTarget(), m_live.pointedTarget(), m_live.ais().alarmTarget()})
        if (one && std::ranges::find(all, *one) == all.end())
            all.push_back(*one);
    return all;
}

LayerPicture::Paint AisLayer::snapshot(const Style& style, const ViewFrame& frame)
{
    auto targets = std::make_shared<std::vector<AISPosition>>();
    targets->reserve(m_live.ais().model().count());
    const AISView view = viewOf(frame);
    for (const auto* target : m_live.ais().model().positionEnumerator())
        if (AISPicture::isSeen(*target, view, style.display))
            targets->push_back(*target);
    const auto kept = m_spare ? std::move(m_spare) : std::make_shared<Kept>();
    kept->apart = watched();
    m_coming = kept;
    return [targets, kept, style, images = m_workersImages](QImage& image, const ViewFrame& where) {
        std::vector<const AISPosition*> all;
        for (const AISPosition& target : *targets)
            all.push_back(&target);
        kept->picture.update(all, viewOf(where), style.display, style.now);
        images->setLook(style.images, style.font);
        const PixelBuffer pixels{reinterpret_cast<std::uint32_t*>(image.bits()), image.width(),
                                 image.height(), static_cast<int>(image.bytesPerLine() / 4)};
        images->setTarget(pixels);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(where.pixelsPerPoint, where.pixelsPerPoint);
        paintThinVectors(pixels, style, *kept);
        paintSymbols(painter, style, *images, kept->picture, kept->apart);
        paintLabels(painter, sizeOf(where), *images, kept->picture, kept->apart);
    };
}

void AisLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const AISModel& model = m_live.ais().model();
    const Style style = styleOf(painter, frame, look);
    const AISView view = viewOf(frame);
    if (model.count() <= mostAtOnce || look.medium == LayerLook::Medium::Paper) {
        m_picture.update(model, view, style.display, style.now);
        if (look.medium == LayerLook::Medium::Screen) {
            m_others.clear();
            m_kept.reset();
            m_spare.reset();
        }
    } else {
        m_others.show(painter, frame,
                      [&](const ViewFrame& larger) { return snapshot(style, larger); });
        // Those that the picture leaves out stay until the next one has them.
        auto apart = watched();
        if (m_kept)
            apart.insert(apart.end(), m_kept->apart.begin(), m_kept->apart.end());
        std::ranges::sort(apart);
        apart.erase(std::unique(apart.begin(), apart.end()), apart.end());
        std::vector<const AISPosition*> targets;
        for (const auto mmsi : apart)
            if (const auto* target = model.find(mmsi))
                targets.push_back(target);
        m_picture.update(targets, view, style.display, style.now);
    }
    m_images.setLook(style.images, style.font);
    paintVectors(painter, style, m_picture);
    paintSymbols(painter, style, m_images, m_picture, {});
    paintLabels(painter, sizeOf(frame), m_images, m_picture, {});
}

void AisLayer::paintSymbols(QPainter& painter, const Style& style, AisImages& images,
                            const AISPicture& picture, std::span<const std::int32_t> apart)
{
    for (const AISSymbol& symbol : picture.symbols()) {
        if (symbol.own || isOneOf(apart, symbol))
            continue;
        const QPointF at = painted(symbol.at);
        const QColor line = symbol.alarmed ? style.alarm : style.images.line;
        if (symbol.shape == AISSymbol::Shape::TrueOutline)
            paintHull(painter, symbol, line, style.images.fill);
        else
            images.paintSymbol(painter, symbol, at, line);
        if (symbol.selected || symbol.mmsi == style.pointed) {
            const double room = 22 * style.images.scale;
            painter.setPen(QPen(style.mark, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(at, room, room);
        }
    }
}

void AisLayer::paintVectors(QPainter& painter, const Style& style, const AISPicture& picture)
{
    QList<QLineF> plain;
    QList<QLineF> alarmed;
    for (const AISSymbol& symbol : picture.symbols()) {
        if (symbol.own || symbol.courseVector.points().size() < 2)
            continue;
        (symbol.alarmed ? alarmed : plain) << QLineF(painted(symbol.courseVector.points()[0]),
                                                     painted(symbol.courseVector.points()[1]));
    }
    painter.setPen(QPen(style.images.line, 1.5, Qt::DashLine));
    painter.drawLines(plain);
    painter.setPen(QPen(style.alarm, 2, Qt::DashLine));
    painter.drawLines(alarmed);
}

// Dashes and width are for few: of thousands of vectors a thin line is seen better, too.
void AisLayer::paintThinVectors(const PixelBuffer& pixels, const Style& style, const Kept& kept)
{
    const double ratio = style.images.pixelRatio;
    Path lines;
    for (const AISSymbol& symbol : kept.picture.symbols()) {
        if (symbol.own || symbol.courseVector.points().size() < 2 || isOneOf(kept.apart, symbol))
            continue;
        for (const Point p : symbol.courseVector.points()) {
            const Point pixel{p.x * ratio, -p.y * ratio};
            p == symbol.courseVector.points()[0] ? lines.moveTo(pixel) : lines.lineTo(pixel);
        }
    }
    const QColor& line = style.images.line;
    LineFiller::stroke(pixels, lines, ratio,
                       {static_cast<std::uint8_t>(line.red()),
                        static_cast<std::uint8_t>(line.green()),
                        static_cast<std::uint8_t>(line.blue())},
                       0);
}

void AisLayer::paintLabels(QPainter& painter, QSizeF view, AisImages& images,
                           const AISPicture& picture, std::span<const std::int32_t> apart)
{
    LabelRoom room(view.width(), view.height());
    const auto place = [&](const AISSymbol& symbol, bool isPainted) {
        if (symbol.own || symbol.label.empty())
            return;
        const QPointF side = painted(symbol.labelAt);
        if (!room.isFree(side - QPointF(symbol.labelOnLeft ? 1 : 0, 0)))
            return; // most of them, where there are many
        const QSizeF size = images.labelSize(symbol.label);
        QPointF corner = side - QPointF(0, size.height() / 2);
        if (symbol.labelOnLeft)
            corner.rx() -= size.width();
        if (room.take(QRectF(corner, size)) && isPainted)
            images.paintLabel(painter, symbol.label, corner);
    };
    for (const AISSymbol& symbol : picture.symbols())
        if (isOneOf(apart, symbol))
            place(symbol, false);
    // From the topmost down: the selected target keeps its name.
    const auto symbols = picture.symbols();
    for (const AISSymbol& symbol : Reversed(symbols))
        if (!isOneOf(apart, symbol))
            place(symbol, true);
}

const AISPosition* AisLayer::targetAt(const ChartPointer& pointer, const ViewFrame& frame) const
{
    const AISModel& model = m_live.ais().model();
    const auto find = [&](std::optional<std::int32_t> mmsi) {
        const auto* target = mmsi ? model.find(*mmsi) : nullptr;
        return target && !target->own() ? target : nullptr;
    };
    const auto* best = find(m_picture.targetAt({pointer.at.x(), -pointer.at.y()}, tolerance));
    if (!m_kept)
        return best;
    const double ratio = frame.pixelsPerPoint;
    const QPointF there = moveBetween(frame, m_others.frame()).map(pointer.at * ratio)
        / m_others.frame().pixelsPerPoint;
    const auto* other = find(m_kept->picture.targetAt({there.x(), -there.y()}, tolerance));
    if (!best || !other)
        return best ? best : other;
    const auto distance = [&](const AISPosition& target) {
        return QLineF(pointOf(target.positionOnGPS(), frame), pointer.at).length();
    };
    return distance(*other) < distance(*best) ? other : best;
}

void AisLayer::open(std::int32_t mmsi)
{
    m_live.selectTarget(mmsi);
    auto* details = new AisTargetDetails(m_host, nullptr);
    m_host.showCard(details->title(), details);
}

std::optional<ChartItem> AisLayer::itemAt(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return std::nullopt;
    return ChartItem{.name = QString::fromStdString(target->name()),
                     .position = target->positionOnGPS(),
                     .open = [this, mmsi = target->mmsi()] { open(mmsi); }};
}

void AisLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return;
    menu.addAction(text("NSShowTarget", {QString::fromStdString(target->name())}), &menu,
                   [this, mmsi = target->mmsi()] { open(mmsi); });
    menu.addSeparator();
}

bool AisLayer::click(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return false;
    open(target->mmsi());
    return true;
}

bool AisLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return false;
    m_host.showPosition(target->positionOnGPS());
    return true;
}

} // namespace kelvox
