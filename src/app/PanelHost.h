#pragma once

#include "app/SidePanel.h"
#include "base/Settings.h"

#include <QDockWidget>
#include <QFrame>
#include <QLabel>
#include <QMainWindow>
#include <QToolButton>
#include <QVBoxLayout>

#include <map>

namespace kelvox {

/// Where the panels live: one at a time beside the rail over the chart, any number torn off. The
/// place of each is remembered.
class PanelHost final : public QFrame {
    Q_OBJECT
public:
    /// @param area the widget that the open panel lies over
    PanelHost(QMainWindow& window, QWidget& area, Settings& settings);

    void add(SidePanel* panel);
    /// The order of panels(), by name; others come last.
    void arrange(const QStringList& names);
    [[nodiscard]] SidePanel* panel(const QString& name) const;
    [[nodiscard]] const std::vector<SidePanel*>& panels() const { return m_panels; }
    /// Beside the rail, or where it was torn off to.
    SidePanel* open(const QString& name);
    void close(); ///< the one beside the rail
    void toggle(const QString& name);
    [[nodiscard]] bool isOpen(const QString& name) const;

    void tearOff(const QString& name);
    void putBack(const QString& name);
    void restyle();
    void restore(); ///< the places of the last time
    void remember();
    /// Fits itself into the area: called when that changes size.
    void place();
    bool eventFilter(QObject* object, QEvent* event) override;
    void setTop(int top); ///< how much of the area's top is taken, by an alarm

signals:
    void changed(); ///< a panel was opened or closed

private:
    void show(SidePanel* panel);

    QMainWindow& m_window;
    QWidget& m_area;
    Settings& m_settings;
    std::vector<SidePanel*> m_panels;
    std::map<SidePanel*, QDockWidget*> m_docks; ///< of those torn off
    SidePanel* m_current = nullptr;
    int m_top = 0;
    QLabel* m_title;
    QToolButton* m_tearButton;
    QToolButton* m_closeButton;
    QVBoxLayout* m_content;
};

} // namespace kelvox
