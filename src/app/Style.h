#pragma once

#include <QProxyStyle>

class QLabel;

namespace kelvox {

/// What a label is for: decides its size, weight and colour.
enum class TextRole { Plain, Heading, Dim, Warning, Bad };

/// Takes effect at once, also on a label that is shown.
void setTextRole(QLabel& label, TextRole role);

/// How a frame is told from what lies around it. Frames are to be drawn by their own paint event.
/// A card has a line all around and round corners.
void setEdges(QWidget& frame, Qt::Edges edges);
void makeCard(QWidget& frame);

/// How all controls are drawn: flat, in the colours of the palette, in sizes of the design that
/// follow the interface scale.
///
/// A style instead of a style sheet: another palette then costs one repaint, where a sheet would
/// dress every widget of the program again and hold the window up for a second. Borders are
/// QPalette::Mid, the accent is QPalette::Link, amber is QPalette::LinkVisited.
///
/// Labels also take their role from the property "role": heading, dim, warn, bad.
class Style final : public QProxyStyle {
    Q_OBJECT
public:
    Style(); ///< over Fusion, which takes every colour from the palette

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    [[nodiscard]] QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                       SubControl part, const QWidget* widget) const override;
    [[nodiscard]] QRect subElementRect(SubElement element, const QStyleOption* option,
                                       const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option,
                                         const QSize& size, const QWidget* widget) const override;
    /// The toolkit's own pictures, no brighter than a text outside the day.
    [[nodiscard]] QIcon standardIcon(StandardPixmap picture, const QStyleOption* option,
                                     const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* data) const override;
};

} // namespace kelvox
