#include "app/Rail.h"

#include "app/PanelHost.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/Theme.h"

#include <QAction>
#include <QPainter>
#include <QScrollArea>
#include <QScroller>
#include <QVBoxLayout>

#include <algorithm>

namespace kelvox {

namespace {
/// Large, round and red: found without reading.
class MobButton final : public QPushButton {
public:
    explicit MobButton(QWidget* parent)
        : QPushButton(QStringLiteral("MOB"), parent)
    {
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Theme& theme = Theme::theme();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double line = theme.px(3);
        painter.setBrush(isDown() ? theme.colors().red.darker(130) : theme.colors().red);
        painter.setPen(hasFocus() ? QPen(theme.colors().text, line) : QPen(Qt::NoPen));
        const double inset = hasFocus() ? line / 2 : 0;
        painter.drawEllipse(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
        QFont words = font();
        words.setPixelSize(theme.px(15));
        words.setBold(true);
        painter.setFont(words);
        painter.setPen(theme.colors().background);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};
} // namespace

Rail::Rail(QWidget* parent)
    : QFrame(parent)
    , m_manOverboard(new MobButton(this))
{
    setObjectName(QStringLiteral("rail"));
    setAutoFillBackground(true);
    setEdges(*this, Qt::RightEdge);
    auto* column = new QVBoxLayout(this);
    column->setSpacing(0);
    // What a low window has no room for is scrolled to; the red button stays in reach.
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
    m_content = new QWidget(scroll);
    auto* buttons = new QVBoxLayout(m_content);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(0);
    buttons->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    scroll->setWidget(m_content);
    column->addWidget(scroll, 1);
    m_manOverboard->setObjectName(QStringLiteral("mobButton"));
    m_manOverboard->setAccessibleName(text("NSCommand.vessel.manOverboard"));
    m_manOverboard->setToolTip(text("NSCommand.vessel.manOverboard"));
    m_manOverboard->setFocusPolicy(Qt::TabFocus);
    connect(m_manOverboard, &QPushButton::clicked, this, &Rail::manOverboard);
    column->addWidget(m_manOverboard, 0, Qt::AlignHCenter);
}

QToolButton* Rail::addButton(const QString& name, const QString& icon, const QString& panel)
{
    auto* button = new QToolButton(m_content);
    button->setObjectName(QStringLiteral("rail.") + name);
    button->setFocusPolicy(Qt::TabFocus);
    m_content->layout()->addWidget(button);
    m_buttons.push_back({button, icon, panel});
    return button;
}

void Rail::addAction(QAction* action, const QString& name, const QString& icon)
{
    auto* button = addButton(name, icon, {});
    button->setDefaultAction(action);
    button->setAccessibleName(action->text());
}

void Rail::addPanels(PanelHost& panels)
{
    for (const SidePanel* panel : panels.panels()) {
        auto* button = addButton(panel->name(), panel->icon(), panel->name());
        button->setCheckable(true);
        button->setToolTip(text(panel->titleKey()));
        button->setAccessibleName(text(panel->titleKey()));
        connect(button, &QToolButton::clicked, &panels,
                [&panels, name = panel->name()] { panels.toggle(name); });
    }
}

void Rail::restyle()
{
    const Theme& theme = Theme::theme();
    setFixedWidth(theme.px(64));
    m_manOverboard->setFixedSize(theme.px(56), theme.px(56));
    layout()->setContentsMargins(0, theme.px(8), 1, theme.px(8));
    for (const Button& one : m_buttons) {
        if (one.button->defaultAction())
            one.button->defaultAction()->setIcon(theme.icon(one.icon));
        else
            one.button->setIcon(theme.icon(one.icon));
    }
}

void Rail::layOut(int room)
{
    const Theme& theme = Theme::theme();
    constexpr int lowest = 40; // pixels that a finger still hits, at any scale
    const int count = static_cast<int>(m_buttons.size());
    const int left = room - theme.px(40 + 28 + 56 + 4 * 8);
    const int each = std::clamp(left / std::max(count, 1), lowest, theme.px(48));
    const int icon = std::min(theme.px(24), each - 12);
    for (const Button& one : m_buttons) {
        one.button->setFixedSize(theme.px(56), each);
        one.button->setIconSize(QSize(icon, icon));
    }
}

void Rail::markOpen(const PanelHost& panels)
{
    for (const Button& one : m_buttons)
        if (!one.panel.isEmpty())
            one.button->setChecked(panels.isOpen(one.panel));
}

} // namespace kelvox
