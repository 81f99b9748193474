#include "app/StatusLine.h"

#include "app/ChartView.h"
#include "app/Program.h"
#include "app/Style.h"
#include "app/Text.h"
#include "navigation/NavMath.h"
#include "navigation/ValueFormatters.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLocale>

namespace kelvox {

StatusLine::StatusLine(Program& program, const ChartView& chart, const ChartSet& charts,
                       QWidget* parent)
    : QFrame(parent)
    , m_program(program)
    , m_chart(chart)
    , m_charts(charts)
    , m_latitude(NSPositionFormatter::Latitude, textCatalog().strings())
    , m_longitude(NSPositionFormatter::Longitude, textCatalog().strings())
{
    setObjectName(QStringLiteral("statusLine"));
    setAutoFillBackground(true);
    setEdges(*this, Qt::TopEdge);
    new QHBoxLayout(this);
    m_position = addLabel();
    m_range = addLabel(1);
    m_rotation = addLabel();
    m_scale = addLabel();
    m_cells = addLabel();
    m_gps = addLabel();
}

QLabel* StatusLine::addLabel(int stretch)
{
    auto* label = new QLabel(this);
    static_cast<QHBoxLayout*>(layout())->addWidget(label, stretch);
    return label;
}

void StatusLine::restyle()
{
    const Theme& theme = Theme::theme();
    QFont small = QApplication::font();
    small.setPixelSize(theme.px(12));
    setFont(small);
    setFixedHeight(theme.px(28));
    layout()->setContentsMargins(theme.px(12), 0, theme.px(12), 0);
    layout()->setSpacing(theme.px(20));
}

void StatusLine::updateView()
{
    const int scale = m_chart.scale();
    m_scale->setText(QStringLiteral("1:%1  %2")
                         .arg(QLocale(QLocale::English).toString(scale),
                              text(ChartSettingsController::cellTypeNameKey(scale))));
    const int heading = qRound(m_chart.rotation()) % 360;
    m_rotation->setText(heading == 0 ? QString()
                                     : QStringLiteral("⟲ %1°").arg(heading, 3, 10, QChar('0')));
    const auto count = m_charts.charts().size();
    m_cells->setText(count == 0       ? text("NSNoChartOpen")
                         : count == 1 ? QString::fromStdString(m_charts.charts().front()->name)
                                      : countedText("NSCellCount", count));
}

void StatusLine::showProgress(int done, int total)
{
    m_cells->setText(text("NSReadingCharts", {QString::number(done), QString::number(total)}));
}

void StatusLine::updateCursor()
{
    const auto position = m_chart.cursorPosition();
    m_position->setText(position ? QString::fromStdString(
                            m_latitude.stringForObjectValue(position->latitude) + "   "
                            + m_longitude.stringForObjectValue(position->longitude))
                                 : QString());
    const Position vessel = m_program.live().gps().position();
    QString range;
    if (position && vessel.isKnown()) {
        range =
            text("NSRangeBearing",
                 {QString::fromStdString(NSDtwFormatter().stringForObjectValue(
                      NavMath::distanceFromPoint(vessel, *position))),
                  QString::fromStdString(
                      NSCogFormatter(textCatalog().strings())
                          .stringForObjectValue(NavMath::bearingFromPoint(vessel, *position)))});
    }
    m_range->setText(range);
}

void StatusLine::updateVessel()
{
    LiveData& live = m_program.live();
    m_gps->setText(live.gps().positionIsStale() ? text("NSGpsLost")
                       : live.isSimulated()     ? text("NSGpsDemo")
                                                : text("NSGpsGood"));
}

} // namespace kelvox
