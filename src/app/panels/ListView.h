#pragma once

#include <QTreeView>

namespace kelvox {

/// A list as all panels show theirs: rows a finger can hit, sortable by the heading, words instead
/// of rows while it is empty, and the row under the pointer told to whoever shows it on the chart.
class ListView final : public QTreeView {
    Q_OBJECT
public:
    explicit ListView(QWidget* parent = nullptr);

    /// What would be here and how to get it.
    void setEmptyText(const QString& text);
    void restyle(); ///< after the interface scale changed
    /// The rows of the selection, each once, in their order.
    [[nodiscard]] QList<int> selectedRows() const;

signals:
    void rowHovered(int row); ///< -1: none

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void hover(int row);
    QString m_emptyText;
    int m_hovered = -1;
};

} // namespace kelvox
