#pragma once

#include "app/AlarmCenter.h"

#include <QObject>

namespace kelvox {

/// Puts the alarm with its button into every dialog too, above what stands in it: a dialog that has
/// to be answered first would keep the one in the window from being acknowledged.
class DialogAlarms final : public QObject {
    Q_OBJECT
public:
    DialogAlarms(AlarmCenter& alarms, QObject* parent);
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    AlarmCenter& m_alarms;
};

} // namespace kelvox
