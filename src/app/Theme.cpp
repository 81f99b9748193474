#include "app/Theme.h"

#include "app/Style.h"
#include "base/Folders.h"
#include "painting/PainterCanvas.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <QToolTip>

#include <algorithm>

namespace kelvox {

namespace {
QColor mixed(const QColor& from, const QColor& to, double share)
{
    const auto part = [&](float a, float b) { return a + (b - a) * static_cast<float>(share); };
    return QColor::fromRgbF(part(from.redF(), to.redF()), part(from.greenF(), to.greenF()),
                            part(from.blueF(), to.blueF()));
}
} // namespace

Theme& Theme::theme()
{
    static Theme theme;
    return theme;
}

void Theme::apply(ColorScheme scheme, const S52CcieMap& colors, double scale, double dimming)
{
    m_scheme = scheme;
    m_scale = std::clamp(scale, 0.75, 4.0);
    const double light = std::clamp(dimming, 0.2, 1.0);
    const auto token = [&](const char* name, const QColor& fallback) {
        const auto it = colors.find(name);
        const QColor color = it == colors.end() ? fallback : toQColor(it->second.color);
        return mixed(QColor(Qt::black), color, light);
    };
    const bool day = scheme == ColorScheme::Day;
    Colors c;
    c.background = token("UIBCK", day ? Qt::white : Qt::black);
    c.text = token("UINFD", day ? Qt::black : Qt::gray);
    c.dim = token("UINFF", Qt::darkGray);
    c.raised = mixed(c.background, c.text, day ? 0.05 : 0.16);
    c.border = mixed(c.background, token("UIBDR", Qt::gray), day ? 0.28 : 0.5);
    c.accent = token("UINFB", Qt::blue);
    // The night's blue is too dark to stand on black: text colour carries the accent there.
    if (!day)
        c.accent = mixed(c.accent, c.text, 0.45);
    c.onAccent = c.background;
    c.red = token("UINFR", Qt::red);
    c.green = token("UINFG", Qt::green);
    c.amber = token("UINFO", QColor(255, 160, 0));
    c.magenta = token("UINFM", Qt::magenta);
    c.selection = mixed(c.background, c.accent, day ? 0.16 : 0.4);
    m_colors = c;

    QPalette palette;
    palette.setColor(QPalette::Window, c.background);
    palette.setColor(QPalette::WindowText, c.text);
    palette.setColor(QPalette::Base, c.raised);
    palette.setColor(QPalette::AlternateBase, c.background);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::PlaceholderText, c.dim);
    palette.setColor(QPalette::Button, c.raised);
    palette.setColor(QPalette::ButtonText, c.text);
    palette.setColor(QPalette::BrightText, c.red);
    palette.setColor(QPalette::Highlight, c.selection);
    palette.setColor(QPalette::HighlightedText, c.text);
    palette.setColor(QPalette::ToolTipBase, c.raised);
    palette.setColor(QPalette::ToolTipText, c.text);
    palette.setColor(QPalette::Link, c.accent);
    palette.setColor(QPalette::LinkVisited, c.amber); // nothing here is a link: see Style
    for (const auto role :
         {QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Shadow})
        palette.setColor(role, c.border);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, mixed(c.background, c.dim, 0.6));

    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    if (!QFontDatabase::families().contains(font.family()))
        font.setFamily(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(px(13));
    if (QApplication::font() != font)
        QApplication::setFont(font);

    // Sizes are asked for when a widget is dressed: another scale wants a new style.
    if (!qobject_cast<Style*>(QApplication::style()) || m_scale != m_dressedScale)
        QApplication::setStyle(new Style);
    m_dressedScale = m_scale;
    if (QApplication::palette() != palette) {
        QApplication::setPalette(palette);
        QToolTip::setPalette(palette);
    }
}

QPixmap Theme::pixmap(const QString& name, const QColor& color, int size, double pixelRatio) const
{
    const QString key =
        QStringLiteral("icon/%1/%2/%3/%4").arg(name, color.name()).arg(size).arg(pixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    static const QString folder =
        QString::fromStdString((folders::applicationResources() / "icons" / "ui").string());
    QFile file(folder + QLatin1Char('/') + name + QStringLiteral(".svg"));
    QByteArray drawing;
    if (file.open(QIODevice::ReadOnly))
        drawing = file.readAll();
    drawing.replace("currentColor", color.name().toLatin1());
    pixmap = QPixmap(QSize(size, size) * pixelRatio);
    pixmap.fill(Qt::transparent);
    if (QSvgRenderer renderer(drawing); renderer.isValid()) {
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    pixmap.setDevicePixelRatio(pixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QIcon Theme::icon(const QString& name, const QColor& color) const
{
    QIcon icon;
    for (const double ratio : {1.0, 2.0}) {
        icon.addPixmap(pixmap(name, color, px(20), ratio));
        icon.addPixmap(pixmap(name, m_colors.dim, px(20), ratio), QIcon::Disabled);
    }
    return icon;
}

} // namespace kelvox
