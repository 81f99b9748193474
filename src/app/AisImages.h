#pragma once

#include "ais/AISPicture.h"
#include "app/ChartLayer.h"
#include "painting/AreaFiller.h"

#include <QFont>
#include <QHash>
#include <QImage>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvox {

/// Symbols and names of targets as ready images, each painted once for a look: thousands of targets
/// then cost little more than copying small images. One thread at a time.
class AisImages {
public:
    struct Look {
        QColor line;
        QColor fill;
        QColor text; ///< of names
        QColor halo; ///< behind them
        double scale = 1;
        double pixelRatio = 1;
    };

    /// Everything that was painted for another look is dropped.
    void setLook(const Look& look, const QFont& font);

    /// Where symbols and names go from now on: straight to these pixels, past the painter, which
    /// then says nothing but their order among other things; or to the painter again.
    void setTarget(std::optional<PixelBuffer> pixels) { m_target = pixels; }

    /// Paints the symbol about the point of its antenna; not for hulls to scale.
    void paintSymbol(QPainter& painter, const AISSymbol& symbol, QPointF at, const QColor& line);
    /// The size of a name in widget pixels.
    [[nodiscard]] QSizeF labelSize(const std::string& name);
    void paintLabel(QPainter& painter, const std::string& name, QPointF topLeft);

private:
    [[nodiscard]] const QImage& symbolImage(const AISSymbol& symbol, const QColor& line);
    [[nodiscard]] const QImage& labelImage(const std::string& name);
    /// On whole device pixels, where it is copied instead of resampled.
    void place(QPainter& painter, const QImage& image, QPointF topLeft) const;

    static constexpr std::size_t mostLabels = 20'000;

    Look m_look;
    QFont m_font;
    std::optional<PixelBuffer> m_target;
    QHash<std::uint64_t, QImage> m_symbols;
    std::unordered_map<std::string, QImage> m_labels;
};

/// Which places of a view are taken by names already, so that they do not lie on each other.
class LabelRoom {
public:
    LabelRoom(double width, double height);
    /// Whether the point is; where it is not, nothing that holds it fits.
    [[nodiscard]] bool isFree(QPointF point) const;
    /// Takes the rectangle when all of it is free.
    [[nodiscard]] bool take(const QRectF& rectangle);

private:
    static constexpr double cell = 6; // widget pixels
    [[nodiscard]] static int place(double value, int count);
    int m_columns;
    int m_rows;
    std::vector<std::uint8_t> m_taken;
};

} // namespace kelvox
