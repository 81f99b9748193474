#include "app/AisTargetDetails.h"

#include "ais/AISShipTypes.h"
#include "app/Program.h"
#include "app/Text.h"
#include "navigation/PositionFormatter.h"
#include "navigation/ValueFormatters.h"

#include <QGridLayout>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace kelvox {

QString ageText(double seconds)
{
    constexpr double longestInSeconds = 90;
    const auto whole = static_cast<long long>(std::max(seconds, 0.0));
    return seconds < longestInSeconds ? text("NSSecondsAge", {QString::number(whole)})
                                      : text("NSMinutesAge", {QString::number(whole / 60)});
}

AisTargetDetails::AisTargetDetails(ChartHost& host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
    , m_grid(new QGridLayout)
    , m_name(new QLabel(this))
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    m_name->setProperty("role", QStringLiteral("heading"));
    m_name->setVisible(parent != nullptr); // a card has a title of its own
    rows->addWidget(m_name);
    m_grid->setHorizontalSpacing(Theme::theme().px(12));
    m_grid->setVerticalSpacing(Theme::theme().px(2));
    m_grid->setColumnStretch(1, 1);
    rows->addLayout(m_grid);
    auto* centre = new QPushButton(text("NSCentreOnTarget"), this);
    rows->addWidget(centre);
    connect(centre, &QPushButton::clicked, this, [this] {
        LiveData& live = m_host.program().live();
        const auto mmsi = live.selectedTarget();
        const auto* target = mmsi ? live.ais().model().find(*mmsi) : nullptr;
        if (target && target->isPositionKnown())
            m_host.showPosition(target->positionOnGPS());
    });
    LiveData& live = host.program().live();
    for (const auto signal :
         {&LiveData::targetsChanged, &LiveData::vesselChanged, &LiveData::selectionChanged})
        connect(&live, signal, this, &AisTargetDetails::refresh);
    connect(&host.program(), &Program::unitsChanged, this, &AisTargetDetails::refresh);
    refresh();
}

QString AisTargetDetails::title() const
{
    return m_name->text();
}

void AisTargetDetails::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refresh();
}

void AisTargetDetails::setRow(const char* key, const QString& value, const char* role)
{
    auto it = m_rows.find(key);
    if (it == m_rows.end()) {
        if (value.isEmpty())
            return;
        auto* label = new QLabel(text(key), this);
        label->setProperty("role", QStringLiteral("dim"));
        auto* words = new QLabel(this);
        words->setTextInteractionFlags(Qt::TextSelectableByMouse);
        words->setWordWrap(true);
        const int row = static_cast<int>(m_rows.size());
        m_grid->addWidget(label, row, 0, Qt::AlignTop);
        m_grid->addWidget(words, row, 1, Qt::AlignTop);
        it = m_rows.emplace(key, std::pair(label, words)).first;
    }
    auto& [label, words] = it->second;
    label->setVisible(!value.isEmpty());
    words->setVisible(!value.isEmpty());
    if (words->text() != value)
        words->setText(value);
    if (words->property("role").toString() != QLatin1String(role)) {
        words->setProperty("role", QString::fromLatin1(role));
        words->style()->unpolish(words);
        words->style()->polish(words);
    }
}

void AisTargetDetails::refresh()
{
    LiveData& live = m_host.program().live();
    const auto info = live.ais().updateAISInfo();
    if (!info) {
        if (live.selectedTarget() || !m_rows.empty())
            setRow("NSTargetState", text("NSTargetGone"), "warn");
        return;
    }
    const AISPosition& target = *info->target;
    const Strings& strings = textCatalog().strings();
    m_name->setText(QString::fromStdString(target.name()));
    const auto shown = [](double value, const auto& formatter) {
        return isKnown(value) ? QString::fromStdString(formatter.stringForObjectValue(value))
                              : QString();
    };
    const double age = std::chrono::duration<double>(live.now() - target.date()).count();
    const bool timedOut = target.timedOut(live.now());
    setRow("NSTargetState",
           timedOut                ? text("NSTargetSilent", {ageText(age)})
               : target.underway() ? text("NSUnderway")
                                   : text("NSStationary"),
           timedOut ? "warn" : "");
    QString place = shown(info->distance, NSDtwFormatter());
    if (!place.isEmpty())
        place += QStringLiteral("   ") + shown(info->bearing, NSCogFormatter(strings));
    setRow("NSDistanceBearing", place);
    QString approach;
    bool close = false;
    if (info->closestApproach) {
        const auto& cpa = *info->closestApproach;
        approach = text(
            "NSCpaIn",
            {shown(cpa.distance, NSDtwFormatter()), QString::number(std::lround(cpa.time * 60))});
        close = cpa.distance <= live.settings().number("aisProximityDistance",
                                                       AISController::defaultProximityDistance);
    } else if (isKnown(info->distance)) {
        approach = text("NSNotClosing");
    }
    setRow("NSCpa", approach, close && !timedOut ? "bad" : "");
    setRow("NSGaugeLabel.sog", shown(target.sog(), NSSogFormatter()));
    setRow("NSGaugeLabel.cog", shown(target.cog(), NSCogFormatter(strings)));
    setRow("NSGaugeLabel.heading", shown(target.hdg(), NSCogFormatter(strings)));
    setRow("NSMmsi", target.mmsi() >= 0 ? QString::number(target.mmsi()) : QString());
    setRow("NSCallSign", QString::fromStdString(target.callSign()));
    const auto type = aisShipTypeKey(target.type());
    setRow("NSShipType", type.empty() ? QString() : text(type));
    setRow("NSClass",
           target.equipmentClass() == AISClass::A       ? QStringLiteral("A")
               : target.equipmentClass() == AISClass::B ? QStringLiteral("B")
                                                        : QString());
    setRow("NSDestination", QString::fromStdString(target.destination()));
    if (target.length() > 0)
        setRow("NSLengthBeam",
               shown(target.length(), NSLenFormatter()) + QStringLiteral(" × ")
                   + shown(target.beam(), NSLenFormatter()));
    else
        setRow("NSLengthBeam", {});
    if (target.isPositionKnown())
        setRow(
            "NSPosition",
            QString::fromStdString(NSPositionFormatter(NSPositionFormatter::Latitude, strings)
                                       .stringForObjectValue(target.positionOnGPS().latitude)
                                   + "  "
                                   + NSPositionFormatter(NSPositionFormatter::Longitude, strings)
                                         .stringForObjectValue(target.positionOnGPS().longitude)));
    else
        setRow("NSPosition", {});
    setRow("NSLastReport", ageText(age));
}

} // namespace kelvox
