#include "app/panels/TrackTable.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"

#include <QPixmap>

namespace kelvox {

void TrackTable::refresh()
{
    m_lines = trackLines(m_program.tracks());
    order();
}

void TrackTable::order()
{
    const auto key = [this](const TrackLine& line) -> double {
        switch (m_column) {
        case Duration:
            return line.hours();
        case Length:
            return line.miles;
        case Speed:
            return line.knots();
        default:
            return static_cast<double>(line.first); // the oldest stand first in the model
        }
    };
    std::ranges::stable_sort(m_lines, [&](const TrackLine& a, const TrackLine& b) {
        return m_order == Qt::AscendingOrder ? key(a) < key(b) : key(b) < key(a);
    });
    std::vector<std::size_t> rows;
    rows.reserve(m_lines.size());
    for (const TrackLine& line : m_lines)
        rows.push_back(line.first);
    setRows(std::move(rows));
}

const TrackLine* TrackTable::line(int row) const
{
    const auto place = static_cast<std::size_t>(row);
    return row >= 0 && place < m_lines.size() ? &m_lines[place] : nullptr;
}

int TrackTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant TrackTable::data(const QModelIndex& index, int role) const
{
    const TrackLine* it = line(index.row());
    if (!it)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case Begin:
            return it->begin ? navtext::date(it->begin) : countedText("NSTrackPoints", it->count);
        case Duration:
            return navtext::hours(it->hours());
        case Length:
            return navtext::distance(it->miles);
        default:
            return navtext::speed(it->knots());
        }
    case Qt::DecorationRole: {
        if (index.column() != Begin)
            return {};
        QPixmap swatch(Theme::theme().px(4), Theme::theme().px(22));
        swatch.fill(it->color == TrackColor{}
                        ? Theme::theme().colors().text
                        : QColor::fromRgbF(std::clamp(it->color.red, 0.0F, 1.0F),
                                           std::clamp(it->color.green, 0.0F, 1.0F),
                                           std::clamp(it->color.blue, 0.0F, 1.0F))
                              .darker(Theme::theme().scheme() == ColorScheme::Night ? 250 : 100));
        return swatch;
    }
    case Qt::TextAlignmentRole:
        return QVariant::fromValue((index.column() == Begin ? Qt::AlignLeft : Qt::AlignRight)
                                   | Qt::AlignVCenter);
    case Qt::ToolTipRole:
        return countedText("NSTrackPoints", it->count);
    default:
        return {};
    }
}

QVariant TrackTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= Columns)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue((section == Begin ? Qt::AlignLeft : Qt::AlignRight)
                                   | Qt::AlignVCenter);
    const char* const keys[] = {"NSBegin", "NSDuration", "NSLength", "NSSpeed"};
    return role == Qt::DisplayRole ? QVariant(text(keys[section])) : QVariant();
}

void TrackTable::sort(int column, Qt::SortOrder order)
{
    m_column = column;
    m_order = order;
    this->order();
}

} // namespace kelvox
