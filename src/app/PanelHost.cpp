#include "app/PanelHost.h"

#include "app/Style.h"
#include "app/Text.h"
#include "app/Theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QScrollArea>

#include <algorithm>

namespace kelvox {

namespace {
std::string settingOf(const SidePanel& panel)
{
    return "panel." + panel.name().toStdString() + ".tornOff";
}
} // namespace

PanelHost::PanelHost(QMainWindow& window, QWidget& area, Settings& settings)
    : QFrame(&area)
    , m_window(window)
    , m_area(area)
    , m_settings(settings)
    , m_title(new QLabel(this))
    , m_tearButton(new QToolButton(this))
    , m_closeButton(new QToolButton(this))
{
    setObjectName(QStringLiteral("sidePanel"));
    setEdges(*this, Qt::RightEdge);
    setAutoFillBackground(true);
    m_title->setObjectName(QStringLiteral("panelTitle"));
    m_tearButton->setToolTip(text("NSTearOff"));
    m_tearButton->setAccessibleName(text("NSTearOff"));
    m_closeButton->setToolTip(text("NSClose"));
    m_closeButton->setAccessibleName(text("NSClose"));
    auto* heading = new QHBoxLayout;
    heading->addWidget(m_title, 1);
    heading->addWidget(m_tearButton);
    heading->addWidget(m_closeButton);
    m_content = new QVBoxLayout(this);
    m_content->addLayout(heading);
    connect(m_closeButton, &QToolButton::clicked, this, &PanelHost::close);
    connect(m_tearButton, &QToolButton::clicked, this, [this] {
        if (m_current)
            tearOff(m_current->name());
    });
    hide();
    restyle();
}

void PanelHost::add(SidePanel* panel)
{
    panel->setParent(this);
    panel->hide();
    m_panels.push_back(panel);
}

void PanelHost::arrange(const QStringList& names)
{
    const auto place = [&](const SidePanel* panel) {
        const auto at = names.indexOf(panel->name());
        return at < 0 ? names.size() : at;
    };
    std::ranges::stable_sort(m_panels, {}, place);
}

SidePanel* PanelHost::panel(const QString& name) const
{
    const auto it = std::ranges::find_if(m_panels, [&](SidePanel* p) { return p->name() == name; });
    return it == m_panels.end() ? nullptr : *it;
}

SidePanel* PanelHost::open(const QString& name)
{
    SidePanel* const wanted = panel(name);
    if (!wanted)
        return nullptr;
    if (const auto it = m_docks.find(wanted); it != m_docks.end()) {
        it->second->show();
        it->second->raise();
    } else {
        show(wanted);
    }
    emit changed();
    return wanted;
}

void PanelHost::show(SidePanel* panel)
{
    if (m_current && m_current != panel) {
        m_content->removeWidget(m_current);
        m_current->hide();
    }
    m_current = panel;
    m_title->setText(text(panel->titleKey()));
    m_content->addWidget(panel, 1);
    panel->show();
    place();
    QWidget::show();
    raise();
}

void PanelHost::close()
{
    if (m_current) {
        m_content->removeWidget(m_current);
        m_current->hide();
        m_current = nullptr;
    }
    hide();
    emit changed();
}

void PanelHost::toggle(const QString& name)
{
    SidePanel* const wanted = panel(name);
    if (!wanted)
        return;
    if (const auto it = m_docks.find(wanted); it != m_docks.end()) {
        it->second->setVisible(!it->second->isVisible());
        emit changed();
    } else if (m_current == wanted) {
        close();
    } else {
        open(name);
    }
}

bool PanelHost::isOpen(const QString& name) const
{
    SidePanel* const wanted = panel(name);
    if (!wanted)
        return false;
    const auto it = m_docks.find(wanted);
    return it != m_docks.end() ? it->second->isVisible() : m_current == wanted;
}

void PanelHost::tearOff(const QString& name)
{
    SidePanel* const torn = panel(name);
    if (!torn || m_docks.contains(torn))
        return;
    if (m_current == torn)
        close();
    auto* dock = new QDockWidget(text(torn->titleKey()), &m_window);
    dock->setObjectName(QStringLiteral("dock.") + name);
    dock->setWidget(torn);
    torn->show();
    m_docks.emplace(torn, dock);
    m_window.addDockWidget(Qt::RightDockWidgetArea, dock);
    dock->setFloating(true);
    dock->resize(Theme::theme().px(torn->preferredWidth()), Theme::theme().px(480));
    dock->move(m_window.geometry().center() - QPoint(dock->width() / 2, dock->height() / 2));
    // A second button beside close: back to the rail.
    auto* back = new QAction(text("NSPutBack"), dock);
    connect(back, &QAction::triggered, this, [this, name] { putBack(name); });
    dock->addAction(back);
    dock->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(dock, &QDockWidget::visibilityChanged, this, [this] { emit changed(); });
    dock->installEventFilter(this); // where it is moved to is remembered
    m_settings.set(settingOf(*torn), true);
}

void PanelHost::putBack(const QString& name)
{
    SidePanel* const torn = panel(name);
    const auto it = m_docks.find(torn);
    if (!torn || it == m_docks.end())
        return;
    QDockWidget* const dock = it->second;
    dock->removeEventFilter(this);
    m_docks.erase(it);
    torn->setParent(this);
    m_window.removeDockWidget(dock);
    dock->deleteLater();
    m_settings.set(settingOf(*torn), false);
    open(name);
}

bool PanelHost::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        emit changed();
    return QFrame::eventFilter(object, event);
}

void PanelHost::restyle()
{
    const Theme& theme = Theme::theme();
    m_tearButton->setIcon(theme.icon(QStringLiteral("tear-off")));
    m_closeButton->setIcon(theme.icon(QStringLiteral("close")));
    for (QToolButton* button : {m_tearButton, m_closeButton}) {
        button->setIconSize(QSize(theme.px(20), theme.px(20)));
        button->setFixedSize(theme.px(40), theme.px(40));
    }
    const int margin = theme.px(12);
    m_content->setContentsMargins(margin, theme.px(4), margin, margin);
    m_content->setSpacing(theme.px(8));
    for (SidePanel* panel : m_panels)
        panel->restyle();
    place();
}

void PanelHost::place()
{
    if (!m_current)
        return;
    const int width =
        std::min(Theme::theme().px(m_current->preferredWidth()), m_area.width() * 4 / 5);
    setGeometry(0, m_top, width, m_area.height() - m_top);
}

void PanelHost::setTop(int top)
{
    m_top = top;
    place();
}

void PanelHost::restore()
{
    for (SidePanel* panel : m_panels)
        if (m_settings.boolean(settingOf(*panel)))
            tearOff(panel->name());
    const QString open = QString::fromStdString(m_settings.text("panel.open"));
    if (!open.isEmpty() && panel(open) && !m_docks.contains(panel(open)))
        PanelHost::open(open);
}

void PanelHost::remember()
{
    m_settings.set("panel.open", m_current ? m_current->name().toStdString() : std::string());
}

} // namespace kelvox
