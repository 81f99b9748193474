#include "app/nav/SteeringDisplay.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"
#include "navigation/ValueFormatters.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr int designHeight = 296;

/// "12.3 m" in two: the figure is drawn large, the unit small.
std::pair<QString, QString> split(const QString& value)
{
    qsizetype end = value.size();
    while (end > 0 && !value[end - 1].isDigit() && value[end - 1] != QLatin1Char('-'))
        --end;
    return {value.left(end), value.mid(end).trimmed()};
}
} // namespace

SteeringDisplay::SteeringDisplay(NavActions& actions, QWidget* parent)
    : QWidget(parent)
    , m_actions(actions)
    , m_stop(new QToolButton(this))
{
    setObjectName(QStringLiteral("steeringDisplay"));
    m_stop->setToolTip(text("NSStopNavigating"));
    m_stop->setAccessibleName(text("NSStopNavigating"));
    connect(m_stop, &QToolButton::clicked, &actions, &NavActions::stopNavigating);
    Program& program = actions.program();
    connect(&program, &Program::steeringChanged, this, &SteeringDisplay::refresh);
    connect(&program, &Program::unitsChanged, this, &SteeringDisplay::refresh);
    connect(&program, &Program::schemeChanged, this, &SteeringDisplay::restyle);
    restyle();
    refresh();
}

void SteeringDisplay::restyle()
{
    const Theme& theme = Theme::theme();
    setFixedHeight(theme.px(designHeight));
    m_stop->setIcon(theme.icon(QStringLiteral("close")));
    m_stop->setIconSize(QSize(theme.px(18), theme.px(18)));
    m_stop->setFixedSize(theme.px(40), theme.px(40));
    m_stop->move(width() - m_stop->width(), 0);
    update();
}

SteeringDisplay::Shown SteeringDisplay::current() const
{
    Program& program = m_actions.program();
    const WaypointController& steering = program.waypointController();
    Shown shown;
    shown.name = QString::fromStdString(steering.activeWaypointName());
    if (const auto& route = program.routeController().gotoRoute())
        shown.route = QString::fromStdString(route->name);
    else if (steering.isGotoWaypointFromGPS())
        shown.route = text("NSFromReceiver");
    shown.distance = navtext::distance(steering.activeWaypointDistance());
    shown.bearing = navtext::bearing(program, steering.activeWaypointBearing());
    shown.time = navtext::hours(steering.activeWaypointTimeToGo());
    shown.velocity = navtext::speed(steering.activeWaypointVelocity());
    const float error = steering.activeWaypointCrossTrack();
    shown.known = isKnown(error);
    if (shown.known) {
        const double limit =
            std::max(0.001,
                     program.settings().number("crossTrackDistance",
                                               WaypointController::defaultCrossTrackDistance));
        // Whole steps of the scale: the mark does not tremble, and nothing is painted for less.
        shown.offShare = std::round(error / limit * 50) / 50;
        shown.beyond = std::abs(error) >= limit;
        shown.crossTrack =
            QString::fromStdString(NSXteFormatter().stringForObjectValue(std::abs(error)))
                .trimmed();
    } else {
        shown.crossTrack = QStringLiteral("---");
    }
    shown.stale = program.live().gps().positionIsStale();
    return shown;
}

void SteeringDisplay::refresh()
{
    const bool active = m_actions.program().waypointController().hasActiveWaypoint();
    if (active != isVisibleTo(parentWidget()))
        setVisible(active);
    if (!active)
        return;
    const Shown now = current();
    if (now == m_shown)
        return;
    m_shown = now;
    setAccessibleName(text("NSToWaypoint", {now.name}));
    setAccessibleDescription(
        QStringLiteral("DTW %1, BTW %2, TTG %3, VMG %4, XTE %5")
            .arg(now.distance, now.bearing, now.time, now.velocity, now.crossTrack));
    update();
}

void SteeringDisplay::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::theme();
    const Theme::Colors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int margin = theme.px(12);
    painter.setPen(QPen(colors.border, 1));
    painter.drawLine(0, 0, width(), 0);

    QFont small = font();
    small.setPixelSize(theme.px(12));
    QFont name = font();
    name.setPixelSize(theme.px(18));
    name.setWeight(QFont::DemiBold);
    const int nameWidth = width() - margin - theme.px(40);
    painter.setFont(small);
    painter.setPen(colors.dim);
    painter.drawText(QRect(margin, theme.px(4), nameWidth, theme.px(16)),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(
                         m_shown.route.isEmpty() ? text("NSGoingToLabel") : m_shown.route,
                         Qt::ElideRight, nameWidth));
    painter.setFont(name);
    painter.setPen(colors.text);
    painter.drawText(QRect(margin, theme.px(20), nameWidth, theme.px(24)),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(m_shown.name, Qt::ElideRight, nameWidth));

    paintCrossTrack(painter, QRectF(margin, theme.px(48), width() - 2 * margin, theme.px(64)));

    QFont large = font();
    large.setPixelSize(theme.px(32));
    large.setWeight(QFont::DemiBold);
    const std::pair<const char*, const QString*> figures[] = {{"DTW", &m_shown.distance},
                                                              {"BTW", &m_shown.bearing},
                                                              {"TTG", &m_shown.time},
                                                              {"VMG", &m_shown.velocity}};
    int y = theme.px(116);
    for (const auto& [label, value] : figures) {
        const auto [number, unit] = split(*value);
        const QRect row(margin, y, width() - 2 * margin, theme.px(44));
        painter.setPen(QPen(colors.border, 1));
        painter.drawLine(row.left(), y, row.right(), y);
        painter.setFont(small);
        painter.setPen(colors.dim);
        painter.drawText(row.adjusted(0, theme.px(4), 0, 0), Qt::AlignLeft | Qt::AlignTop,
                         QLatin1String(label));
        painter.drawText(row.adjusted(0, 0, 0, -theme.px(4)), Qt::AlignLeft | Qt::AlignBottom,
                         unit);
        painter.setFont(large);
        painter.setPen(m_shown.stale ? colors.dim : colors.text);
        const int labelWidth = theme.px(40);
        QRect box = row.adjusted(labelWidth, 0, 0, 0);
        QFont fitting = large;
        while (QFontMetrics(fitting).horizontalAdvance(number) > box.width()
               && fitting.pixelSize() > theme.px(14))
            fitting.setPixelSize(fitting.pixelSize() - 2);
        painter.setFont(fitting);
        painter.drawText(box, Qt::AlignRight | Qt::AlignVCenter,
                         number.isEmpty() ? QStringLiteral("---") : number);
        y += theme.px(44);
    }
}

void SteeringDisplay::paintCrossTrack(QPainter& painter, const QRectF& box) const
{
    // The leg is the middle; the boat lies to its left or right, the arrow says where to steer.
    const Theme& theme = Theme::theme();
    const Theme::Colors& colors = theme.colors();
    QFont font = this->font();
    font.setPixelSize(theme.px(15));
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    const QColor color = m_shown.beyond ? colors.red : m_shown.stale ? colors.dim : colors.text;
    painter.setPen(color);
    const bool onTheLeg = !m_shown.known || std::abs(m_shown.offShare) < 0.05;
    QString words = QStringLiteral("XTE %1").arg(m_shown.crossTrack);
    if (!onTheLeg)
        words =
            m_shown.offShare > 0 ? QStringLiteral("◀  ") + words : words + QStringLiteral("  ▶");
    painter.drawText(box.adjusted(0, 0, 0, -box.height() * 0.55), Qt::AlignCenter, words);

    const double y = box.top() + box.height() * 0.72;
    const double half = box.width() / 2 - theme.px(6);
    const double middle = box.center().x();
    painter.setPen(QPen(colors.dim, theme.px(2)));
    painter.drawLine(QPointF(middle - half, y), QPointF(middle + half, y));
    for (const double share : {-1.0, -0.5, 0.5, 1.0}) {
        const double x = middle + share * half;
        const double tall = theme.px(std::abs(share) == 1 ? 8 : 5);
        painter.drawLine(QPointF(x, y - tall), QPointF(x, y + tall));
    }
    painter.setPen(QPen(colors.accent, theme.px(3)));
    painter.drawLine(QPointF(middle, y - theme.px(12)), QPointF(middle, y + theme.px(12)));
    if (!m_shown.known)
        return;
    const double x = middle + std::clamp(m_shown.offShare, -1.0, 1.0) * half;
    const double size = theme.px(8);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(QPolygonF{
        {x, y - size * 1.5}, {x + size, y + size}, {x, y + size * 0.4}, {x - size, y + size}});
}

void SteeringDisplay::resizeEvent(QResizeEvent* /*event*/)
{
    m_stop->move(width() - m_stop->width(), 0);
}

void SteeringDisplay::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    Program& program = m_actions.program();
    if (const auto& route = program.routeController().gotoRoute())
        m_actions.openRoute(route);
    else
        m_actions.openWaypoint(program.waypointController().gotoWaypoint());
}

} // namespace kelvox
