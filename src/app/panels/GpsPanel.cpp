#include "app/panels/GpsPanel.h"

#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"
#include "navigation/NavMath.h"
#include "navigation/ValueFormatters.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr int strongestSignal = 55; // dB-Hz

void setText(QLabel* label, const QString& words)
{
    if (label->text() != words)
        label->setText(words);
}
} // namespace

SkyView::SkyView(QWidget* parent)
    : QWidget(parent)
{
    setAccessibleName(text("NSSatellites"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SkyView::setView(const SatelliteView& view)
{
    if (view.satellites == m_view.satellites && view.inUse == m_view.inUse)
        return;
    m_view = view;
    updateGeometry();
    update();
}

QSize SkyView::sizeHint() const
{
    const Theme& theme = Theme::theme();
    return m_view.satellites.empty() ? QSize(theme.px(200), 0)
                                     : QSize(theme.px(300), theme.px(324));
}

bool SkyView::isUsed(int number) const
{
    return std::ranges::find(m_view.inUse, number) != m_view.inUse.end();
}

void SkyView::paintEvent(QPaintEvent* /*event*/)
{
    if (m_view.satellites.empty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double bars = Theme::theme().px(84);
    paintSky(painter, QRectF(0, 0, width(), height() - bars));
    paintSignals(painter, QRectF(0, height() - bars, width(), bars));
}

void SkyView::paintSky(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const double disc = theme.px(11);
    const double radius = std::min(room.width(), room.height()) / 2 - disc - theme.px(4);
    const QPointF centre = room.center();
    painter.setPen(QPen(theme.colors().border, 1.2));
    for (const double elevation : {0.0, 30.0, 60.0})
        painter.drawEllipse(centre, radius * (90 - elevation) / 90, radius * (90 - elevation) / 90);
    painter.drawLine(centre - QPointF(radius, 0), centre + QPointF(radius, 0));
    painter.drawLine(centre - QPointF(0, radius), centre + QPointF(0, radius));
    QFont small = font();
    small.setPixelSize(theme.px(11));
    painter.setFont(small);
    painter.setPen(theme.colors().dim);
    const std::pair<const char*, QPointF> winds[] = {{"NSWindNorth", {0, -1}},
                                                     {"NSWindEast", {1, 0}},
                                                     {"NSWindSouth", {0, 1}},
                                                     {"NSWindWest", {-1, 0}}};
    for (const auto& [key, way] : winds)
        painter.drawText(
            QRectF(centre + way * (radius + theme.px(8)) - QPointF(12, 8), QSizeF(24, 16)),
            Qt::AlignCenter, text(key));
    for (const Satellite& satellite : m_view.satellites) {
        const double distance = radius * (90 - std::clamp(satellite.elevationDegrees, 0, 90)) / 90;
        const double angle = satellite.azimuthDegrees * std::numbers::pi / 180;
        const QPointF at = centre + QPointF(std::sin(angle), -std::cos(angle)) * distance;
        const bool used = isUsed(satellite.number);
        painter.setPen(QPen(used ? theme.colors().green : theme.colors().dim, 1.5));
        painter.setBrush(used ? theme.colors().green : theme.colors().background);
        painter.drawEllipse(at, disc, disc);
        painter.setPen(used                       ? theme.colors().background
                           : satellite.signal > 0 ? theme.colors().text
                                                  : theme.colors().dim);
        painter.drawText(QRectF(at - QPointF(disc, disc), QSizeF(2 * disc, 2 * disc)),
                         Qt::AlignCenter, QString::number(satellite.number));
    }
}

void SkyView::paintSignals(QPainter& painter, const QRectF& room) const
{
    const Theme& theme = Theme::theme();
    const double label = theme.px(16);
    const auto count = static_cast<double>(std::max<std::size_t>(m_view.satellites.size(), 12));
    const double step = room.width() / count;
    const double full = room.height() - 2 * label;
    QFont small = font();
    small.setPixelSize(std::min(theme.px(10), std::max(6, static_cast<int>(step * 0.6))));
    painter.setFont(small);
    double x = room.left();
    for (const Satellite& satellite : m_view.satellites) {
        const double height =
            full * std::clamp(satellite.signal, 0, strongestSignal) / strongestSignal;
        const double bottom = room.bottom() - label;
        const bool used = isUsed(satellite.number);
        const QRectF bar(x + step * 0.18, bottom - height, step * 0.64, height);
        painter.setPen(QPen(used ? theme.colors().green : theme.colors().dim, 1));
        painter.setBrush(used ? QBrush(theme.colors().green) : QBrush(Qt::NoBrush));
        painter.drawRect(bar);
        painter.setPen(theme.colors().dim);
        painter.drawText(QRectF(x, bottom, step, label), Qt::AlignCenter,
                         QString::number(satellite.number));
        if (satellite.signal > 0)
            painter.drawText(QRectF(x, bottom - height - label, step, label),
                             Qt::AlignHCenter | Qt::AlignBottom, QString::number(satellite.signal));
        x += step;
    }
    painter.setPen(theme.colors().border);
    painter.drawLine(QPointF(room.left(), room.bottom() - label),
                     QPointF(room.right(), room.bottom() - label));
}

GpsPanel::GpsPanel(ChartHost& host)
    : SidePanel(QStringLiteral("gps"), "NSGps", QStringLiteral("gps"))
    , m_host(host)
    , m_position(new QLabel(this))
    , m_quality(new QLabel(this))
    , m_hint(makeHint(text("NSNoPositionYet"), this))
    , m_sky(new SkyView(this))
    , m_anchorSwitch(new QCheckBox(text("NSAnchorWatch"), this))
    , m_anchorState(makeHint({}, this))
    , m_connect(new QPushButton(text("NSOpenConnections"), this))
{
    Program& program = host.program();
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* content = new QWidget(scroll);
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, 0, 0);
    m_position->setTextInteractionFlags(Qt::TextSelectableByMouse);
    rows->addWidget(m_position);
    rows->addWidget(m_quality);
    rows->addWidget(m_hint);
    rows->addWidget(m_connect);
    auto* values = new QGridLayout;
    int cell = 0;
    for (const char* key :
         {"NSGaugeLabel.sog", "NSGaugeLabel.cog", "NSAltitude", "NSTime", "NSHdop", "NSPdop"}) {
        auto* label = makeHint(text(key), content);
        auto* value = new QLabel(content);
        value->setProperty("role", QStringLiteral("heading"));
        values->addWidget(label, cell / 2, 2 * (cell % 2));
        values->addWidget(value, cell / 2, 2 * (cell % 2) + 1, Qt::AlignRight);
        m_values[key] = value;
        ++cell;
    }
    values->setHorizontalSpacing(Theme::theme().px(12));
    values->setColumnStretch(1, 1);
    values->setColumnStretch(3, 1);
    rows->addLayout(values);
    rows->addWidget(m_sky);

    rows->addSpacing(Theme::theme().px(8));
    rows->addWidget(makeHeading("NSAnchorWatch", content));
    auto* anchor = new QHBoxLayout;
    makeTouchable(program, m_anchorSwitch);
    m_anchorSwitch->setObjectName(QStringLiteral("anchorSwitch"));
    anchor->addWidget(m_anchorSwitch, 1);
    anchor->addWidget(makeHint(text("NSRadius"), content));
    anchor->addWidget(makeNumber(program, "anchorDragDistance", "NSAnchorRadius",
                                 {.lowest = 0.002,
                                  .highest = 1,
                                  .step = 5,
                                  .decimals = 0,
                                  .fallback = 0.03,
                                  .unit = shortDistanceUnit},
                                 content));
    rows->addLayout(anchor);
    rows->addWidget(m_anchorState);

    rows->addSpacing(Theme::theme().px(8));
    rows->addWidget(makeHeading("NSOwnVessel", content));
    auto* own = new QFormLayout;
    own->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const NumberField feet{.highest = 1500, .step = 1, .decimals = 1, .unit = lengthUnit};
    for (const auto& [key, label] :
         {std::pair("vesselLength", "NSVesselLength"), std::pair("vesselBeam", "NSVesselBeam"),
          std::pair("antennaFromBow", "NSAntennaFromBow"),
          std::pair("antennaFromStarboard", "NSAntennaFromStarboard")})
        own->addRow(text(label), makeNumber(program, key, label, feet, content));
    own->addRow(text("NSVesselVectorMinutes"),
                makeNumber(program, "vesselVectorMinutes", "NSVesselVectorMinutes",
                           {.highest = 120,
                            .fallback = 6,
                            .unit = [] { return std::pair(1.0, text("NSMinutesUnit")); }},
                           content));
    rows->addLayout(own);
    rows->addWidget(makeSwitch(program, "showHeadingLine", "NSShowHeadingLine", content, true));
    rows->addStretch(1);
    scroll->setWidget(content);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scroll);
    makeTouchable(program, m_connect);

    connect(m_connect, &QPushButton::clicked, this,
            [this] { m_host.openPanel(QStringLiteral("connections")); });
    connect(m_anchorSwitch, &QCheckBox::clicked, this, &GpsPanel::setAnchorWatch);
    LiveData& live = program.live();
    for (const auto signal : {&LiveData::vesselChanged, &LiveData::staleChanged,
                              &LiveData::satellitesReceived, &LiveData::connectionsChanged})
        connect(&live, signal, this, &GpsPanel::refresh);
    connect(&live, &LiveData::anchorChanged, this, &GpsPanel::refreshAnchor);
    connect(&program, &Program::unitsChanged, this, &GpsPanel::refresh);
    connect(&program, &Program::schemeChanged, this, &GpsPanel::refresh);
    refresh();
}

void GpsPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    refresh();
}

void GpsPanel::refresh()
{
    const Theme& theme = Theme::theme();
    LiveData& live = m_host.program().live();
    const GPSController& gps = live.gps();
    const bool known = gps.position().isKnown();
    const bool stale = gps.positionIsStale();
    m_hint->setVisible(!known);
    m_connect->setVisible(!known || live.isSimulated());
    m_position->setVisible(known);
    setText(m_position,
            QString::fromStdString(gps.latitude()) + QLatin1Char('\n')
                + QString::fromStdString(gps.longitude()));
    QFont large = font();
    large.setPixelSize(theme.px(26));
    large.setWeight(QFont::DemiBold);
    m_position->setFont(large);
    m_position->setForegroundRole(stale ? QPalette::PlaceholderText : QPalette::WindowText);

    const SatelliteView& view = gps.satelliteView();
    QStringList quality;
    if (live.isSimulated())
        quality << text("NSSimulated");
    if (stale && known)
        quality << text("NSPositionOld");
    else if (!gps.fix().empty())
        quality << QString::fromStdString(gps.fix());
    if (!view.satellites.empty())
        quality << text(
            "NSSatellitesUsed",
            {QString::number(view.inUse.size()), QString::number(view.satellites.size())});
    setText(m_quality, quality.join(QStringLiteral("  ·  ")));
    m_quality->setVisible(!quality.isEmpty());
    const auto precision = [](float value) {
        return isKnown(value) ? QString::number(static_cast<double>(value), 'f', 1)
                              : QStringLiteral("---");
    };
    const auto shown = [](const std::string& value) {
        return value.empty() ? QStringLiteral("---") : QString::fromStdString(value);
    };
    setText(m_values["NSGaugeLabel.sog"], shown(gps.sog()));
    setText(m_values["NSGaugeLabel.cog"], shown(gps.cog()));
    setText(m_values["NSAltitude"], shown(gps.altitude()));
    setText(m_values["NSTime"], shown(gps.utc()));
    setText(m_values["NSHdop"], precision(view.hdop));
    setText(m_values["NSPdop"], precision(view.pdop));
    m_sky->setView(view);
    refreshAnchor();
}

void GpsPanel::refreshAnchor()
{
    const GPSController& gps = m_host.program().live().gps();
    const QSignalBlocker quiet(m_anchorSwitch);
    m_anchorSwitch->setChecked(gps.anchorAlarm());
    m_anchorSwitch->setEnabled(gps.anchorAlarm() || gps.position().isKnown());
    QString words = text("NSAnchorWatchHint");
    if (gps.anchorAlarm() && gps.position().isKnown()) {
        const float miles = NavMath::distanceFromPoint(gps.anchorPosition(), gps.position());
        words = text("NSAnchorDistance",
                     {QString::fromStdString(NSDtwFormatter().stringForObjectValue(miles)),
                      QString::fromStdString(NSDtwFormatter().stringForObjectValue(
                          m_host.program().settings().number("anchorDragDistance")))});
    }
    setText(m_anchorState, words);
}

void GpsPanel::setAnchorWatch(bool on)
{
    m_host.program().live().gps().setAnchorAlarm(on);
    refreshAnchor();
}

} // namespace kelvox
