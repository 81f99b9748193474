#pragma once

#include "app/Program.h"

#include <QFrame>

namespace kelvox {

/// The right column: the gauges of the user's choice, and the way to the active waypoint beneath.
class InstrumentColumn final : public QFrame {
    Q_OBJECT
public:
    explicit InstrumentColumn(Program& program, QWidget* parent = nullptr);
    /// A widget beneath the gauges that is never scrolled away.
    void setFooter(QWidget* footer);

protected:
    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace kelvox
