#include "app/Gauges.h"

#include "app/Text.h"
#include "navigation/PositionFormatter.h"
#include "navigation/ValueFormatters.h"

#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
using Instrument = InstrumentsController::Instrument;

struct KindName {
    GaugeKind kind;
    const char* id;
};
constexpr KindName kinds[] = {
    {GaugeKind::SpeedOverGround, "sog"}, {GaugeKind::CourseOverGround, "cog"},
    {GaugeKind::Depth, "depth"},         {GaugeKind::Wind, "wind"},
    {GaugeKind::Heading, "heading"},     {GaugeKind::SpeedThroughWater, "stw"},
    {GaugeKind::Temperature, "water"},   {GaugeKind::VelocityMadeGood, "vmg"},
    {GaugeKind::Position, "position"},   {GaugeKind::Time, "time"}};
constexpr const char* standardChoice = "sog,cog,depth,wind";
constexpr const char* shownKey = "instruments.shown";

/// Figures and unit apart: "12.3 m" is drawn large and small.
void splitInto(GaugeReading& reading, const std::string& value)
{
    const QString whole = QString::fromStdString(value);
    qsizetype end = 0;
    while (end < whole.size()
           && (whole[end].isDigit() || QStringLiteral("-.,:").contains(whole[end])))
        ++end;
    reading.number = whole.left(end);
    reading.unit = whole.mid(end).trimmed();
}

int staleMinutes(bool stale, double age)
{
    constexpr double longest = 99; // there is no more room, and it is no better by then
    return stale ? static_cast<int>(std::clamp(age / 60, 0.0, longest)) : 0;
}

template <typename Formatter>
void showInstrument(GaugeReading& reading, const InstrumentsController& instruments,
                    Instrument instrument, const Formatter& formatter)
{
    const float value = instruments.value(instrument);
    reading.stale = instruments.isStale(instrument);
    reading.minutes = staleMinutes(reading.stale, instruments.age(instrument).value_or(0));
    if (isKnown(value))
        splitInto(reading, formatter.stringForObjectValue(value));
}

QFont sized(QFont font, double pixels, QFont::Weight weight = QFont::Normal)
{
    font.setPixelSize(std::max(1, qRound(pixels)));
    font.setWeight(weight);
    return font;
}

/// A direction from the centre; 0 is up, clockwise.
QPointF direction(double degrees, double length)
{
    const double angle = degrees * std::numbers::pi / 180;
    return {std::sin(angle) * length, -std::cos(angle) * length};
}
} // namespace

const std::vector<GaugeKind>& allGauges()
{
    static const std::vector<GaugeKind> all = [] {
        std::vector<GaugeKind> result;
        for (const KindName& entry : kinds)
            result.push_back(entry.kind);
        return result;
    }();
    return all;
}

std::string gaugeId(GaugeKind kind)
{
    return std::ranges::find(kinds, kind, &KindName::kind)->id;
}

QString gaugeName(GaugeKind kind)
{
    return text("NSGauge." + gaugeId(kind));
}

std::vector<GaugeKind> chosenGauges(const Settings& settings)
{
    std::vector<GaugeKind> result;
    const QString ids = QString::fromStdString(settings.text(shownKey, standardChoice));
    for (const QString& id : ids.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const auto* entry = std::ranges::find_if(
            kinds, [&](const KindName& other) { return id.trimmed() == QLatin1String(other.id); });
        if (entry != std::end(kinds) && std::ranges::find(result, entry->kind) == result.end())
            result.push_back(entry->kind);
    }
    return result;
}

void chooseGauges(Settings& settings, const std::vector<GaugeKind>& gauges)
{
    QStringList ids;
    for (const GaugeKind kind : gauges)
        ids << QString::fromStdString(gaugeId(kind));
    settings.set(shownKey, ids.join(QLatin1Char(',')).toStdString());
}

GaugeReading readGauge(Program& program, GaugeKind kind)
{
    LiveData& live = program.live();
    const GPSController& gps = live.gps();
    const InstrumentsController& instruments = live.instruments();
    const Strings& strings = textCatalog().strings();
    GaugeReading reading;
    reading.label = text("NSGaugeLabel." + gaugeId(kind));
    reading.stale = gps.positionIsStale();
    reading.minutes = staleMinutes(reading.stale, gps.positionAge());
    switch (kind) {
    case GaugeKind::SpeedOverGround:
        splitInto(reading, gps.sog());
        break;
    case GaugeKind::CourseOverGround:
        splitInto(reading, gps.cog());
        break;
    case GaugeKind::Heading:
        showInstrument(reading, instruments, Instrument::Heading, NSCogFormatter(strings));
        if (isKnown(instruments.value(Instrument::Heading)))
            reading.degrees = instruments.value(Instrument::Heading);
        break;
    case GaugeKind::SpeedThroughWater:
        showInstrument(reading, instruments, Instrument::Speed, NSSogFormatter());
        break;
    case GaugeKind::Depth:
        showInstrument(reading, instruments, Instrument::Depth, NSDptFormatter());
        reading.samples = live.depths().size();
        reading.lastSample = live.depths().empty() ? 0 : live.depths().back().seconds;
        break;
    case GaugeKind::Wind:
        showInstrument(reading, instruments, Instrument::WindSpeed, NSAwsFormatter());
        reading.label = QString::fromStdString(instruments.windSpeedLabel());
        if (const float angle = instruments.value(Instrument::WindAngle); isKnown(angle)) {
            reading.degrees = angle;
            reading.second =
                QString::fromStdString(NSAwaFormatter(strings).stringForObjectValue(angle));
        }
        break;
    case GaugeKind::Temperature:
        showInstrument(reading, instruments, Instrument::Temperature, NSTmpFormatter());
        break;
    case GaugeKind::VelocityMadeGood:
        if (program.waypointController().hasActiveWaypoint())
            splitInto(reading,
                      NSSogFormatter().stringForObjectValue(
                          program.waypointController().activeWaypointVelocity()));
        break;
    case GaugeKind::Position:
        reading.number = QString::fromStdString(gps.latitude());
        reading.second = QString::fromStdString(gps.longitude());
        break;
    case GaugeKind::Time:
        reading.number = QString::fromStdString(gps.utc());
        break;
    }
    return reading;
}

Gauge::Gauge(Program& program, GaugeKind kind, QWidget* parent)
    : QWidget(parent)
    , m_program(program)
    , m_kind(kind)
    , m_reading(readGauge(program, kind))
{
    setObjectName(QStringLiteral("gauge.") + QString::fromStdString(gaugeId(kind)));
    setAccessibleName(gaugeName(kind));
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setSizePolicy(policy);
    setToolTip(gaugeName(kind));
}

bool Gauge::isWide() const
{
    return m_kind == GaugeKind::Depth || m_kind == GaugeKind::Wind || m_kind == GaugeKind::Heading
        || m_kind == GaugeKind::Position;
}

void Gauge::refresh()
{
    GaugeReading now = readGauge(m_program, m_kind);
    if (now == m_reading)
        return;
    m_reading = std::move(now);
    setAccessibleDescription(m_reading.number + QLatin1Char(' ') + m_reading.unit + QLatin1Char(' ')
                             + m_reading.second);
    update();
}

QSize Gauge::sizeHint() const
{
    const Theme& theme = Theme::theme();
    double height = 74;
    if (m_kind == GaugeKind::Heading)
        height = 112;
    else if (m_kind == GaugeKind::Depth)
        height = 124;
    else if (m_kind == GaugeKind::Wind)
        height = 186;
    else if (m_kind == GaugeKind::Position)
        height = 84;
    return {theme.px(120), theme.px(height)};
}

void Gauge::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double margin = theme.px(10);
    const QRectF room = QRectF(rect()).adjusted(margin, theme.px(6), -margin, -theme.px(6));
    painter.setFont(sized(font(), theme.px(13)));
    painter.setPen(theme.colors().dim);
    const bool waits = m_reading.stale && !m_reading.number.isEmpty();
    painter.drawText(room, Qt::AlignLeft | Qt::AlignTop, m_reading.label);
    if (waits) {
        // In words of its own: at night, or where all are old, grey alone does not stand out.
        QString age = QStringLiteral("◷");
        if (m_reading.minutes > 0)
            age += QLatin1Char(' ') + text("NSMinutesAge", {QString::number(m_reading.minutes)});
        painter.setPen(theme.colors().amber);
        painter.drawText(room, Qt::AlignRight | Qt::AlignTop, age);
    }
    switch (m_kind) {
    case GaugeKind::Heading:
        paintTape(painter, room);
        break;
    case GaugeKind::Depth:
        paintDepths(painter, room);
        break;
    case GaugeKind::Wind:
        paintWind(painter, room);
        break;
    default:
        paintFigure(painter, room.adjusted(0, theme.px(14), 0, 0));
    }
    painter.setPen(theme.colors().border);
    painter.drawLine(QPointF(margin, height() - 0.5), QPointF(width() - margin, height() - 0.5));
}

void Gauge::paintFigure(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const QColor ink = m_reading.stale ? theme.colors().dim : theme.colors().text;
    if (!m_reading.second.isEmpty()) { // two lines of the same weight: a position
        painter.setFont(sized(font(), theme.px(20), QFont::DemiBold));
        painter.setPen(ink);
        painter.drawText(room, Qt::AlignRight | Qt::AlignTop, m_reading.number);
        painter.drawText(room, Qt::AlignRight | Qt::AlignBottom, m_reading.second);
        return;
    }
    const QString number = m_reading.number.isEmpty() ? QStringLiteral("---") : m_reading.number;
    painter.setFont(sized(font(), theme.px(13)));
    const double unitWidth = m_reading.unit.isEmpty()
        ? 0
        : QFontMetricsF(painter.font()).horizontalAdvance(m_reading.unit) + theme.px(5);
    // As large as the room allows, so that it is read from the wheel.
    QFont large =
        sized(font(), std::min<double>(theme.px(64), room.height() * 0.92), QFont::DemiBold);
    const double wide = QFontMetricsF(large).horizontalAdvance(number);
    const double available = std::max(room.width() - unitWidth, 10.0);
    if (wide > available)
        large = sized(large, large.pixelSize() * available / wide, QFont::DemiBold);
    const QFontMetricsF metrics(large);
    const double baseline = room.center().y() + metrics.capHeight() / 2;
    painter.setPen(theme.colors().dim);
    // Marks of feet and degrees belong beside the top of the figures, words beside their foot.
    const bool isMark = !m_reading.unit.isEmpty() && !m_reading.unit[0].isLetter();
    const double rise =
        isMark ? metrics.capHeight() - QFontMetricsF(painter.font()).capHeight() : 0;
    painter.drawText(QPointF(room.right() - unitWidth + theme.px(5), baseline - rise),
                     m_reading.unit);
    painter.setFont(large);
    painter.setPen(ink);
    painter.drawText(
        QPointF(room.right() - unitWidth - metrics.horizontalAdvance(number), baseline), number);
}

void Gauge::paintTape(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const double tapeHeight = theme.px(34);
    paintFigure(painter, room.adjusted(0, theme.px(12), 0, -tapeHeight));
    if (!m_reading.degrees)
        return;
    const QRectF tape(room.left(), room.bottom() - tapeHeight, room.width(), tapeHeight);
    const double pointsPerDegree = tape.width() / 90; // 45 degrees to either side
    painter.setClipRect(tape);
    painter.setFont(sized(font(), theme.px(12)));
    const int middle = static_cast<int>(std::round(*m_reading.degrees / 5)) * 5;
    for (int mark = middle - 50; mark <= middle + 50; mark += 5) {
        const double x =
            tape.center().x() + (mark - static_cast<double>(*m_reading.degrees)) * pointsPerDegree;
        const int bearing = ((mark % 360) + 360) % 360;
        const bool named = bearing % 30 == 0;
        painter.setPen(QPen(theme.colors().dim, named ? 2 : 1));
        painter.drawLine(QPointF(x, tape.top()),
                         QPointF(x, tape.top() + (named ? theme.px(10) : theme.px(5))));
        if (!named)
            continue;
        const char* const winds[] = {"NSWindNorth", nullptr,      nullptr,       "NSWindEast",
                                     nullptr,       nullptr,      "NSWindSouth", nullptr,
                                     nullptr,       "NSWindWest", nullptr,       nullptr};
        const char* wind = winds[bearing / 30];
        painter.setPen(theme.colors().text);
        painter.drawText(
            QRectF(x - 30, tape.top() + theme.px(10), 60, tape.height() - theme.px(10)),
            Qt::AlignCenter,
            wind ? text(wind) : QStringLiteral("%1").arg(bearing, 3, 10, QLatin1Char('0')));
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.colors().accent);
    const double half = theme.px(5);
    painter.drawPolygon(QPolygonF({QPointF(tape.center().x() - half, tape.top() - 1),
                                   QPointF(tape.center().x() + half, tape.top() - 1),
                                   QPointF(tape.center().x(), tape.top() + 1.6 * half)}));
    painter.setClipping(false);
}

void Gauge::paintDepths(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const double graphHeight = theme.px(44);
    paintFigure(painter, room.adjusted(0, theme.px(12), 0, -graphHeight));
    const auto& depths = m_program.live().depths();
    if (depths.size() < 2)
        return;
    // Ten minutes, the newest at the right; the bottom is below, as it is.
    constexpr double longest = 600;
    const QRectF graph(room.left(), room.bottom() - graphHeight + theme.px(4), room.width(),
                       graphHeight - theme.px(4));
    float deepest = 0;
    for (const auto& sample : depths)
        deepest = std::max(deepest, sample.feet);
    const double span = std::max(deepest * 1.15F, 6.0F);
    QPolygonF bottom;
    const double now = depths.back().seconds;
    for (const auto& sample : depths)
        bottom << QPointF(graph.right() - (now - sample.seconds) / longest * graph.width(),
                          graph.top() + sample.feet / span * graph.height());
    QPolygonF ground = bottom;
    ground << QPointF(graph.right(), graph.bottom()) << QPointF(bottom.first().x(), graph.bottom());
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.colors().selection);
    painter.drawPolygon(ground);
    painter.setPen(QPen(m_reading.stale ? theme.colors().dim : theme.colors().accent, 1.6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(bottom);
    painter.setPen(theme.colors().border);
    painter.drawLine(graph.topLeft(), graph.topRight());
}

void Gauge::paintWind(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const double radius = std::min(room.width(), room.height() - theme.px(14)) / 2 - theme.px(2);
    const QPointF centre(room.center().x(), room.bottom() - radius - theme.px(1));
    // Close-hauled sectors, red to port and green to starboard; place says the side as well.
    const QRectF ring(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.colors().border, theme.px(5)));
    painter.drawEllipse(ring);
    constexpr int sixteenths = 16;
    painter.setPen(QPen(theme.colors().green, theme.px(5), Qt::SolidLine, Qt::FlatCap));
    painter.drawArc(ring, 30 * sixteenths, 40 * sixteenths);
    painter.setPen(QPen(theme.colors().red, theme.px(5), Qt::SolidLine, Qt::FlatCap));
    painter.drawArc(ring, 110 * sixteenths, 40 * sixteenths);
    painter.setPen(QPen(theme.colors().dim, 1.5));
    for (int mark = 0; mark < 360; mark += 30)
        painter.drawLine(centre + direction(mark, radius - theme.px(4)),
                         centre + direction(mark, radius - theme.px(mark % 90 == 0 ? 13 : 9)));
    const QColor ink = m_reading.stale ? theme.colors().dim : theme.colors().text;
    if (m_reading.degrees) {
        const double angle = *m_reading.degrees;
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_reading.stale ? theme.colors().dim : theme.colors().accent);
        painter.drawPolygon(QPolygonF({centre + direction(angle, radius - theme.px(24)),
                                       centre + direction(angle - 7, radius + theme.px(2)),
                                       centre + direction(angle + 7, radius + theme.px(2))}));
    }
    const QString number = m_reading.number.isEmpty() ? QStringLiteral("---") : m_reading.number;
    QFont large = sized(font(), theme.px(40), QFont::DemiBold);
    const double wide = QFontMetricsF(large).horizontalAdvance(number);
    const double available = 2 * radius - theme.px(44);
    if (wide > available)
        large = sized(large, large.pixelSize() * available / wide, QFont::DemiBold);
    const double line = theme.px(17);
    painter.setFont(large);
    painter.setPen(ink);
    painter.drawText(
        QRectF(centre.x() - radius, centre.y() - theme.px(34), 2 * radius, theme.px(50)),
        Qt::AlignCenter, number);
    painter.setFont(sized(font(), theme.px(12)));
    painter.setPen(theme.colors().dim);
    painter.drawText(QRectF(centre.x() - radius, centre.y() + theme.px(14), 2 * radius, line),
                     Qt::AlignCenter, m_reading.unit);
    painter.setPen(ink);
    painter.setFont(sized(font(), theme.px(13), QFont::DemiBold));
    painter.drawText(QRectF(centre.x() - radius, centre.y() + theme.px(30), 2 * radius, line),
                     Qt::AlignCenter, m_reading.second);
}

GaugeStack::GaugeStack(Program& program, int columns, QWidget* parent)
    : QWidget(parent)
    , m_program(program)
    , m_columns(columns)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setSpacing(0);
    connect(&program, &Program::settingChanged, this, [this](const QString& key) {
        if (key == QLatin1String(shownKey))
            rebuild();
        else if (key == QLatin1String("windApparent"))
            refresh();
    });
    connect(&program, &Program::schemeChanged, this, [this] {
        for (Gauge* gauge : m_gauges) {
            gauge->updateGeometry();
            gauge->update();
        }
    });
    for (const auto signal :
         {&LiveData::vesselChanged, &LiveData::instrumentsChanged, &LiveData::staleChanged})
        connect(&program.live(), signal, this, &GaugeStack::refresh);
    for (const auto signal : {&Program::unitsChanged, &Program::steeringChanged})
        connect(&program, signal, this, &GaugeStack::refresh);
    constexpr auto ageStep = std::chrono::seconds(15);
    connect(&m_ageTimer, &QTimer::timeout, this, &GaugeStack::refresh);
    m_ageTimer.start(ageStep);
    rebuild();
}

void GaugeStack::rebuild()
{
    for (Gauge* gauge : m_gauges) {
        m_grid->removeWidget(gauge);
        gauge->hide();
        gauge->deleteLater();
    }
    m_gauges.clear();
    int row = 0;
    int column = 0;
    for (const GaugeKind kind : chosenGauges(m_program.settings())) {
        auto* gauge = new Gauge(m_program, kind, this);
        m_gauges.push_back(gauge);
        const int width = gauge->isWide() ? m_columns : 1;
        if (column + width > m_columns) {
            ++row;
            column = 0;
        }
        m_grid->addWidget(gauge, row, column, 1, width);
        gauge->show();
        column += width;
    }
}

void GaugeStack::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refresh();
}

void GaugeStack::refresh()
{
    if (!isVisible())
        return;
    for (Gauge* gauge : m_gauges)
        gauge->refresh();
}

} // namespace kelvox
