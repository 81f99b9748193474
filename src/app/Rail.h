#pragma once

#include <QFrame>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>

#include <utility>
#include <vector>

namespace kelvox {

class PanelHost;

/// The column at the left: a button for each panel, and the red one, which never scrolls away.
class Rail final : public QFrame {
    Q_OBJECT
public:
    explicit Rail(QWidget* parent);

    /// A button above those of the panels.
    /// @param icon a file of resources/icons/ui without ending
    void addAction(QAction* action, const QString& name, const QString& icon);
    void addPanels(PanelHost& panels);
    void restyle();
    /// All buttons at once where there is room, else the rest by a button at the end.
    /// @param room height of the window
    void layOut(int room);
    void markOpen(const PanelHost& panels);

signals:
    void manOverboard();

private:
    struct Button {
        QToolButton* button = nullptr;
        QString icon;
        QString panel; ///< its name; empty for an action
    };
    QToolButton* addButton(const QString& name, const QString& icon, const QString& panel);

    void scrollOn();
    void updateMore();

    QScrollArea* m_scroll;
    QWidget* m_content;
    QToolButton* m_more;
    QPushButton* m_manOverboard;
    std::vector<Button> m_buttons;
};

} // namespace kelvox
