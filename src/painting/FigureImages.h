#pragma once

#include "presentation/Canvas.h"
#include "presentation/S52Render.h"

#include <QImage>

#include <memory>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace kelvox {

/// A small picture and where its anchor lies in it, in pixels.
struct FigureImage {
    QImage image;
    QPointF hotspot;
};

/// Symbols and texts as ready pictures, each painted once for a scheme and a sharpness.
/// Shared by the threads that paint.
class FigureImages final : public TextMeasure {
public:
    explicit FigureImages(double pixelsPerPoint)
        : m_pixelsPerPoint(pixelsPerPoint)
    {
    }
    /// @param symbol of the one scheme that these images are for
    [[nodiscard]] FigureImage symbol(const SymbolDrawing& symbol, float degrees);
    [[nodiscard]] FigureImage text(const TextFigure& figure) const;
    [[nodiscard]] Size size(const TextFigure& figure) const override;
    [[nodiscard]] double pixelsPerPoint() const { return m_pixelsPerPoint; }

private:
    static constexpr std::size_t mostTexts = 20'000; ///< then all are dropped and made anew

    double m_pixelsPerPoint;
    mutable std::shared_mutex m_mutex;
    std::unordered_map<std::string, FigureImage> m_symbols;
    mutable std::unordered_map<std::string, FigureImage> m_texts;
    mutable std::unordered_map<std::string, Size> m_sizes;
};

} // namespace kelvox
