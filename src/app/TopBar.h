#pragma once

#include "app/Commands.h"

#include <QFrame>
#include <QToolButton>

namespace kelvox {

class Program;

/// The slim bar above the chart: menu, search, colours, alarms.
class TopBar final : public QFrame {
    Q_OBJECT
public:
    TopBar(Program& program, Commands& commands, QWidget* parent);

    void buildMenu(); ///< of all commands, once they are known
    void setSearch(QWidget* search); ///< the field in the middle
    void restyle();
    void updateAlarms();

signals:
    void alarmsClicked();

private:
    Program& m_program;
    Commands& m_commands;
    QToolButton* m_menu;
    QToolButton* m_scheme;
    QToolButton* m_alarms;
};

} // namespace kelvox
