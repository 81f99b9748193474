#include "app/Rail.h"

#include "app/PanelHost.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/Theme.h"

#include <QAction>
#include <QPainter>
#include <QScrollBar>
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
        words.setPixelSize(std::max(1, height() * 15 / 56));
        words.setBold(true);
        painter.setFont(words);
        painter.setPen(theme.colors().background);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};
} // namespace

Rail::Rail(QWidget* parent)
    : QFrame(parent)
    , m_scroll(new QScrollArea(this))
    , m_content(new QWidget(m_scroll))
    , m_more(new QToolButton(this))
    , m_manOverboard(new MobButton(this))
{
    setObjectName(QStringLiteral("rail"));
    setAutoFillBackground(true);
    setEdges(*this, Qt::RightEdge);
    auto* column = new QVBoxLayout(this);
    column->setSpacing(0);
    // What a low window has no room for is scrolled to; the red button stays in reach.
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    QScroller::grabGesture(m_scroll->viewport(), QScroller::TouchGesture);
    auto* buttons = new QVBoxLayout(m_content);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(0);
    buttons->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    m_scroll->setWidget(m_content);
    column->addWidget(m_scroll, 1);
    m_more->setObjectName(QStringLiteral("rail.more"));
    m_more->setFocusPolicy(Qt::NoFocus); // the keys reach every button without it
    m_more->setAccessibleName(text("NSMore"));
    m_more->setToolTip(text("NSMore"));
    m_more->hide();
    connect(m_more, &QToolButton::clicked, this, &Rail::scrollOn);
    connect(m_scroll->verticalScrollBar(), &QScrollBar::rangeChanged, this, &Rail::updateMore);
    connect(m_scroll->verticalScrollBar(), &QScrollBar::valueChanged, this, &Rail::updateMore);
    column->addWidget(m_more, 0, Qt::AlignHCenter);
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
    updateMore();
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
    const int count = static_cast<int>(m_buttons.size());
    // In a low window the red button leaves room for the others, but stays the largest.
    const int round = std::clamp(room / 7, theme.px(36), theme.px(56));
    m_manOverboard->setFixedSize(round, round);
    const int left = room - theme.px(40 + 28 + 2 * 8) - round; // bars and margins
    // As low as a finger still hits it and as the scale asks for.
    const int lowest = std::max(40, theme.px(30));
    int each = std::min(left / std::max(count, 1), theme.px(48));
    const bool scrolls = each < lowest;
    m_more->setVisible(scrolls);
    m_more->setFixedSize(theme.px(56), std::max(40, theme.px(24)));
    if (scrolls) { // whole buttons only: what is cut off looks like a fault
        const int seen = left - m_more->height();
        each = std::max(lowest, seen / std::max(seen / lowest, 1));
    }
    const int icon = std::min(theme.px(24), each - 12);
    for (const Button& one : m_buttons) {
        one.button->setFixedSize(theme.px(56), each);
        one.button->setIconSize(QSize(icon, icon));
    }
}

void Rail::scrollOn()
{
    QScrollBar* const bar = m_scroll->verticalScrollBar();
    bar->setValue(bar->value() < bar->maximum() ? bar->value() + bar->pageStep() : 0);
}

void Rail::updateMore()
{
    const Theme& theme = Theme::theme();
    const QScrollBar* const bar = m_scroll->verticalScrollBar();
    m_more->setIcon(
        theme.icon(bar->value() < bar->maximum() ? QStringLiteral("down") : QStringLiteral("up")));
    m_more->setIconSize(QSize(theme.px(20), theme.px(20)));
}

void Rail::markOpen(const PanelHost& panels)
{
    for (const Button& one : m_buttons) {
        if (one.panel.isEmpty())
            continue;
        const bool open = panels.isOpen(one.panel);
        if (open && !one.button->isChecked())
            m_scroll->ensureWidgetVisible(one.button, 0, 0);
        one.button->setChecked(open);
    }
}

} // namespace kelvox
