#pragma once

#include "app/Program.h"
#include "app/panels/RecordTable.h"
#include "navigation/RoutePlan.h"

namespace kelvox {

/// The routes that a search finds.
class RouteTable final : public RecordTable<RoutePointer> {
    Q_OBJECT
public:
    enum Column { Name, Points, Length, Columns };
    explicit RouteTable(Program& program, QObject* parent = nullptr);

    void setSearch(const QString& search);
    void refresh();

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    Program& m_program;
    QString m_search;
    int m_column = Name;
    Qt::SortOrder m_order = Qt::AscendingOrder;
};

/// The points of one route in their order, with the leg that leads to each.
class RoutePointTable final : public RecordTable<WaypointReferencePointer> {
    Q_OBJECT
public:
    enum Column { Name, Distance, Bearing, Time, Columns };
    explicit RoutePointTable(Program& program, QObject* parent = nullptr)
        : RecordTable(parent)
        , m_program(program)
    {
    }
    /// @param knots planned with
    void show(const RoutePointer& route, float knots);

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    [[nodiscard]] bool isCumulative() const { return m_program.routes().showsCumulativeDistance(); }

    Program& m_program;
    RoutePointer m_route;
    std::vector<RoutePlan::Row> m_plan; ///< of each row
};

} // namespace kelvox
