#include "app/panels/RouteTables.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"
#include "navigation/TextSearch.h"

#include <QFont>

namespace kelvox {

namespace {
Qt::Alignment alignmentOf(int column)
{
    return (column == 0 ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter;
}

float lengthOf(const Route& route)
{
    return route.count() > 0 ? route.distance(0, route.count() - 1) : 0;
}

QVariant emphasis(int role)
{
    if (role == Qt::ForegroundRole)
        return Theme::theme().colors().accent;
    QFont font;
    font.setBold(true);
    return font;
}
} // namespace

RouteTable::RouteTable(Program& program, QObject* parent)
    : RecordTable(parent)
    , m_program(program)
{
    refresh();
}

void RouteTable::setSearch(const QString& search)
{
    m_search = search;
    refresh();
}

void RouteTable::refresh()
{
    auto rows = m_program.routes().routesThatMatch(m_search.toStdString());
    const auto less = [this](const RoutePointer& a, const RoutePointer& b) {
        return m_column == Points ? a->count() < b->count()
            : m_column == Length  ? lengthOf(*a) < lengthOf(*b)
                                  : naturalLess(a->name, b->name);
    };
    std::ranges::stable_sort(rows, less);
    if (m_order == Qt::DescendingOrder)
        std::ranges::reverse(rows);
    setRows(std::move(rows));
}

int RouteTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant RouteTable::data(const QModelIndex& index, int role) const
{
    const auto route = at(index.row());
    if (!route)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == Points)
            return QString::number(route->count());
        if (index.column() == Length)
            return navtext::distance(lengthOf(*route));
        return QString::fromStdString(route->name);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(alignmentOf(index.column()));
    case Qt::ForegroundRole:
    case Qt::FontRole:
        return route == m_program.routeController().gotoRoute() ? emphasis(role) : QVariant();
    default:
        return {};
    }
}

QVariant RouteTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= Columns)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(alignmentOf(section));
    const char* const keys[] = {"NSRoute", "NSPoints", "NSLength"};
    return role == Qt::DisplayRole ? QVariant(text(keys[section])) : QVariant();
}

void RouteTable::sort(int column, Qt::SortOrder order)
{
    m_column = column;
    m_order = order;
    refresh();
}

void RoutePointTable::show(const RoutePointer& route, float knots)
{
    m_route = route;
    std::vector<WaypointReferencePointer> rows;
    m_plan.clear();
    if (route) {
        rows = route->waypointReferences();
        // The plan leaves out waypoints without a place; the list shows them all the same.
        auto plan = RoutePlan::of(*route, knots).rows;
        std::size_t next = 0;
        for (const auto& reference : rows) {
            const bool isNext = next < plan.size() && plan[next].waypoint == reference->waypoint;
            m_plan.push_back(isNext ? plan[next++] : RoutePlan::Row{.waypoint = {}});
        }
    }
    setRows(std::move(rows));
    emit headerDataChanged(Qt::Horizontal, 0, Columns - 1);
}

int RoutePointTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant RoutePointTable::data(const QModelIndex& index, int role) const
{
    const auto reference = at(index.row());
    if (!reference || !reference->waypoint
        || static_cast<std::size_t>(index.row()) >= m_plan.size())
        return {};
    const RoutePlan::Row& row = m_plan[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == Name)
            return QStringLiteral("%1  %2").arg(QString::number(index.row() + 1),
                                                QString::fromStdString(reference->waypoint->name));
        if (index.row() == 0)
            return {};
        if (index.column() == Distance)
            return navtext::distance(isCumulative() ? row.totalMiles : row.legMiles);
        if (index.column() == Bearing)
            return navtext::bearing(m_program, row.bearingTrue);
        return navtext::hours(isCumulative() ? row.totalHours : row.legHours);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(alignmentOf(index.column()));
    case Qt::ForegroundRole:
    case Qt::FontRole:
        return m_program.waypointController().hasActiveWaypoint()
                && reference == m_program.routeController().gotoWaypointReference()
            ? emphasis(role)
            : QVariant();
    case Qt::ToolTipRole:
        return navtext::position(reference->waypoint->positionOnGPS());
    default:
        return {};
    }
}

QVariant RoutePointTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= Columns)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(alignmentOf(section));
    const char* const keys[] = {"NSWaypoint", isCumulative() ? "NSTotalDistance" : "NSLegDistance",
                                "NSBearing", "NSLegTime"};
    return role == Qt::DisplayRole ? QVariant(text(keys[section])) : QVariant();
}

} // namespace kelvox
