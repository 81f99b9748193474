#pragma once

#include "app/nav/NavActions.h"

#include <QFrame>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QToolButton;

namespace kelvox {

/// The fields of one waypoint, written back one by one as each is left. What cannot be taken stays
/// in its field with the reason below.
class WaypointEditor final : public QFrame {
    Q_OBJECT
public:
    explicit WaypointEditor(NavActions& actions, QWidget* parent = nullptr);

    void show(const WaypointPointer& waypoint); ///< null: nothing to edit
    [[nodiscard]] const WaypointPointer& waypoint() const { return m_waypoint; }
    void refresh(); ///< the waypoint changed elsewhere
    void editName(); ///< puts the keyboard into the name
    void restyle();

private:
    void takeName();
    void takePosition();
    void takeGroups();
    void takeDescription();
    void chooseIcon();
    void complain(QLineEdit* field, const QString& reason);
    bool eventFilter(QObject* object, QEvent* event) override;

    NavActions& m_actions;
    WaypointPointer m_waypoint;
    QToolButton* m_icon;
    QLineEdit* m_name;
    QLineEdit* m_latitude;
    QLineEdit* m_longitude;
    QLineEdit* m_groups;
    QPlainTextEdit* m_description;
    QCheckBox* m_show;
    QLabel* m_reason;
    QLineEdit* m_faulty = nullptr; ///< the field that the reason is about
};

} // namespace kelvox
