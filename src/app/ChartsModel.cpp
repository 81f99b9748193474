#include "app/ChartsModel.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "navigation/TextSearch.h"

#include <QDate>
#include <QLocale>

#include <algorithm>
#include <tuple>

namespace kelvox {

void ChartsModel::setRecords(const ChartRecords& records)
{
    beginResetModel();
    m_all = records;
    arrange();
    endResetModel();
}

void ChartsModel::setFilter(const QString& text)
{
    beginResetModel();
    m_filter = text.toStdString();
    arrange();
    endResetModel();
}

void ChartsModel::sort(int column, Qt::SortOrder order)
{
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    ChartRecords kept; // what is selected stays so
    for (const QModelIndex& one : before)
        kept.push_back(record(one.row()));
    m_column = column;
    m_order = order;
    arrange();
    QModelIndexList after;
    for (qsizetype i = 0; i < before.size(); ++i)
        after << index(rowOf(kept[static_cast<std::size_t>(i)]->path), before[i].column());
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

void ChartsModel::arrange()
{
    const TextSearch wanted(m_filter);
    m_shown.clear();
    std::ranges::copy_if(m_all, std::back_inserter(m_shown), [&](const auto& chart) {
        return wanted.matches(chart->name, chart->title);
    });
    const auto less = [this](const auto& a, const auto& b) {
        switch (m_column) {
        case Title:
            return naturalLess(a->title, b->title);
        case Scale:
            return a->scale < b->scale;
        case Edition:
            return std::tuple(std::atoi(a->edition.c_str()), a->update)
                < std::tuple(std::atoi(b->edition.c_str()), b->update);
        case Date:
            return a->date < b->date;
        case Kind:
            return a->kind < b->kind;
        default:
            return naturalLess(a->name, b->name);
        }
    };
    if (m_order == Qt::AscendingOrder)
        std::ranges::stable_sort(m_shown, less);
    else
        std::ranges::stable_sort(m_shown, [&](const auto& a, const auto& b) { return less(b, a); });
}

std::shared_ptr<const ChartRecord> ChartsModel::record(int row) const
{
    return row >= 0 && row < rowCount() ? m_shown[static_cast<std::size_t>(row)] : nullptr;
}

int ChartsModel::rowOf(const std::filesystem::path& path) const
{
    const auto it =
        std::ranges::find_if(m_shown, [&](const auto& chart) { return chart->path == path; });
    return it == m_shown.end() ? -1 : static_cast<int>(it - m_shown.begin());
}

int ChartsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int ChartsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QString ChartsModel::words(const ChartRecord& chart, int column) const
{
    switch (column) {
    case Name:
        return QString::fromStdString(chart.name.empty() ? chart.path.stem().string() : chart.name);
    case Title:
        return QString::fromStdString(chart.problem.empty() ? chart.title : chart.problem);
    case Scale:
        return chart.scale > 0
            ? QStringLiteral("1:") + QLocale(QLocale::English).toString(chart.scale)
            : QString();
    case Edition:
        return chart.update > 0
            ? QStringLiteral("%1.%2").arg(QString::fromStdString(chart.edition)).arg(chart.update)
            : QString::fromStdString(chart.edition);
    case Date:
        return QDate::fromString(QString::fromStdString(chart.date), QStringLiteral("yyyyMMdd"))
            .toString(Qt::ISODate);
    default:
        return text(chart.kind == ChartKind::Cell ? "NSChartVector" : "NSChartRaster");
    }
}

QVariant ChartsModel::data(const QModelIndex& index, int role) const
{
    const auto chart = record(index.row());
    if (!chart)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return words(*chart, index.column());
    case Qt::ToolTipRole:
        return QString::fromStdString(chart->path.string());
    case Qt::ForegroundRole:
        return chart->isUsable() ? QVariant() : QVariant(Theme::theme().colors().dim);
    case Qt::TextAlignmentRole:
        return QVariant(index.column() == Scale ? Qt::AlignRight | Qt::AlignVCenter
                                                : Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant ChartsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const char* const keys[] = {"NSChart",      "NSChartTitle",
                                "NSChartScale", "NSChartEditionShort",
                                "NSChartDate",  "NSChartKind"};
    return section < Columns ? QVariant(text(keys[section])) : QVariant();
}

} // namespace kelvox
