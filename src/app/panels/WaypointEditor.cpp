#include "app/panels/WaypointEditor.h"

#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"
#include "app/nav/WaypointSymbols.h"
#include "navigation/PositionFormatter.h"
#include "navigation/WaypointIcons.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidgetAction>

namespace kelvox {

namespace {
constexpr int iconSize = 24;

LayerLook lookOf(Program& program)
{
    return LayerLook{*program.presentation().portrayal()};
}

/// Only what the user has not begun to change is written over.
void setUnlessEdited(QLineEdit* field, const QString& words)
{
    if (!(field->hasFocus() && field->isModified()) && field->text() != words)
        field->setText(words);
}
} // namespace

WaypointEditor::WaypointEditor(NavActions& actions, QWidget* parent)
    : QFrame(parent)
    , m_actions(actions)
    , m_icon(new QToolButton(this))
    , m_name(new QLineEdit(this))
    , m_latitude(new QLineEdit(this))
    , m_longitude(new QLineEdit(this))
    , m_groups(new QLineEdit(this))
    , m_description(new QPlainTextEdit(this))
    , m_show(new QCheckBox(text("NSShowOnChart"), this))
    , m_reason(new QLabel(this))
{
    m_icon->setAccessibleName(text("NSIcon"));
    m_icon->setToolTip(text("NSChooseIcon"));
    m_name->setAccessibleName(text("NSName"));
    m_latitude->setAccessibleName(text("NSLatitude"));
    m_longitude->setAccessibleName(text("NSLongitude"));
    m_groups->setAccessibleName(text("NSGroups"));
    m_groups->setPlaceholderText(text("NSGroupsHint"));
    m_description->setAccessibleName(text("NSDescription"));
    m_description->setPlaceholderText(text("NSDescription"));
    m_description->setTabChangesFocus(true);
    m_description->installEventFilter(this);
    m_reason->setProperty("role", QStringLiteral("bad"));
    m_reason->setWordWrap(true);
    m_reason->hide();

    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto label = [this](const char* key) {
        auto* it = new QLabel(text(key), this);
        it->setProperty("role", QStringLiteral("dim"));
        return it;
    };
    grid->addWidget(m_icon, 0, 0);
    grid->addWidget(m_name, 0, 1);
    grid->addWidget(label("NSLatitude"), 1, 0);
    grid->addWidget(m_latitude, 1, 1);
    grid->addWidget(label("NSLongitude"), 2, 0);
    grid->addWidget(m_longitude, 2, 1);
    grid->addWidget(m_reason, 3, 0, 1, 2);
    grid->addWidget(label("NSGroups"), 4, 0);
    grid->addWidget(m_groups, 4, 1);
    grid->addWidget(m_description, 5, 0, 1, 2);
    grid->addWidget(m_show, 6, 0, 1, 2);
    grid->setColumnStretch(1, 1);

    connect(m_name, &QLineEdit::editingFinished, this, &WaypointEditor::takeName);
    connect(m_latitude, &QLineEdit::editingFinished, this, &WaypointEditor::takePosition);
    connect(m_longitude, &QLineEdit::editingFinished, this, &WaypointEditor::takePosition);
    connect(m_groups, &QLineEdit::editingFinished, this, &WaypointEditor::takeGroups);
    connect(m_icon, &QToolButton::clicked, this, &WaypointEditor::chooseIcon);
    connect(m_show, &QCheckBox::clicked, this, [this](bool on) {
        m_actions.program().waypoints().edit(m_waypoint, [on](Waypoint& it) { it.show = on; });
    });
    restyle();
}

void WaypointEditor::restyle()
{
    const Theme& theme = Theme::theme();
    m_icon->setFixedSize(theme.px(44), theme.px(40));
    m_icon->setIconSize(QSize(theme.px(iconSize), theme.px(iconSize)));
    for (QLineEdit* field : {m_name, m_latitude, m_longitude, m_groups})
        field->setMinimumHeight(theme.px(40));
    m_description->setFixedHeight(theme.px(60));
    m_show->setMinimumHeight(theme.px(40));
    static_cast<QGridLayout*>(layout())->setVerticalSpacing(theme.px(4));
    refresh();
}

void WaypointEditor::show(const WaypointPointer& waypoint)
{
    if (waypoint != m_waypoint) {
        m_waypoint = waypoint;
        m_faulty = nullptr;
        m_reason->hide();
        for (QLineEdit* field : {m_name, m_latitude, m_longitude, m_groups})
            field->setModified(false);
        m_description->document()->setModified(false);
    }
    setVisible(m_waypoint != nullptr);
    refresh();
}

void WaypointEditor::refresh()
{
    if (!m_waypoint)
        return;
    Program& program = m_actions.program();
    setUnlessEdited(m_name, QString::fromStdString(m_waypoint->name));
    if (m_faulty != m_latitude)
        setUnlessEdited(m_latitude, navtext::latitude(m_waypoint->latitude));
    if (m_faulty != m_longitude)
        setUnlessEdited(m_longitude, navtext::longitude(m_waypoint->longitude));
    QStringList groups;
    for (const auto& group : m_waypoint->groups)
        groups << QString::fromStdString(group);
    setUnlessEdited(m_groups, groups.join(QStringLiteral(", ")));
    const QString description = QString::fromStdString(m_waypoint->description);
    if (!m_description->document()->isModified() && m_description->toPlainText() != description) {
        m_description->setPlainText(description);
        m_description->document()->setModified(false);
    }
    m_show->setChecked(m_waypoint->show);
    m_icon->setIcon(
        waypointSymbolIcon(m_waypoint->iconIndex, lookOf(program), Theme::theme().px(iconSize)));
}

void WaypointEditor::editName()
{
    m_name->setFocus();
    m_name->selectAll();
}

void WaypointEditor::complain(QLineEdit* field, const QString& reason)
{
    m_faulty = reason.isEmpty() ? nullptr : field;
    m_reason->setText(reason);
    m_reason->setVisible(!reason.isEmpty());
}

void WaypointEditor::takeName()
{
    if (!m_waypoint || !m_name->isModified())
        return;
    m_name->setModified(false);
    const std::string name = m_name->text().trimmed().toStdString();
    const bool taken =
        m_actions.program().waypoints().edit(m_waypoint, [&](Waypoint& it) { it.name = name; });
    complain(m_name,
             taken              ? QString()
                 : name.empty() ? text("NSNameNeeded")
                                : text("NSWaypointAlreadyExists"));
}

void WaypointEditor::takePosition()
{
    if (!m_waypoint || (!m_latitude->isModified() && !m_longitude->isModified()))
        return;
    const Strings& strings = textCatalog().strings();
    Position position = m_waypoint->positionOnGPS();
    const std::tuple<QLineEdit*, NSPositionFormatter::Orientation, double*> axes[] = {
        {m_latitude, NSPositionFormatter::Latitude, &position.latitude},
        {m_longitude, NSPositionFormatter::Longitude, &position.longitude}};
    complain(nullptr, {});
    for (const auto& [field, axis, value] : axes) {
        if (!field->isModified())
            continue;
        const auto read =
            NSPositionFormatter(axis, strings).getObjectValue(field->text().toStdString());
        if (!read) {
            complain(field, QString::fromStdString(read.error().message));
            return;
        }
        *value = *read;
        field->setModified(false);
    }
    m_actions.program().waypoints().editWaypointPosition(m_waypoint, position);
    refresh();
}

void WaypointEditor::takeGroups()
{
    if (!m_waypoint || !m_groups->isModified())
        return;
    m_groups->setModified(false);
    std::set<std::string> groups;
    for (const QString& group : m_groups->text().split(QLatin1Char(','), Qt::SkipEmptyParts))
        if (const QString name = group.trimmed(); !name.isEmpty())
            groups.insert(name.toStdString());
    m_actions.program().waypoints().edit(m_waypoint, [&](Waypoint& it) { it.groups = groups; });
    refresh();
}

void WaypointEditor::takeDescription()
{
    if (!m_waypoint || !m_description->document()->isModified())
        return;
    m_description->document()->setModified(false);
    const std::string words = m_description->toPlainText().toStdString();
    m_actions.program().waypoints().edit(m_waypoint, [&](Waypoint& it) { it.description = words; });
}

bool WaypointEditor::eventFilter(QObject* object, QEvent* event)
{
    if (object == m_description && event->type() == QEvent::FocusOut)
        takeDescription();
    return QFrame::eventFilter(object, event);
}

void WaypointEditor::chooseIcon()
{
    if (!m_waypoint)
        return;
    const Theme& theme = Theme::theme();
    const LayerLook look = lookOf(m_actions.program());
    QMenu menu(this);
    auto* list = new QListWidget(&menu);
    list->setViewMode(QListView::IconMode);
    list->setResizeMode(QListView::Adjust);
    list->setMovement(QListView::Static);
    list->setUniformItemSizes(true);
    list->setIconSize(QSize(theme.px(iconSize), theme.px(iconSize)));
    list->setGridSize(QSize(theme.px(44), theme.px(44)));
    list->setFixedSize(theme.px(44 * 8 + 20), theme.px(44 * 7));
    list->setAccessibleName(text("NSChooseIcon"));
    int index = 0;
    for (const WaypointIcon& icon : waypointIcons()) {
        const QString name =
            QString::fromUtf8(icon.gpxSymbol.data(), static_cast<qsizetype>(icon.gpxSymbol.size()));
        auto* item =
            new QListWidgetItem(waypointSymbolIcon(index, look, theme.px(iconSize)), {}, list);
        item->setToolTip(name);
        item->setData(Qt::AccessibleTextRole, name);
        ++index;
    }
    list->setCurrentRow(m_waypoint->iconIndex);
    auto* action = new QWidgetAction(&menu);
    action->setDefaultWidget(list);
    menu.addAction(action);
    const auto take = [&](QListWidgetItem* item) {
        m_actions.program().waypoints().edit(m_waypoint,
                                             [&](Waypoint& it) { it.iconIndex = list->row(item); });
        menu.close();
    };
    connect(list, &QListWidget::itemClicked, &menu, take);
    connect(list, &QListWidget::itemActivated, &menu, take);
    list->setFocus();
    menu.exec(m_icon->mapToGlobal(QPoint(0, m_icon->height())));
}

} // namespace kelvox
