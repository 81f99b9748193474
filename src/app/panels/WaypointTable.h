#pragma once

#include "app/Program.h"
#include "app/panels/RecordTable.h"

namespace kelvox {

/// The waypoints that a search finds in the group on show, with distance and bearing from the
/// vessel.
class WaypointTable final : public RecordTable<WaypointPointer> {
    Q_OBJECT
public:
    enum Column { Name, Distance, Bearing, Columns };
    explicit WaypointTable(Program& program, QObject* parent = nullptr);

    void setSearch(const QString& search);
    [[nodiscard]] const QString& search() const { return m_search; }
    void refresh(); ///< the rows anew
    void refreshValues(); ///< distances and bearings only, sorted anew where they are the order

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    void order(std::vector<WaypointPointer>& rows) const;

    Program& m_program;
    QString m_search;
    int m_column = Name;
    Qt::SortOrder m_order = Qt::AscendingOrder;
};

} // namespace kelvox
