#pragma once

#include <QAbstractTableModel>

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace kelvox {

/// The rows of a list over records that come and go and change places, while the view keeps its
/// selection and its scroll bar. Record is something small that compares and has a hash.
template <typename Record> class RecordTable : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }
    [[nodiscard]] const std::vector<Record>& rows() const { return m_rows; }
    [[nodiscard]] Record at(int row) const
    {
        return row >= 0 && row < rowCount() ? m_rows[static_cast<std::size_t>(row)] : Record{};
    }
    [[nodiscard]] int rowOf(const Record& record) const
    {
        const auto it = std::ranges::find(m_rows, record);
        return it == m_rows.end() ? -1 : static_cast<int>(it - m_rows.begin());
    }

protected:
    /// Takes the place of what is shown. Rows that stay keep their selection wherever they go.
    void setRows(std::vector<Record> rows)
    {
        if (rows == m_rows) {
            if (!m_rows.empty())
                emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
            return;
        }
        emit layoutAboutToBeChanged();
        const QModelIndexList before = persistentIndexList();
        std::vector<Record> held;
        held.reserve(static_cast<std::size_t>(before.size()));
        for (const QModelIndex& index : before)
            held.push_back(at(index.row()));
        m_rows = std::move(rows);
        std::unordered_map<Record, int> places;
        if (!before.isEmpty())
            for (std::size_t i = 0; i < m_rows.size(); ++i)
                places.emplace(m_rows[i], static_cast<int>(i));
        QModelIndexList after;
        for (qsizetype i = 0; i < before.size(); ++i) {
            const auto it = places.find(held[static_cast<std::size_t>(i)]);
            after << (it == places.end() ? QModelIndex() : index(it->second, before[i].column()));
        }
        changePersistentIndexList(before, after);
        emit layoutChanged();
    }

private:
    std::vector<Record> m_rows;
};

} // namespace kelvox
