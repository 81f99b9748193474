#include "app/FlowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace kelvox {

FlowLayout::FlowLayout(QWidget* parent)
    : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout()
{
    for (const Item& one : m_items)
        delete one.item;
}

void FlowLayout::add(QWidget* widget, Grow grow)
{
    addWidget(widget);
    m_items.back().grow = grow;
}

void FlowLayout::addItem(QLayoutItem* item)
{
    m_items.push_back({.item = item});
}

QLayoutItem* FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)].item : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index)
{
    QLayoutItem* const item = itemAt(index);
    if (item)
        m_items.erase(m_items.begin() + index);
    return item;
}

int FlowLayout::gap() const
{
    if (spacing() >= 0)
        return spacing();
    const auto* widget = parentWidget();
    return widget ? widget->style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing) : 0;
}

std::vector<FlowLayout::Line> FlowLayout::linesFor(int width) const
{
    std::vector<Line> lines;
    int left = 0;
    for (const Item& one : m_items) {
        if (one.item->isEmpty())
            continue; // hidden
        const int wanted = one.item->sizeHint().width();
        if (lines.empty() || wanted > left) {
            lines.emplace_back();
            left = width;
        }
        lines.back().push_back(one);
        left -= wanted + gap();
    }
    return lines;
}

int FlowLayout::heightOf(const Line& line)
{
    int height = 0;
    for (const Item& one : line)
        height = std::max(height, one.item->sizeHint().height());
    return height;
}

int FlowLayout::heightForWidth(int width) const
{
    int height = 0;
    for (const Line& line : linesFor(width))
        height += heightOf(line) + (height > 0 ? gap() : 0);
    return height;
}

QSize FlowLayout::sizeHint() const
{
    QSize whole;
    for (const Item& one : m_items) {
        if (one.item->isEmpty())
            continue;
        const QSize size = one.item->sizeHint();
        whole.rwidth() += size.width() + (whole.width() > 0 ? gap() : 0);
        whole.rheight() = std::max(whole.height(), size.height());
    }
    return whole;
}

QSize FlowLayout::minimumSize() const
{
    QSize least;
    for (const Item& one : m_items)
        if (!one.item->isEmpty())
            least = least.expandedTo(one.item->minimumSize());
    return least;
}

void FlowLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    int top = rect.top();
    for (const Line& line : linesFor(rect.width())) {
        const int height = heightOf(line);
        place(line, {rect.left(), top, rect.width(), height});
        top += height + gap();
    }
}

void FlowLayout::place(const Line& line, const QRect& rect) const
{
    int room = rect.width() - gap() * (static_cast<int>(line.size()) - 1);
    int wanted = 0; // by those that grow
    int widest = 0;
    int growing = 0;
    for (const Item& one : line) {
        const int width = one.item->sizeHint().width();
        if (one.grow == Grow::No) {
            room -= width;
            continue;
        }
        wanted += width;
        widest = std::max(widest, width);
        ++growing;
    }
    // All alike where that is possible.
    const bool alike = growing > 0 && widest * growing <= room;
    const int more = growing > 0 ? std::max(room - wanted, 0) / growing : 0;
    int left = rect.left();
    const auto direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    for (const Item& one : line) {
        int width = std::min(one.item->sizeHint().width(), rect.width());
        if (one.grow == Grow::Yes)
            width = alike ? room / growing : width + more;
        // A lower one stands in the middle of its line.
        const int height = one.grow == Grow::Yes
            ? rect.height()
            : std::min(one.item->sizeHint().height(), rect.height());
        const QRect there(left, rect.top() + (rect.height() - height) / 2, width, height);
        one.item->setGeometry(QStyle::visualRect(direction, rect, there));
        left += width + gap();
    }
}

} // namespace kelvox
