#pragma once

#include "presentation/S52Model.h"

#include <QColor>
#include <QIcon>
#include <QString>

namespace kelvox {

enum class ColorScheme { Day, Dusk, Night };

/// How the interface looks: the chart's own interface colours, so that everything darkens with the
/// chart, and sizes that follow the interface scale. Main thread; one for the program.
class Theme {
public:
    struct Colors {
        QColor background; ///< UIBCK
        QColor raised; ///< panels and fields: a little off the background
        QColor border; ///< UIBDR, thinned
        QColor text; ///< UINFD
        QColor dim; ///< UINFF
        QColor accent; ///< UINFB
        QColor onAccent; ///< text over the accent
        QColor red, green, amber, magenta; ///< UINFR, UINFG, UINFO, UINFM
        QColor selection; ///< rows and hovered controls
    };

    [[nodiscard]] static Theme& theme();

    /// Dresses the whole application, dialogs, menus and tooltips included.
    /// @param dimming from 0.2 to 1, takes light out of every interface colour
    void apply(ColorScheme scheme, const S52CcieMap& colors, double scale, double dimming = 1);

    [[nodiscard]] ColorScheme scheme() const { return m_scheme; }
    [[nodiscard]] const Colors& colors() const { return m_colors; }
    [[nodiscard]] double scale() const { return m_scale; }
    /// A length of the design in widget pixels at the interface scale.
    [[nodiscard]] int px(double length) const { return qRound(length * m_scale); }
    /// A line icon of resources/icons/ui by file name without ending, tinted for the scheme. Icons
    /// that are held must be asked for anew after the theme changed.
    [[nodiscard]] QIcon icon(const QString& name) const { return icon(name, m_colors.text); }
    [[nodiscard]] QIcon icon(const QString& name, const QColor& color) const;
    [[nodiscard]] QPixmap pixmap(const QString& name, const QColor& color, int size,
                                 double pixelRatio) const;

private:
    ColorScheme m_scheme = ColorScheme::Day;
    Colors m_colors;
    double m_scale = 1;
    double m_dressedScale = 0; ///< of the style that is set
};

} // namespace kelvox
