#include "app/InstrumentColumn.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "navigation/ValueFormatters.h"

#include <QPainter>

#include <cmath>

namespace kelvox {

namespace {
struct Figure {
    QString label;
    QString value;
    bool stale = false;
};

/// Figures and unit apart: "12.3 m" is drawn large and small.
std::pair<QString, QString> split(const QString& value)
{
    qsizetype end = value.size();
    while (end > 0 && !value[end - 1].isDigit() && value[end - 1] != QLatin1Char('-'))
        --end;
    return {value.left(end), value.mid(end).trimmed()};
}
} // namespace

InstrumentColumn::InstrumentColumn(Program& program, QWidget* parent)
    : QFrame(parent)
    , m_program(program)
{
    setObjectName(QStringLiteral("instrumentColumn"));
    setAccessibleName(text("NSInstruments"));
    const auto repaint = [this] { update(); };
    connect(&program.live(), &LiveData::vesselMoved, this, repaint);
    connect(&program.live(), &LiveData::instrumentsChanged, this, repaint);
    connect(&program, &Program::steeringChanged, this, repaint);
    connect(&program, &Program::unitsChanged, this, repaint);
}

QSize InstrumentColumn::sizeHint() const
{
    const int width = Theme::theme().px(188);
    return {width, 2 * width};
}

void InstrumentColumn::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    using Instrument = InstrumentsController::Instrument;
    const Theme& theme = Theme::theme();
    LiveData& live = m_program.live();
    const GPSController& gps = live.gps();
    const InstrumentsController& instruments = live.instruments();
    const bool stale = gps.positionIsStale();
    const auto known = [](float value, const auto& formatter) {
        return isKnown(value) ? QString::fromStdString(formatter.stringForObjectValue(value))
                              : QStringLiteral("---");
    };
    std::vector<Figure> figures{
        {QStringLiteral("SOG"), QString::fromStdString(gps.sog()), stale},
        {QStringLiteral("COG"), QString::fromStdString(gps.cog()), stale},
        {QStringLiteral("DPT"), known(instruments.value(Instrument::Depth), NSDptFormatter()),
         instruments.isStale(Instrument::Depth)},
        {QString::fromStdString(instruments.windSpeedLabel()),
         known(instruments.value(Instrument::WindSpeed), NSAwsFormatter()),
         instruments.isStale(Instrument::WindSpeed)},
    };
    const WaypointController& steering = m_program.waypointController();
    if (steering.hasActiveWaypoint()) {
        figures.push_back(
            {text("NSToWaypoint", {QString::fromStdString(steering.activeWaypointName())}), {}});
        figures.push_back(
            {QStringLiteral("DTW"), known(steering.activeWaypointDistance(), NSDtwFormatter())});
        figures.push_back(
            {QStringLiteral("BRG"),
             known(steering.activeWaypointBearing(), NSCogFormatter(textCatalog().strings()))});
        figures.push_back(
            {QStringLiteral("XTE"),
             known(std::abs(steering.activeWaypointCrossTrack()), NSXteFormatter())
                 + (steering.steer() == WaypointController::Steer::Left ? QStringLiteral(" ◄")
                                                                        : QStringLiteral(" ►"))});
        figures.push_back(
            {QStringLiteral("TTG"), known(steering.activeWaypointTimeToGo(), NSEtaFormatter())});
    }

    QPainter painter(this);
    const int margin = theme.px(12);
    int y = theme.px(8);
    QFont small = font();
    small.setPixelSize(theme.px(13));
    QFont large = font();
    large.setPixelSize(theme.px(40));
    large.setWeight(QFont::DemiBold);
    for (const Figure& figure : figures) {
        painter.setFont(small);
        painter.setPen(theme.colors().dim);
        painter.drawText(QRect(margin, y, width() - 2 * margin, theme.px(18)),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         figure.label + (figure.stale ? QStringLiteral(" ⌛") : QString()));
        y += theme.px(16);
        if (!figure.value.isNull()) {
            const auto [number, unit] = split(figure.value);
            const int unitWidth = QFontMetrics(small).horizontalAdvance(unit) + theme.px(4);
            painter.drawText(QRect(width() - margin - unitWidth, y, unitWidth, theme.px(42)),
                             Qt::AlignRight | Qt::AlignBottom, unit);
            painter.setFont(large);
            painter.setPen(figure.stale ? theme.colors().dim : theme.colors().text);
            painter.drawText(QRect(margin, y, width() - 2 * margin - unitWidth, theme.px(46)),
                             Qt::AlignRight | Qt::AlignVCenter,
                             number.isEmpty() ? QStringLiteral("---") : number);
            y += theme.px(50);
        } else {
            y += theme.px(8);
        }
        painter.setPen(theme.colors().border);
        painter.drawLine(margin, y, width() - margin, y);
        y += theme.px(6);
    }
}

} // namespace kelvox
