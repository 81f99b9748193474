#include "app/InstrumentColumn.h"

#include "app/Gauges.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "navigation/ValueFormatters.h"

#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>

#include <cmath>

namespace kelvox {

namespace {
/// The active waypoint: distance, bearing, cross-track error with the side to steer to, time.
class WaypointFigures final : public QWidget {
public:
    WaypointFigures(Program& program, QWidget* parent)
        : QWidget(parent)
        , m_program(program)
    {
        connect(&program, &Program::steeringChanged, this, &WaypointFigures::refresh);
        connect(&program, &Program::unitsChanged, this, &WaypointFigures::refresh);
        refresh();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Theme& theme = Theme::theme();
        QPainter painter(this);
        const int margin = theme.px(10);
        const QRect room = rect().adjusted(margin, theme.px(6), -margin, 0);
        QFont small = font();
        small.setPixelSize(theme.px(13));
        QFont large = font();
        large.setPixelSize(theme.px(26));
        large.setWeight(QFont::DemiBold);
        painter.setFont(small);
        painter.setPen(theme.colors().accent);
        painter.drawText(room, Qt::AlignLeft | Qt::AlignTop,
                         QFontMetrics(small).elidedText(m_name, Qt::ElideRight, room.width()));
        int y = room.top() + theme.px(22);
        for (const auto& [label, value] : m_rows) {
            const QRect row(room.left(), y, room.width(), theme.px(rowHeight));
            painter.setFont(small);
            painter.setPen(theme.colors().dim);
            painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, label);
            painter.setFont(large);
            painter.setPen(theme.colors().text);
            painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, value);
            y += theme.px(rowHeight);
        }
    }
    [[nodiscard]] QSize sizeHint() const override
    {
        return {Theme::theme().px(120),
                Theme::theme().px(32 + rowHeight * static_cast<int>(m_rows.size()))};
    }

private:
    static constexpr int rowHeight = 36;

    void refresh()
    {
        const WaypointController& steering = m_program.waypointController();
        setVisible(steering.hasActiveWaypoint());
        if (!steering.hasActiveWaypoint())
            return;
        const auto shown = [](float value, const auto& formatter) {
            return isKnown(value) ? QString::fromStdString(formatter.stringForObjectValue(value))
                                  : QStringLiteral("---");
        };
        const bool left = steering.steer() == WaypointController::Steer::Left;
        const auto arrow = left ? QStringLiteral("◄ ") : QStringLiteral("► ");
        std::vector<std::pair<QString, QString>> rows{
            {QStringLiteral("DTW"), shown(steering.activeWaypointDistance(), NSDtwFormatter())},
            {QStringLiteral("BRG"),
             shown(steering.activeWaypointBearing(), NSCogFormatter(textCatalog().strings()))},
            {QStringLiteral("XTE"),
             arrow + shown(std::abs(steering.activeWaypointCrossTrack()), NSXteFormatter())},
            {QStringLiteral("TTG"), shown(steering.activeWaypointTimeToGo(), NSEtaFormatter())}};
        QString name =
            text("NSToWaypoint", {QString::fromStdString(steering.activeWaypointName())});
        if (rows == m_rows && name == m_name)
            return;
        m_rows = std::move(rows);
        m_name = std::move(name);
        updateGeometry();
        update();
    }

    Program& m_program;
    QString m_name;
    std::vector<std::pair<QString, QString>> m_rows;
};
} // namespace

InstrumentColumn::InstrumentColumn(Program& program, QWidget* parent)
    : QFrame(parent)
{
    setObjectName(QStringLiteral("instrumentColumn"));
    setAccessibleName(text("NSInstruments"));
    // More gauges than the window is high can be scrolled to.
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(scroll);
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(new GaugeStack(program, 1, content));
    rows->addWidget(new WaypointFigures(program, content));
    rows->addStretch(1);
    scroll->setWidget(content);
    content->setAutoFillBackground(false);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(1, 0, 0, 0);
    whole->addWidget(scroll);
}

QSize InstrumentColumn::sizeHint() const
{
    const int width = Theme::theme().px(188);
    return {width, 2 * width};
}

} // namespace kelvox
