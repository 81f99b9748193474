#include "app/panels/WaypointsPanel.h"

#include "app/ChartView.h"
#include "app/ClearAction.h"
#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/panels/ListView.h"
#include "app/panels/WaypointEditor.h"
#include "exchange/ExchangeTarget.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace kelvox {

namespace {
constexpr auto valuesEvery = std::chrono::seconds(2);

QString shownGroup(const std::string& group)
{
    return group == WaypointsModel::importedGroup ? text("NSImportedGroup")
                                                  : QString::fromStdString(group);
}
} // namespace

WaypointsPanel::WaypointsPanel(NavActions& actions)
    : SidePanel(QStringLiteral("waypoints"), "NSWaypoints", QStringLiteral("waypoint"))
    , m_actions(actions)
    , m_table(new WaypointTable(actions.program(), this))
    , m_search(new QLineEdit(this))
    , m_group(new QComboBox(this))
    , m_groupButton(new QToolButton(this))
    , m_list(new ListView(this))
    , m_new(new QPushButton(text("NSNew"), this))
    , m_goto(new QPushButton(text("NSGoto"), this))
    , m_delete(new QPushButton(text("NSDelete"), this))
    , m_import(new QToolButton(this))
    , m_export(new QToolButton(this))
    , m_editor(new WaypointEditor(actions, this))
{
    m_search->setPlaceholderText(text("NSSearchWaypoints"));
    m_search->setAccessibleName(text("NSSearchWaypoints"));
    addClearAction(*m_search);
    m_group->setAccessibleName(text("NSGroup"));
    m_groupButton->setText(QStringLiteral("⋯"));
    m_groupButton->setToolTip(text("NSGroupMenu"));
    m_groupButton->setAccessibleName(text("NSGroupMenu"));
    m_list->setModel(m_table);
    m_list->setAccessibleName(text("NSWaypoints"));
    m_list->setEmptyText(text("NSNoWaypoints"));
    m_list->sortByColumn(WaypointTable::Name, Qt::AscendingOrder);
    m_list->header()->setSectionResizeMode(WaypointTable::Name, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(WaypointTable::Distance, QHeaderView::Fixed);
    m_list->header()->setSectionResizeMode(WaypointTable::Bearing, QHeaderView::Fixed);
    m_import->setToolTip(text("NSImport"));
    m_import->setAccessibleName(text("NSImport"));
    m_export->setToolTip(text("NSExport"));
    m_export->setAccessibleName(text("NSExport"));

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* filter = new QHBoxLayout;
    filter->addWidget(m_group, 1);
    filter->addWidget(m_groupButton);
    auto* buttons = new FlowLayout;
    for (QPushButton* button : {m_new, m_goto, m_delete})
        buttons->add(button, FlowLayout::Grow::Yes);
    buttons->add(m_import);
    buttons->add(m_export);
    rows->addWidget(m_search);
    rows->addLayout(filter);
    rows->addWidget(m_list, 1);
    rows->addLayout(buttons);
    rows->addWidget(m_editor);

    connect(m_search, &QLineEdit::textChanged, m_table, &WaypointTable::setSearch);
    connect(m_group, &QComboBox::activated, this, &WaypointsPanel::groupChosen);
    connect(m_groupButton, &QToolButton::clicked, this, &WaypointsPanel::groupMenu);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &WaypointsPanel::rowChosen);
    connect(m_list, &ListView::rowHovered, this,
            [this](int row) { m_actions.selection().hover(m_table->at(row)); });
    connect(m_list, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (const auto waypoint = m_table->at(index.row()))
            m_actions.host().showPosition(waypoint->positionOnGPS());
    });
    connect(m_new, &QPushButton::clicked, this, [this] {
        // Where the chart's middle is: nearer to what is meant than the vessel.
        if (const auto made = m_actions.dropWaypoint(m_actions.host().chart().center())) {
            show(made);
            m_editor->editName();
        }
    });
    connect(m_goto, &QPushButton::clicked, this,
            [this] { m_actions.gotoWaypoint(m_editor->waypoint()); });
    connect(m_delete, &QPushButton::clicked, this,
            [this] { m_actions.removeWaypoints(selected()); });
    connect(m_import, &QToolButton::clicked, &actions, &NavActions::importFiles);
    connect(m_export, &QToolButton::clicked, &actions, &NavActions::exportRecords);
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* send = new QAction(text("NSSendToReceiver"), m_list);
    connect(send, &QAction::triggered, this, &WaypointsPanel::sendSelected);
    m_list->addAction(send);
    auto* erase = new QAction(text("NSDelete"), m_list);
    erase->setShortcut(QKeySequence::Delete);
    erase->setShortcutContext(Qt::WidgetShortcut);
    connect(erase, &QAction::triggered, m_delete, &QPushButton::click);
    m_list->addAction(erase);

    Program& program = actions.program();
    connect(&program, &Program::waypointsChanged, this, &WaypointsPanel::refresh);
    connect(&program, &Program::unitsChanged, this, &WaypointsPanel::refresh);
    connect(&actions.selection(), &NavSelection::changed, this, &WaypointsPanel::followSelection);
    // Distances change with the vessel, but nobody reads them more often than this.
    m_valuesTimer.setSingleShot(true);
    connect(&m_valuesTimer, &QTimer::timeout, m_table, &WaypointTable::refreshValues);
    connect(&program, &Program::steeringChanged, this, [this] {
        if (isVisible() && !m_valuesTimer.isActive())
            m_valuesTimer.start(valuesEvery);
    });
    restyle();
    refreshGroups();
    followSelection();
}

void WaypointsPanel::restyle()
{
    const Theme& theme = Theme::theme();
    m_list->restyle();
    m_list->header()->resizeSection(WaypointTable::Distance, theme.px(92));
    m_list->header()->resizeSection(WaypointTable::Bearing, theme.px(76));
    m_import->setIcon(theme.icon(QStringLiteral("import")));
    m_export->setIcon(theme.icon(QStringLiteral("export")));
    for (QToolButton* button : {m_import, m_export, m_groupButton})
        button->setFixedSize(theme.px(40), theme.px(40));
    for (QWidget* widget :
         std::initializer_list<QWidget*>{m_search, m_group, m_new, m_goto, m_delete})
        widget->setMinimumHeight(theme.px(40));
    m_editor->restyle();
}

void WaypointsPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    refresh();
}

void WaypointsPanel::refresh()
{
    if (!isVisible())
        return;
    refreshGroups();
    m_table->refresh();
    m_editor->refresh();
}

void WaypointsPanel::refreshGroups()
{
    WaypointsModel& waypoints = m_actions.program().waypoints();
    const auto groups = waypoints.createGroupsFromWaypoints();
    if (!waypoints.selectedGroup().empty()
        && std::ranges::find(groups, waypoints.selectedGroup()) == groups.end())
        waypoints.setSelectedGroup({}); // its last waypoint has left it
    QStringList labels{text("NSAllGroups")};
    for (const auto& group : groups)
        labels << shownGroup(group);
    QStringList before;
    for (int i = 0; i < m_group->count(); ++i)
        before << m_group->itemText(i);
    if (labels != before) {
        m_group->clear();
        m_group->addItem(labels.front(), QString());
        for (const auto& group : groups)
            m_group->addItem(shownGroup(group), QString::fromStdString(group));
    }
    m_group->setCurrentIndex(
        std::max(0, m_group->findData(QString::fromStdString(waypoints.selectedGroup()))));
}

void WaypointsPanel::groupChosen()
{
    m_actions.program().waypoints().setSelectedGroup(
        m_group->currentData().toString().toStdString());
    m_table->refresh();
}

void WaypointsPanel::groupMenu()
{
    WaypointsModel& waypoints = m_actions.program().waypoints();
    QMenu menu(this);
    const auto chosen = selected();
    const auto ask = [this](const QString& title, const QString& before) {
        bool taken = false;
        const QString name =
            QInputDialog::getText(this, title, text("NSGroup"), QLineEdit::Normal, before, &taken);
        return taken ? name.trimmed().toStdString() : std::string();
    };
    const auto assign = [&waypoints, chosen](const std::string& group) {
        if (group.empty())
            return;
        const EditHistory::Group step(waypoints.history());
        for (const auto& waypoint : chosen)
            waypoints.assignGroup(group, waypoint);
    };
    auto* toGroup = menu.addMenu(countedText("NSAssignGroup", chosen.size()));
    toGroup->setEnabled(!chosen.empty());
    for (const auto& group : waypoints.createGroupsFromWaypoints())
        toGroup->addAction(shownGroup(group), this, [assign, group] { assign(group); });
    toGroup->addAction(text("NSNewGroup"), this,
                       [assign, ask] { assign(ask(text("NSNewGroup"), {})); });
    if (const std::string group = waypoints.selectedGroup(); !group.empty()) {
        menu.addAction(text("NSRemoveFromGroup", {shownGroup(group)}), this,
                       [&waypoints, chosen, group] {
                           const EditHistory::Group step(waypoints.history());
                           for (const auto& waypoint : chosen)
                               waypoints.removeFromGroup(group, waypoint);
                       })
            ->setEnabled(!chosen.empty());
        menu.addAction(text("NSRenameGroup", {shownGroup(group)}), this, [&waypoints, ask, group] {
            const std::string name =
                ask(text("NSRenameGroup", {shownGroup(group)}), shownGroup(group));
            if (name.empty() || name == group)
                return;
            const EditHistory::Group step(waypoints.history());
            waypoints.renameGroupsInWaypoints(group, name);
            waypoints.setSelectedGroup(name);
        });
    }
    menu.exec(m_groupButton->mapToGlobal(QPoint(0, m_groupButton->height())));
}

std::vector<WaypointPointer> WaypointsPanel::selected() const
{
    std::vector<WaypointPointer> waypoints;
    for (const int row : m_list->selectedRows())
        waypoints.push_back(m_table->at(row));
    return waypoints;
}

void WaypointsPanel::sendSelected()
{
    const auto chosen = selected();
    if (chosen.empty())
        return;
    ExchangeRecords records;
    for (const auto& waypoint : chosen)
        records.waypoints.push_back(*waypoint);
    m_actions.sendToReceiver(chosen.size() == 1 ? QString::fromStdString(chosen.front()->name)
                                                : countedText("NSChosenWaypoints", chosen.size()),
                             std::move(records));
}

void WaypointsPanel::rowChosen()
{
    const auto chosen = selected();
    m_goto->setEnabled(chosen.size() == 1);
    m_delete->setEnabled(!chosen.empty());
    m_editor->show(chosen.size() == 1 ? chosen.front() : nullptr);
    if (!m_following)
        m_actions.selection().selectWaypoint(chosen.size() == 1 ? chosen.front() : nullptr);
}

void WaypointsPanel::followSelection()
{
    const auto& waypoint = m_actions.selection().waypoint();
    if (const auto chosen = selected(); chosen.size() == 1 && chosen.front() == waypoint)
        return;
    m_following = true;
    const int row = waypoint ? m_table->rowOf(waypoint) : -1;
    if (row >= 0) {
        const QModelIndex index = m_table->index(row, 0);
        m_list->setCurrentIndex(index);
        m_list->scrollTo(index);
    } else if (waypoint || m_list->selectedRows().size() == 1) {
        m_list->selectionModel()->clear();
    }
    rowChosen();
    m_following = false;
}

void WaypointsPanel::show(const WaypointPointer& waypoint)
{
    if (!waypoint)
        return;
    WaypointsModel& waypoints = m_actions.program().waypoints();
    if (!waypoints.selectedGroupHasWaypoint(*waypoint)) {
        waypoints.setSelectedGroup({});
        refreshGroups();
    }
    m_table->refresh();
    if (m_table->rowOf(waypoint) < 0)
        m_search->clear();
    m_actions.selection().selectWaypoint(waypoint);
    followSelection();
}

} // namespace kelvox
