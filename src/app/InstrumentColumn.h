#pragma once

#include "app/Program.h"

#include <QFrame>

namespace kelvox {

/// The right column: large figures, and the active waypoint beneath them.
class InstrumentColumn final : public QFrame {
    Q_OBJECT
public:
    explicit InstrumentColumn(Program& program, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] QSize sizeHint() const override;

private:
    Program& m_program;
};

} // namespace kelvox
