#include "app/panels/ListView.h"

#include "app/Theme.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace kelvox {

namespace {
class RowDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(std::max(size.height(), Theme::theme().px(40)));
        return size;
    }
};
} // namespace

ListView::ListView(QWidget* parent)
    : QTreeView(parent)
{
    setItemDelegate(new RowDelegate(this));
    setRootIsDecorated(false);
    setUniformRowHeights(true); // or ten thousand rows would all be measured
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    setSortingEnabled(true);
    setMouseTracking(true);
    setVerticalScrollMode(ScrollPerPixel);
    header()->setStretchLastSection(false);
    header()->setHighlightSections(false);
    setTextElideMode(Qt::ElideRight);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void ListView::setEmptyText(const QString& text)
{
    m_emptyText = text;
    viewport()->update();
}

void ListView::restyle()
{
    const int size = Theme::theme().px(22);
    setIconSize(QSize(size, size));
    scheduleDelayedItemsLayout();
}

QList<int> ListView::selectedRows() const
{
    QList<int> rows;
    if (selectionModel())
        for (const QModelIndex& index : selectionModel()->selectedRows())
            rows << index.row();
    std::ranges::sort(rows);
    return rows;
}

void ListView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (!model() || model()->rowCount() > 0 || m_emptyText.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(Theme::theme().colors().dim);
    const int margin = Theme::theme().px(16);
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_emptyText);
}

void ListView::hover(int row)
{
    if (row == m_hovered)
        return;
    m_hovered = row;
    emit rowHovered(row);
}

void ListView::mouseMoveEvent(QMouseEvent* event)
{
    hover(indexAt(event->position().toPoint()).row());
    QTreeView::mouseMoveEvent(event);
}

void ListView::leaveEvent(QEvent* event)
{
    hover(-1);
    QTreeView::leaveEvent(event);
}

} // namespace kelvox
