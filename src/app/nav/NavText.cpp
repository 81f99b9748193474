#include "app/nav/NavText.h"

#include "app/Text.h"
#include "navigation/PositionFormatter.h"
#include "navigation/ValueFormatters.h"

#include <QDateTime>
#include <QLocale>

namespace kelvox::navtext {

namespace {
const QString unknown = QStringLiteral("---");
}

QString distance(double miles)
{
    return isKnown(miles)
        ? QString::fromStdString(NSDtwFormatter().stringForObjectValue(miles)).trimmed()
        : unknown;
}

QString speed(double knots)
{
    return isKnown(knots) ? QString::fromStdString(NSSogFormatter().stringForObjectValue(knots))
                          : unknown;
}

QString bearing(Program& program, double degreesTrue)
{
    if (!isKnown(degreesTrue))
        return unknown;
    NSCogFormatter formatter(textCatalog().strings());
    const bool magnetic = program.settings().boolean("magnetic");
    formatter.setMagnetic(magnetic);
    if (magnetic)
        formatter.setVariation(program.live().compass().variation);
    return QString::fromStdString(formatter.stringForObjectValue(degreesTrue)).trimmed();
}

QString hours(double hours)
{
    return isKnown(hours) ? QString::fromStdString(NSEtaFormatter().stringForObjectValue(hours))
                          : unknown;
}

QString latitude(double degrees)
{
    return QString::fromStdString(
        NSPositionFormatter(NSPositionFormatter::Latitude, textCatalog().strings())
            .stringForObjectValue(degrees));
}

QString longitude(double degrees)
{
    return QString::fromStdString(
        NSPositionFormatter(NSPositionFormatter::Longitude, textCatalog().strings())
            .stringForObjectValue(degrees));
}

QString position(Position position)
{
    return latitude(position.latitude) + QStringLiteral("  ") + longitude(position.longitude);
}

QString date(const std::optional<Date>& date)
{
    if (!date)
        return {};
    return QLocale().toString(
        QDateTime::fromSecsSinceEpoch(
            std::chrono::floor<std::chrono::seconds>(*date).time_since_epoch().count()),
        QLocale::ShortFormat);
}

} // namespace kelvox::navtext
