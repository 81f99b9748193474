#pragma once

#include "ais/AISModel.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The rows of the target list: searched, sorted, with a selection that follows its target through
/// every reload. Main thread.
///
/// A snapshot of the table as of the last reload(). Rows whose target has gone since are still
/// counted; at() then gives null.
class AISTargetList {
public:
    enum class Column {
        Name,
        Mmsi,
        CallSign,
        Type,
        Class,
        Distance,
        Bearing,
        Speed,
        Course,
        Heading,
        Length,
        Destination,
        LastReport
    };
    enum class Order { Ascending, Descending };

    explicit AISTargetList(const AISModel& model)
        : m_model(model)
    {
    }

    /// Unknown values come last in either order, equal ones by MMSI; texts without regard to
    /// case. LastReport ascends with the age.
    void sortBy(Column column, Order order);
    [[nodiscard]] Column column() const { return m_column; }
    [[nodiscard]] Order order() const { return m_order; }
    /// Keeps the targets whose name, call sign, destination or MMSI holds the text; all for an
    /// empty one.
    void search(std::string_view text);
    void reload();

    [[nodiscard]] std::size_t rowCount() const { return m_rows.size(); }
    [[nodiscard]] const AISPosition* at(std::size_t row) const { return m_model.find(m_rows[row]); }

    /// A target that the search leaves out stays selected; one that has left the table does not.
    void select(std::optional<std::int32_t> mmsi) { m_selected = mmsi; }
    [[nodiscard]] std::optional<std::int32_t> selected() const { return m_selected; }
    [[nodiscard]] std::optional<std::size_t> selectedRow() const;

private:
    [[nodiscard]] bool isWanted(const AISPosition& target) const;

    const AISModel& m_model;
    std::vector<std::int32_t> m_rows;
    std::optional<std::int32_t> m_selected;
    std::string m_search; // lower case
    Column m_column = Column::Name;
    Order m_order = Order::Ascending;
};

} // namespace kelvox
