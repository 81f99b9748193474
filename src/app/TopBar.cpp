#include "app/TopBar.h"

#include "app/Program.h"
#include "app/Style.h"
#include "app/Text.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>

#include <array>

namespace kelvox {

namespace {
QToolButton* makeButton(QWidget* parent, const QString& name)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}
} // namespace

TopBar::TopBar(Program& program, Commands& commands, QWidget* parent)
    : QFrame(parent)
    , m_program(program)
    , m_commands(commands)
    , m_menu(makeButton(this, QStringLiteral("menuButton")))
    , m_scheme(makeButton(this, QStringLiteral("schemeButton")))
    , m_alarms(makeButton(this, QStringLiteral("alarmsButton")))
{
    setObjectName(QStringLiteral("topBar"));
    setAutoFillBackground(true);
    setEdges(*this, Qt::BottomEdge);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    m_menu->setPopupMode(QToolButton::InstantPopup);
    m_menu->setAccessibleName(text("NSMenu"));
    m_menu->setToolTip(text("NSMenu"));
    auto* name = new QLabel(QStringLiteral("Kelvox"), this);
    name->setProperty("role", QStringLiteral("heading"));
    m_scheme->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_scheme->setToolTip(text("NSCommand.view.nextScheme"));
    connect(m_scheme, &QToolButton::clicked, this,
            [this] { m_commands.action("view.nextScheme")->trigger(); });
    m_alarms->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_alarms->setToolTip(text("NSAlarms"));
    m_alarms->setAccessibleName(text("NSAlarms"));
    connect(m_alarms, &QToolButton::clicked, this, &TopBar::alarmsClicked);
    row->addWidget(m_menu);
    row->addWidget(name);
    row->addStretch(1);
    row->addStretch(1);
    row->addWidget(m_scheme);
    row->addWidget(m_alarms);
}

void TopBar::buildMenu()
{
    auto* menu = new QMenu(m_menu);
    std::map<std::string, QMenu*> groups;
    for (const Commands::Command& command : m_commands.all()) {
        QMenu*& group = groups[command.group];
        if (!group)
            group = menu->addMenu(text(command.group));
        group->addAction(command.action);
    }
    if (const auto help = groups.find("NSMenuHelp"); help != groups.end()) {
        menu->removeAction(help->second->menuAction());
        menu->addAction(help->second->menuAction()); // where everybody looks for it: last
    }
    m_menu->setMenu(menu);
}

void TopBar::setSearch(QWidget* search)
{
    constexpr int middle = 3; // between the two stretches
    search->setMaximumWidth(Theme::theme().px(420));
    static_cast<QHBoxLayout*>(layout())->insertWidget(middle, search, 2);
}

void TopBar::restyle()
{
    const Theme& theme = Theme::theme();
    setFixedHeight(theme.px(40));
    m_menu->setIcon(theme.icon(QStringLiteral("menu")));
    m_menu->setIconSize(QSize(theme.px(24), theme.px(24)));
    m_menu->setFixedSize(theme.px(40), theme.px(40));
    constexpr std::array words{"NSDay", "NSDusk", "NSNight"};
    m_scheme->setText(text(words.at(static_cast<std::size_t>(m_program.scheme()))));
    m_scheme->setIcon(theme.icon(QStringLiteral("scheme")));
    for (QToolButton* button : {m_scheme, m_alarms}) {
        button->setIconSize(QSize(theme.px(20), theme.px(20)));
        button->setFixedHeight(theme.px(40));
    }
    updateAlarms();
}

void TopBar::updateAlarms()
{
    const auto count = m_program.alarms().active().size();
    const Theme& theme = Theme::theme();
    m_alarms->setText(QString::number(count));
    m_alarms->setIcon(
        theme.icon(QStringLiteral("alarm"), count > 0 ? theme.colors().red : theme.colors().text));
}

} // namespace kelvox
