#pragma once

#include "app/Program.h"
#include "app/panels/RecordTable.h"
#include "navigation/TrackLines.h"

namespace kelvox {

/// The lines of the recorded track, each known by the index of its first point.
class TrackTable final : public RecordTable<std::size_t> {
    Q_OBJECT
public:
    enum Column { Begin, Duration, Length, Speed, Columns };
    explicit TrackTable(Program& program, QObject* parent = nullptr)
        : RecordTable(parent)
        , m_program(program)
    {
    }
    void refresh();
    [[nodiscard]] const TrackLine* line(int row) const;

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    void order();

    Program& m_program;
    std::vector<TrackLine> m_lines; ///< of each row
    int m_column = Begin;
    Qt::SortOrder m_order = Qt::DescendingOrder;
};

} // namespace kelvox
