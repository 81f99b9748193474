#pragma once

#include "app/LiveData.h"

#include <QAbstractTableModel>

namespace kelvox {

/// The target list as a table. Rows are fetched when they are painted; new data moves no scroll
/// bar and no selection.
class AisTableModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit AisTableModel(LiveData& live, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    [[nodiscard]] const AISPosition* target(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex selectedIndex() const;
    void search(const QString& words);
    /// Takes over what the list holds now.
    void sync();

private:
    [[nodiscard]] QString textOf(const AISPosition& target, AISTargetList::Column column) const;

    LiveData& m_live;
    AISTargetList& m_list;
    int m_count = 0;
};

} // namespace kelvox
