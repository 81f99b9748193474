#pragma once

#include <QColor>
#include <QPainter>
#include <QString>

namespace kelvox {

/// Letters over the chart with a halo in the colour of the paper, so that they read on anything.
struct GlassText {
    QColor ink;
    QColor halo;
    double size = 12; ///< pixels
    bool bold = false;

    /// @param at the middle of the letters
    void paint(QPainter& painter, QPointF at, const QString& words) const;
    [[nodiscard]] double width(const QString& words) const;

private:
    [[nodiscard]] QFont font() const;
};

} // namespace kelvox
