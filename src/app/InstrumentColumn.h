#pragma once

#include "app/Program.h"

#include <QFrame>

namespace kelvox {

/// The right column: the gauges of the user's choice, and the active waypoint beneath them.
class InstrumentColumn final : public QFrame {
    Q_OBJECT
public:
    explicit InstrumentColumn(Program& program, QWidget* parent = nullptr);

protected:
    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace kelvox
