#include "app/panels/AisTableModel.h"

#include "ais/AISShipTypes.h"
#include "app/AisTargetDetails.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "navigation/ValueFormatters.h"

#include <algorithm>

namespace kelvox {

namespace {
using Column = AISTargetList::Column;

struct ColumnText {
    Column column;
    const char* key;
    bool isNumber;
};
constexpr ColumnText columns[] = {{Column::Name, "NSName", false},
                                  {Column::Distance, "NSDistance", true},
                                  {Column::Bearing, "NSBearing", true},
                                  {Column::Speed, "NSGaugeLabel.sog", true},
                                  {Column::Course, "NSGaugeLabel.cog", true},
                                  {Column::LastReport, "NSAge", true},
                                  {Column::Type, "NSShipType", false},
                                  {Column::Class, "NSClass", false},
                                  {Column::Length, "NSLength", true},
                                  {Column::Heading, "NSGaugeLabel.heading", true},
                                  {Column::Destination, "NSDestination", false},
                                  {Column::CallSign, "NSCallSign", false},
                                  {Column::Mmsi, "NSMmsi", true}};
} // namespace

AisTableModel::AisTableModel(LiveData& live, QObject* parent)
    : QAbstractTableModel(parent)
    , m_live(live)
    , m_list(live.ais().list())
    , m_count(static_cast<int>(m_list.rowCount()))
{
}

int AisTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int AisTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(std::size(columns));
}

const AISPosition* AisTableModel::target(const QModelIndex& index) const
{
    const auto row = static_cast<std::size_t>(index.row());
    return index.isValid() && row < m_list.rowCount() ? m_list.at(row) : nullptr;
}

QModelIndex AisTableModel::selectedIndex() const
{
    const auto row = m_list.selectedRow();
    return row && *row < static_cast<std::size_t>(m_count) ? index(static_cast<int>(*row), 0)
                                                           : QModelIndex();
}

QString AisTableModel::textOf(const AISPosition& target, Column column) const
{
    const Strings& strings = textCatalog().strings();
    const auto shown = [](double value, const auto& formatter) {
        return isKnown(value) ? QString::fromStdString(formatter.stringForObjectValue(value))
                              : QString();
    };
    switch (column) {
    case Column::Name:
        return QString::fromStdString(target.name());
    case Column::Mmsi:
        return target.mmsi() >= 0 ? QString::number(target.mmsi()) : QString();
    case Column::CallSign:
        return QString::fromStdString(target.callSign());
    case Column::Type: {
        const auto key = aisShipTypeKey(target.type());
        return key.empty() ? QString() : text(key);
    }
    case Column::Class:
        return target.equipmentClass() == AISClass::A ? QStringLiteral("A")
            : target.equipmentClass() == AISClass::B  ? QStringLiteral("B")
                                                      : QString();
    case Column::Distance:
        return shown(target.distanceFromPosition(), NSDtwFormatter());
    case Column::Bearing:
        return shown(target.bearingFromPosition(), NSCogFormatter(strings));
    case Column::Speed:
        return shown(target.sog(), NSSogFormatter());
    case Column::Course:
        return shown(target.cog(), NSCogFormatter(strings));
    case Column::Heading:
        return shown(target.hdg(), NSCogFormatter(strings));
    case Column::Length:
        return target.length() > 0 ? shown(target.length(), NSLenFormatter()) : QString();
    case Column::Destination:
        return QString::fromStdString(target.destination());
    case Column::LastReport: {
        const auto now = m_live.now();
        const QString age = ageText(std::chrono::duration<double>(now - target.date()).count());
        return target.timedOut(now) ? age + QStringLiteral(" ◷") : age;
    }
    }
    return {};
}

QVariant AisTableModel::data(const QModelIndex& index, int role) const
{
    const AISPosition* const vessel = target(index);
    if (!vessel)
        return {};
    const ColumnText& column = columns[index.column()];
    if (role == Qt::DisplayRole)
        return textOf(*vessel, column.column);
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignVCenter
                                | (column.isNumber ? Qt::AlignRight : Qt::AlignLeft));
    if (role == Qt::ForegroundRole) {
        if (m_live.ais().alarmTarget() == vessel->mmsi())
            return Theme::theme().colors().red;
        if (vessel->timedOut(m_live.now()))
            return Theme::theme().colors().dim;
    }
    return {};
}

QVariant AisTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::DisplayRole)
        return text(columns[section].key);
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignVCenter
                                | (columns[section].isNumber ? Qt::AlignRight : Qt::AlignLeft));
    return {};
}

void AisTableModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    m_list.sortBy(columns[column].column,
                  order == Qt::AscendingOrder ? AISTargetList::Order::Ascending
                                              : AISTargetList::Order::Descending);
    sync();
}

void AisTableModel::search(const QString& words)
{
    m_list.search(words.toStdString());
    sync();
}

void AisTableModel::sync()
{
    // Rows come and go at the end, and all may have changed: the view keeps its place then, which
    // it would lose with a new model.
    const int count = static_cast<int>(m_list.rowCount());
    if (count > m_count) {
        beginInsertRows({}, m_count, count - 1);
        m_count = count;
        endInsertRows();
    } else if (count < m_count) {
        beginRemoveRows({}, count, m_count - 1);
        m_count = count;
        endRemoveRows();
    }
    if (m_count > 0)
        emit dataChanged(index(0, 0), index(m_count - 1, columnCount() - 1));
}

} // namespace kelvox
