#pragma once

#include <QLayout>

#include <vector>

namespace kelvox {

/// A row of controls that goes on in the next line where there is no room: long words and large
/// interfaces cut nothing off.
class FlowLayout final : public QLayout {
    Q_OBJECT
public:
    enum class Grow { No, Yes };

    explicit FlowLayout(QWidget* parent = nullptr);
    ~FlowLayout() override;

    /// @param grow whether it shares what is left of its line
    void add(QWidget* widget, Grow grow = Grow::No);

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] int count() const override { return static_cast<int>(m_items.size()); }
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    struct Item {
        QLayoutItem* item = nullptr;
        Grow grow = Grow::No;
    };
    using Line = std::vector<Item>;
    [[nodiscard]] std::vector<Line> linesFor(int width) const;
    [[nodiscard]] static int heightOf(const Line& line);
    [[nodiscard]] int gap() const;
    void place(const Line& line, const QRect& rect) const;

    std::vector<Item> m_items;
};

} // namespace kelvox
