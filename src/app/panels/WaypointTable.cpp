#include "app/panels/WaypointTable.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"
#include "app/nav/WaypointSymbols.h"
#include "navigation/NavMath.h"

namespace kelvox {

WaypointTable::WaypointTable(Program& program, QObject* parent)
    : RecordTable(parent)
    , m_program(program)
{
    refresh();
}

void WaypointTable::setSearch(const QString& search)
{
    m_search = search;
    refresh();
}

void WaypointTable::refresh()
{
    const GPSController& gps = m_program.live().gps();
    m_program.waypointController().fromWaypoints(gps.courseOverGround(), gps.speedOverGround());
    auto rows = m_program.waypoints().waypointsThatMatch(m_search.toStdString());
    order(rows);
    setRows(std::move(rows));
}

void WaypointTable::refreshValues()
{
    if (m_column == Name) {
        const GPSController& gps = m_program.live().gps();
        m_program.waypointController().fromWaypoints(gps.courseOverGround(), gps.speedOverGround());
        if (rowCount() > 0)
            emit dataChanged(index(0, Distance), index(rowCount() - 1, Bearing));
    } else {
        refresh();
    }
}

void WaypointTable::order(std::vector<WaypointPointer>& rows) const
{
    const auto value = [this](const WaypointPointer& waypoint) {
        const float it =
            m_column == Distance ? waypoint->distanceFromPosition : waypoint->bearingFromPosition;
        return isKnown(it) ? it : std::numeric_limits<float>::max(); // those without come last
    };
    if (m_column == Name)
        std::ranges::stable_sort(rows,
                                 [](const auto& a, const auto& b) { return comesBefore(*a, *b); });
    else
        std::ranges::stable_sort(rows,
                                 [&](const auto& a, const auto& b) { return value(a) < value(b); });
    if (m_order == Qt::DescendingOrder)
        std::ranges::reverse(rows);
}

int WaypointTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant WaypointTable::data(const QModelIndex& index, int role) const
{
    const auto waypoint = at(index.row());
    if (!waypoint)
        return {};
    const auto active = [&] { return waypoint == m_program.waypointController().gotoWaypoint(); };
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == Distance)
            return navtext::distance(waypoint->distanceFromPosition);
        if (index.column() == Bearing)
            return navtext::bearing(m_program, waypoint->bearingFromPosition);
        return QString::fromStdString(waypoint->name);
    case Qt::DecorationRole:
        if (index.column() != Name)
            return {};
        return waypointSymbolIcon(waypoint->iconIndex,
                                  LayerLook{*m_program.presentation().portrayal()},
                                  Theme::theme().px(22));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue((index.column() == Name ? Qt::AlignLeft : Qt::AlignRight)
                                   | Qt::AlignVCenter);
    case Qt::ForegroundRole:
        if (!waypoint->show || (index.column() != Name && m_program.live().gps().positionIsStale()))
            return Theme::theme().colors().dim;
        return active() ? QVariant(Theme::theme().colors().accent) : QVariant();
    case Qt::FontRole:
        if (QFont font; active()) {
            font.setBold(true);
            return font;
        }
        return {};
    case Qt::ToolTipRole:
        return navtext::position(waypoint->positionOnGPS())
            + (waypoint->description.empty()
                   ? QString()
                   : QLatin1Char('\n') + QString::fromStdString(waypoint->description));
    default:
        return {};
    }
}

QVariant WaypointTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue((section == Name ? Qt::AlignLeft : Qt::AlignRight)
                                   | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    const char* const keys[] = {"NSName", "NSDistance", "NSBearing"};
    return section < Columns ? QVariant(text(keys[section])) : QVariant();
}

void WaypointTable::sort(int column, Qt::SortOrder order)
{
    m_column = std::clamp(column, 0, Columns - 1);
    m_order = order;
    refresh();
}

} // namespace kelvox
