#pragma once

#include "library/ChartRecord.h"

#include <QAbstractTableModel>

namespace kelvox {

/// The charts of the library as rows, sorted and searched. Main thread.
class ChartsModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Title, Scale, Edition, Date, Kind, Columns };

    using QAbstractTableModel::QAbstractTableModel;
    void setRecords(const ChartRecords& records);
    /// Only charts whose name or title has the text.
    void setFilter(const QString& text);
    [[nodiscard]] std::shared_ptr<const ChartRecord> record(int row) const;
    [[nodiscard]] int rowOf(const std::filesystem::path& path) const; ///< -1 when it is not shown

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    void arrange();
    [[nodiscard]] QString words(const ChartRecord& chart, int column) const;

    ChartRecords m_all;
    ChartRecords m_shown;
    std::string m_filter;
    int m_column = Name;
    Qt::SortOrder m_order = Qt::AscendingOrder;
};

} // namespace kelvox
