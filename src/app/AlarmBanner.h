#pragma once

#include "app/AlarmCenter.h"

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace kelvox {

/// The alarm over the chart: what, where, since when, and one button. Never modal.
class AlarmBanner final : public QFrame {
    Q_OBJECT
public:
    AlarmBanner(AlarmCenter& alarms, QWidget& area);
    void restyle();
    void place(); ///< along the top of the area

private:
    void update();
    void updateAge();

    AlarmCenter& m_alarms;
    QWidget& m_area;
    QLabel* m_message;
    QLabel* m_information;
    QLabel* m_age;
    QLabel* m_more;
    QPushButton* m_button;
    std::string m_key;
    QTimer m_ageTimer;
};

} // namespace kelvox
