#include "app/Theme.h"

#include "base/Folders.h"
#include "painting/PainterCanvas.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleFactory>
#include <QSvgRenderer>

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
    palette.setColor(QPalette::LinkVisited, c.magenta);
    for (const auto role :
         {QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Shadow})
        palette.setColor(role, c.border);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, mixed(c.background, c.dim, 0.6));

    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    if (!QFontDatabase::families().contains(font.family()))
        font.setFamily(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(px(13));

    // Fusion takes every colour from the palette, so no corner stays white at night.
    if (QApplication::style()->objectName() != QLatin1String("fusion"))
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(palette);
    // The font of every widget follows this one: a rule of the style sheet for all of them would be
    // handed down from each parent to each child again, two seconds for a window.
    if (QApplication::font() != font)
        QApplication::setFont(font);
    qApp->setStyleSheet(styleSheet());
}

QString Theme::styleSheet() const
{
    const Colors& c = m_colors;
    QString sheet = QStringLiteral(R"(
* { outline: none; }
QMainWindow, QDialog { background: $background; }
QToolTip { background: $raised; color: $text; border: 1px solid $border; padding: @4px; }
QMenu { background: $background; color: $text; border: 1px solid $border; padding: @4px 0; }
QMenu::item { padding: @8px @28px @8px @20px; }
QMenu::item:selected { background: $selection; }
QMenu::item:disabled { color: $dim; }
QMenu::separator { height: 1px; background: $border; margin: @4px 0; }
QMenuBar { background: $background; color: $text; }
QMenuBar::item { padding: @8px @12px; background: transparent; }
QMenuBar::item:selected { background: $selection; }
QLineEdit, QSpinBox, QDoubleSpinBox, QComboBox, QPlainTextEdit, QTextEdit, QDateTimeEdit {
  background: $raised; color: $text; border: 1px solid $border; border-radius: @4px;
  padding: @4px @8px; min-height: @24px; selection-background-color: $selection;
  selection-color: $text; }
QLineEdit:focus, QSpinBox:focus, QDoubleSpinBox:focus, QComboBox:focus, QPlainTextEdit:focus,
QTextEdit:focus, QDateTimeEdit:focus { border-color: $accent; }
QComboBox QAbstractItemView { background: $background; border: 1px solid $border;
  selection-background-color: $selection; selection-color: $text; }
QComboBox::drop-down { border: none; width: @24px; }
QPushButton { background: $raised; color: $text; border: 1px solid $border; border-radius: @4px;
  padding: @6px @16px; min-height: @26px; }
QPushButton:hover, QToolButton:hover { background: $selection; }
QPushButton:focus, QToolButton:focus { border: 1px solid $accent; }
QPushButton:default { border-color: $accent; }
QPushButton:checked, QToolButton:checked { background: $selection; }
QPushButton:disabled { color: $dim; }
QToolButton { background: transparent; color: $text; border: 1px solid transparent;
  border-radius: @4px; padding: @4px; }
QToolButton::menu-indicator { image: none; }
QTableView, QTreeView, QListView { background: $background; alternate-background-color: $background;
  color: $text; border: none; gridline-color: $border; selection-background-color: $selection;
  selection-color: $text; }
QTableView::item, QTreeView::item, QListView::item { padding: @4px @6px; }
QTableView::item:selected, QTreeView::item:selected, QListView::item:selected {
  background: $selection; color: $text; }
QHeaderView { background: $background; }
QHeaderView::section { background: $background; color: $dim; border: none;
  border-bottom: 1px solid $border; padding: @4px @6px; }
QTableCornerButton::section { background: $background; border: none; }
QScrollBar { background: transparent; border: none; margin: 0; }
QScrollBar:vertical { width: @12px; } QScrollBar:horizontal { height: @12px; }
QScrollBar::handle { background: $border; border-radius: @4px; margin: @2px; }
QScrollBar::handle:vertical { min-height: @40px; } QScrollBar::handle:horizontal { min-width: @40px; }
QScrollBar::handle:hover { background: $dim; }
QScrollBar::add-line, QScrollBar::sub-line, QScrollBar::add-page, QScrollBar::sub-page {
  background: transparent; border: none; width: 0; height: 0; }
QScrollArea { border: none; background: transparent; }
QTabBar::tab { background: transparent; color: $dim; padding: @8px @12px; border: none;
  border-bottom: 2px solid transparent; }
QTabBar::tab:selected { color: $text; border-bottom-color: $accent; }
QTabWidget::pane { border: none; border-top: 1px solid $border; }
QCheckBox, QRadioButton { color: $text; spacing: @8px; min-height: @28px; }
QSlider { min-height: @28px; }
QSlider::groove:horizontal { height: @4px; background: $border; border-radius: @2px; }
QSlider::handle:horizontal { background: $accent; width: @18px; margin: -@7px 0;
  border-radius: @9px; }
QProgressBar { background: $raised; border: 1px solid $border; border-radius: @4px;
  text-align: center; color: $text; min-height: @16px; }
QProgressBar::chunk { background: $selection; border-radius: @3px; }
QGroupBox { border: none; border-top: 1px solid $border; margin-top: @20px; padding-top: @8px; }
QGroupBox::title { subcontrol-origin: margin; left: 0; color: $dim; }
QDockWidget { color: $text; }
QDockWidget::title { background: $background; padding: @6px; border-bottom: 1px solid $border; }
QSplitter::handle { background: $border; }
#topBar, #rail, #statusLine, #sidePanel, #instrumentColumn, #card { background: $background; }
#topBar { border-bottom: 1px solid $border; } #statusLine { border-top: 1px solid $border; }
#rail { border-right: 1px solid $border; } #sidePanel { border-right: 1px solid $border; }
#instrumentColumn { border-left: 1px solid $border; }
#card { border: 1px solid $border; border-radius: @8px; }
#panelTitle { font-size: @15px; font-weight: 600; }
#statusLine QLabel { font-size: @12px; color: $text; }
QLabel[role="dim"], #statusLine QLabel[role="dim"] { color: $dim; font-size: @12px; }
QLabel[role="heading"] { font-size: @15px; font-weight: 600; }
QLabel[role="bad"] { color: $red; } QLabel[role="warn"] { color: $amber; }
#mobButton { background: $red; color: $background; border: none; border-radius: @28px;
  font-size: @15px; font-weight: 700; min-width: @56px; max-width: @56px; min-height: @56px;
  max-height: @56px; padding: 0; }
#mobButton:focus { border: @3px solid $text; }
)");
    const std::pair<const char*, QColor> names[] = {{"$background", c.background},
                                                    {"$raised", c.raised},
                                                    {"$border", c.border},
                                                    {"$text", c.text},
                                                    {"$dim", c.dim},
                                                    {"$accent", c.accent},
                                                    {"$selection", c.selection},
                                                    {"$red", c.red},
                                                    {"$amber", c.amber},
                                                    {"$green", c.green}};
    for (const auto& [name, color] : names)
        sheet.replace(QLatin1String(name), color.name());
    // "@12px" is twelve pixels at the interface scale.
    QString scaled;
    scaled.reserve(sheet.size());
    for (qsizetype i = 0; i < sheet.size(); ++i) {
        if (sheet[i] != QLatin1Char('@')) {
            scaled += sheet[i];
            continue;
        }
        int length = 0;
        while (i + 1 < sheet.size() && sheet[i + 1].isDigit())
            length = length * 10 + sheet[++i].digitValue();
        scaled += QString::number(px(length));
    }
    return scaled;
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
