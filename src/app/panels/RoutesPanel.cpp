#include "app/panels/RoutesPanel.h"

#include "app/ClearAction.h"
#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavRecords.h"
#include "app/nav/NavText.h"
#include "app/panels/ListView.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace kelvox {

namespace {
QDoubleSpinBox* makeMiles(QWidget* parent, const char* name)
{
    auto* box = new QDoubleSpinBox(parent);
    box->setRange(0.01, 100);
    box->setButtonSymbols(QAbstractSpinBox::NoButtons);
    box->setDecimals(2);
    box->setSingleStep(0.05);
    box->setSuffix(QStringLiteral(" NM"));
    box->setKeyboardTracking(false);
    box->setAccessibleName(text(name));
    return box;
}
} // namespace

RoutesPanel::RoutesPanel(NavActions& actions)
    : SidePanel(QStringLiteral("routes"), "NSRoutes", QStringLiteral("route"))
    , m_actions(actions)
    , m_routes(new RouteTable(actions.program(), this))
    , m_points(new RoutePointTable(actions.program(), this))
    , m_search(new QLineEdit(this))
    , m_list(new ListView(this))
    , m_name(new QLineEdit(this))
    , m_reason(new QLabel(this))
    , m_speed(new QDoubleSpinBox(this))
    , m_pointList(new ListView(this))
    , m_total(new QLabel(this))
    , m_new(new QPushButton(text("NSNew"), this))
    , m_follow(new QPushButton(text("NSFollow"), this))
    , m_up(new QToolButton(this))
    , m_down(new QToolButton(this))
    , m_print(new QToolButton(this))
    , m_more(new QToolButton(this))
{
    m_search->setPlaceholderText(text("NSSearchRoutes"));
    m_search->setAccessibleName(text("NSSearchRoutes"));
    addClearAction(*m_search);
    m_new->setObjectName(QStringLiteral("newRoute"));
    m_follow->setObjectName(QStringLiteral("followRoute"));
    m_list->setModel(m_routes);
    m_list->setAccessibleName(text("NSRoutes"));
    m_list->setEmptyText(text("NSNoRoutes"));
    m_list->sortByColumn(RouteTable::Name, Qt::AscendingOrder);
    m_list->header()->setSectionResizeMode(RouteTable::Name, QHeaderView::Stretch);
    m_name->setAccessibleName(text("NSRouteName"));
    m_reason->setProperty("role", QStringLiteral("bad"));
    m_reason->setWordWrap(true);
    m_reason->hide();
    m_speed->setRange(0.1, 60);
    m_speed->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_speed->setDecimals(1);
    m_speed->setSingleStep(0.5);
    m_speed->setSuffix(QStringLiteral(" kn"));
    m_speed->setKeyboardTracking(false);
    m_speed->setToolTip(text("NSPlanSpeed"));
    m_speed->setAccessibleName(text("NSPlanSpeed"));
    m_pointList->setModel(m_points);
    m_pointList->setSortingEnabled(false);
    m_pointList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_pointList->setAccessibleName(text("NSPoints"));
    m_pointList->setEmptyText(text("NSNoRouteSelected"));
    m_pointList->header()->setSectionResizeMode(RoutePointTable::Name, QHeaderView::Stretch);
    m_pointList->header()->setSectionsClickable(true);
    const std::tuple<QToolButton*, const char*, const char*> tools[] = {
        {m_up, "NSMoveUp", "▲"},
        {m_down, "NSMoveDown", "▼"},
        {m_print, "NSPrintRoutePlan", nullptr},
        {m_more, "NSMore", "⋯"}};
    for (const auto& [button, key, sign] : tools) {
        button->setToolTip(text(key));
        button->setAccessibleName(text(key));
        if (sign)
            button->setText(QString::fromUtf8(sign));
    }

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* heading = new QHBoxLayout;
    heading->addWidget(m_name, 1);
    heading->addWidget(m_speed);
    auto* buttons = new FlowLayout;
    for (QPushButton* button : {m_new, m_follow})
        buttons->add(button, FlowLayout::Grow::Yes);
    for (QToolButton* button : {m_up, m_down, m_print, m_more})
        buttons->add(button);
    rows->addWidget(m_search);
    rows->addWidget(m_list, 2);
    rows->addLayout(heading);
    rows->addWidget(m_reason);
    rows->addWidget(m_pointList, 3);
    rows->addWidget(m_total);
    rows->addLayout(buttons);
    rows->addWidget(makeFollowing());

    Program& program = actions.program();
    connect(m_search, &QLineEdit::textChanged, m_routes, &RouteTable::setSearch);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RoutesPanel::routeChosen);
    connect(m_list, &ListView::rowHovered, this,
            [this](int row) { m_actions.selection().hover(nullptr, m_routes->at(row)); });
    connect(m_list, &QTreeView::doubleClicked, this,
            [this](const QModelIndex& index) { m_actions.showRoute(m_routes->at(index.row())); });
    connect(m_pointList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RoutesPanel::pointChosen);
    connect(m_pointList, &ListView::rowHovered, this, [this](int row) {
        const auto reference = m_points->at(row);
        m_actions.selection().hover(reference ? reference->waypoint : nullptr);
    });
    connect(m_pointList, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (const auto reference = m_points->at(index.row()))
            m_actions.openWaypoint(reference->waypoint);
    });
    connect(m_pointList->header(), &QHeaderView::sectionClicked, this, [this](int section) {
        if (section == RoutePointTable::Distance || section == RoutePointTable::Time) {
            m_actions.program().routes().toggleDistance();
            refreshPoints();
        }
    });
    connect(m_name, &QLineEdit::editingFinished, this, &RoutesPanel::rename);
    connect(m_speed, &QDoubleSpinBox::valueChanged, this, [this](double knots) {
        m_actions.program().settings().set("planSpeed", knots);
        refreshPoints();
    });
    connect(m_new, &QPushButton::clicked, &actions, &NavActions::startRoute);
    connect(m_follow, &QPushButton::clicked, this, [this] {
        const auto& route = m_actions.selection().route();
        if (route && route == m_actions.program().routeController().gotoRoute()
            && selectedPoint() == Route::notFound)
            m_actions.stopNavigating();
        else
            m_actions.followRoute(route, selectedPoint());
    });
    connect(m_up, &QToolButton::clicked, this, [this] {
        const auto index = selectedPoint();
        m_actions.editor().moveUp(m_actions.selection().route(), index);
    });
    connect(m_down, &QToolButton::clicked, this, [this] {
        m_actions.editor().moveDown(m_actions.selection().route(), selectedPoint());
    });
    connect(m_print, &QToolButton::clicked, this,
            [this] { m_actions.printRoute(m_actions.selection().route()); });
    connect(m_more, &QToolButton::clicked, this, &RoutesPanel::moreMenu);
    const auto addDelete = [](ListView* list, auto run) {
        auto* erase = new QAction(list);
        erase->setShortcut(QKeySequence::Delete);
        erase->setShortcutContext(Qt::WidgetShortcut);
        QObject::connect(erase, &QAction::triggered, list, run);
        list->addAction(erase);
    };
    addDelete(m_list, [this] { m_actions.removeRoutes(selected()); });
    addDelete(m_pointList, [this] {
        m_actions.editor().removeFromRoute(m_actions.selection().route(), selectedPoint());
    });
    connect(&program, &Program::routesChanged, this, &RoutesPanel::refresh);
    connect(&program, &Program::waypointsChanged, this, &RoutesPanel::refresh);
    connect(&program, &Program::unitsChanged, this, &RoutesPanel::refresh);
    connect(&program, &Program::steeringChanged, this, &RoutesPanel::refreshFollowing);
    connect(&program, &Program::settingChanged, this, &RoutesPanel::refreshFollowing);
    connect(&actions.selection(), &NavSelection::changed, this, &RoutesPanel::followSelection);
    restyle();
    followSelection();
    refreshPoints();
    refreshFollowing();
}

QWidget* RoutesPanel::makeFollowing()
{
    auto* box = new QWidget(this);
    auto* grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(0, 1);
    m_autoNext = new QCheckBox(text("NSAutoNext"), box);
    m_arrival = new QCheckBox(text("NSArrivalAlarm"), box);
    m_crossTrack = new QCheckBox(text("NSCrossTrackAlarmSwitch"), box);
    m_arrivalDistance = makeMiles(box, "NSArrivalDistance");
    m_crossTrackDistance = makeMiles(box, "NSCrossTrackDistance");
    grid->addWidget(m_autoNext, 0, 0, 1, 2);
    grid->addWidget(m_arrival, 1, 0);
    grid->addWidget(m_arrivalDistance, 1, 1);
    grid->addWidget(m_crossTrack, 2, 0);
    grid->addWidget(m_crossTrackDistance, 2, 1);
    Program& program = m_actions.program();
    connect(m_autoNext, &QCheckBox::clicked, this, [&program](bool on) {
        program.settings().set("routeAutoNext", on);
        program.routeController().setAutoNext(on);
    });
    connect(m_arrival, &QCheckBox::clicked, this, [this, &program](bool on) {
        program.waypointController().setWaypointArrivalAlarm(on);
        refreshFollowing();
    });
    connect(m_crossTrack, &QCheckBox::clicked, this, [this, &program](bool on) {
        program.waypointController().setCrossTrackAlarm(on);
        refreshFollowing();
    });
    connect(m_arrivalDistance, &QDoubleSpinBox::valueChanged, this, [&program](double miles) {
        program.settings().set("waypointApproachDistance", miles);
        emit program.steeringChanged();
    });
    connect(m_crossTrackDistance, &QDoubleSpinBox::valueChanged, this, [&program](double miles) {
        program.settings().set("crossTrackDistance", miles);
        emit program.steeringChanged();
    });
    return box;
}

void RoutesPanel::restyle()
{
    const Theme& theme = Theme::theme();
    m_list->restyle();
    m_pointList->restyle();
    m_list->header()->resizeSection(RouteTable::Points, theme.px(64));
    m_list->header()->resizeSection(RouteTable::Length, theme.px(92));
    m_pointList->header()->resizeSection(RoutePointTable::Distance, theme.px(88));
    m_pointList->header()->resizeSection(RoutePointTable::Bearing, theme.px(72));
    m_pointList->header()->resizeSection(RoutePointTable::Time, theme.px(64));
    for (int i = 1; i < RouteTable::Columns; ++i)
        m_list->header()->setSectionResizeMode(i, QHeaderView::Fixed);
    for (int i = 1; i < RoutePointTable::Columns; ++i)
        m_pointList->header()->setSectionResizeMode(i, QHeaderView::Fixed);
    m_print->setIcon(theme.icon(QStringLiteral("print")));
    for (QToolButton* button : {m_up, m_down, m_print, m_more})
        button->setFixedSize(theme.px(40), theme.px(40));
    for (QWidget* widget : std::initializer_list<QWidget*>{
             m_search, m_name, m_speed, m_new, m_follow, m_autoNext, m_arrival, m_crossTrack,
             m_arrivalDistance, m_crossTrackDistance})
        widget->setMinimumHeight(theme.px(40));
}

void RoutesPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    refresh();
    refreshFollowing();
}

void RoutesPanel::refresh()
{
    if (!isVisible())
        return;
    m_routes->refresh();
    refreshPoints();
}

void RoutesPanel::refreshPoints()
{
    const RoutePointer& route = m_actions.selection().route();
    const auto knots = static_cast<float>(m_actions.program().settings().number("planSpeed", 5));
    const QSignalBlocker blocked(m_speed);
    m_speed->setValue(knots);
    m_points->show(route, knots);
    for (QWidget* widget : std::initializer_list<QWidget*>{m_name, m_speed, m_print})
        widget->setEnabled(route != nullptr);
    if (!m_name->isModified() || !m_name->hasFocus())
        m_name->setText(route ? QString::fromStdString(route->name) : QString());
    const auto plan = route ? RoutePlan::of(*route, knots) : RoutePlan();
    m_total->setVisible(!plan.rows.empty());
    if (!plan.rows.empty())
        m_total->setText(
            text("NSPlanSummary",
                 {navtext::distance(plan.totalMiles()), navtext::hours(plan.rows.back().totalHours),
                  navtext::speed(knots)}));
    pointChosen();
}

void RoutesPanel::refreshFollowing()
{
    if (!isVisible())
        return;
    Program& program = m_actions.program();
    const WaypointController& steering = program.waypointController();
    const Settings& settings = program.settings();
    const RoutePointer& route = m_actions.selection().route();
    const bool stops = route && steering.hasActiveWaypoint()
        && route == program.routeController().gotoRoute() && selectedPoint() == Route::notFound;
    m_follow->setText(stops ? text("NSStop") : text("NSFollow"));
    m_follow->setEnabled(route != nullptr);
    m_autoNext->setChecked(program.routeController().gotoRoute()
                               ? program.routeController().autoNext()
                               : settings.boolean("routeAutoNext", true));
    m_arrival->setChecked(steering.isWaypointArrivalAlarmOn());
    m_crossTrack->setChecked(steering.isCrossTrackAlarmOn());
    // Without a vessel position the alarms cannot be switched on.
    const bool possible = steering.positionOnGPS().isKnown();
    for (QCheckBox* box : {m_arrival, m_crossTrack}) {
        box->setEnabled(possible || box->isChecked());
        box->setToolTip(possible ? QString() : text("NSAlarmNeedsPosition"));
    }
    const auto setMiles = [&](QDoubleSpinBox* box, const char* key, double standard) {
        const QSignalBlocker blocked(box);
        if (!box->hasFocus())
            box->setValue(settings.number(key, standard));
    };
    setMiles(m_arrivalDistance, "waypointApproachDistance",
             WaypointController::defaultApproachDistance);
    setMiles(m_crossTrackDistance, "crossTrackDistance",
             WaypointController::defaultCrossTrackDistance);
}

std::vector<RoutePointer> RoutesPanel::selected() const
{
    std::vector<RoutePointer> routes;
    for (const int row : m_list->selectedRows())
        routes.push_back(m_routes->at(row));
    return routes;
}

std::size_t RoutesPanel::selectedPoint() const
{
    const auto rows = m_pointList->selectedRows();
    return rows.isEmpty() ? Route::notFound : static_cast<std::size_t>(rows.front());
}

void RoutesPanel::routeChosen()
{
    const auto chosen = selected();
    if (!m_following)
        m_actions.selection().selectRoute(chosen.size() == 1 ? chosen.front() : nullptr);
    m_reason->hide();
    m_name->setModified(false);
    m_pointList->selectionModel()->clear();
    refreshPoints();
    refreshFollowing();
}

void RoutesPanel::pointChosen()
{
    const auto index = selectedPoint();
    const auto count = m_points->rows().size();
    m_up->setEnabled(index != Route::notFound && index > 0);
    m_down->setEnabled(index != Route::notFound && index + 1 < count);
    if (!m_following && index != Route::notFound) {
        m_actions.selection().selectRoute(m_actions.selection().route(), index);
        m_actions.selection().selectWaypoint(m_points->at(static_cast<int>(index))->waypoint);
    }
    refreshFollowing();
}

void RoutesPanel::followSelection()
{
    const RoutePointer& route = m_actions.selection().route();
    m_following = true;
    if (const auto chosen = selected(); chosen.size() != 1 || chosen.front() != route) {
        const int row = route ? m_routes->rowOf(route) : -1;
        if (row >= 0) {
            m_list->setCurrentIndex(m_routes->index(row, 0));
            m_list->scrollTo(m_routes->index(row, 0));
        } else if (route || chosen.size() == 1) {
            m_list->selectionModel()->clear();
        }
        routeChosen();
    }
    const auto index = m_actions.selection().routeIndex();
    if (index != selectedPoint()) {
        if (index < m_points->rows().size())
            m_pointList->setCurrentIndex(m_points->index(static_cast<int>(index), 0));
        else
            m_pointList->selectionModel()->clear();
    }
    m_following = false;
}

void RoutesPanel::rename()
{
    const RoutePointer& route = m_actions.selection().route();
    if (!route || !m_name->isModified())
        return;
    m_name->setModified(false);
    Program& program = m_actions.program();
    const auto renamed = program.routes().rename(route, m_name->text().trimmed().toStdString());
    m_reason->setVisible(renamed != RoutesModel::Renamed::Done);
    if (renamed == RoutesModel::Renamed::AlreadyExists) {
        program.alarms().beep();
        m_reason->setText(text("NSRouteAlreadyExists"));
    } else if (renamed == RoutesModel::Renamed::NoName) {
        m_reason->setText(text("NSNameNeeded"));
    }
}

void RoutesPanel::joinMenu(QMenu& menu, const RoutePointer& route)
{
    auto* join = menu.addMenu(text("NSJoinRoute"));
    constexpr int mostEntries = 30;
    for (const auto& other : m_routes->rows()) {
        if (other == route)
            continue;
        if (join->actions().size() == mostEntries)
            break;
        join->addAction(QString::fromStdString(other->name), this,
                        [this, route, other] { m_actions.editor().join(route, other); });
    }
    join->setEnabled(!join->isEmpty());
}

void RoutesPanel::moreMenu()
{
    const RoutePointer route = m_actions.selection().route();
    const auto index = selectedPoint();
    QMenu menu(this);
    const auto add = [&](const char* key, bool enabled, auto run) {
        menu.addAction(text(key), this, run)->setEnabled(enabled);
    };
    const bool isRoute = route != nullptr;
    const bool isPoint = isRoute && index != Route::notFound;
    add("NSShowOnChart", isRoute, [this, route] { m_actions.showRoute(route); });
    add("NSExtendRoute", isRoute, [this, route] { m_actions.extendRoute(route); });
    add("NSReverseRoute", isRoute, [this, route] { m_actions.reverseRoute(route); });
    add("NSCopyRoute", isRoute, [this, route] { m_actions.copyRoute(route); });
    if (isRoute)
        joinMenu(menu, route);
    menu.addSeparator();
    add("NSSplitRoute", isPoint, [this, route, index] { m_actions.splitRoute(route, index); });
    add("NSRemovePoint", isPoint,
        [this, route, index] { m_actions.editor().removeFromRoute(route, index); });
    menu.addSeparator();
    add("NSRouteFromTrack", m_actions.program().tracks().count() > 1,
        [this] { m_actions.routeFromTrack(m_actions.selection().trackLine()); });
    add("NSImport", true, [this] { m_actions.importRoutes(); });
    add("NSExport", true, [this] { m_actions.exportRecords(); });
    menu.addSeparator();
    add("NSSendToReceiver", !selected().empty(), [this] {
        ExchangeRecords records;
        for (const auto& chosen : selected())
            addRoute(*chosen, records);
        const QString name = records.routes.size() == 1
            ? QString::fromStdString(records.routes.front().name)
            : countedText("NSChosenRoutes", records.routes.size());
        m_actions.sendToReceiver(name, std::move(records));
    });
    add("NSDeleteRoute", !selected().empty(), [this] { m_actions.removeRoutes(selected()); });
    menu.exec(m_more->mapToGlobal(QPoint(0, m_more->height())));
}

void RoutesPanel::show(const RoutePointer& route, std::size_t index)
{
    m_routes->refresh();
    if (m_routes->rowOf(route) < 0)
        m_search->clear();
    m_actions.selection().selectRoute(route, index);
    followSelection();
    refreshPoints();
}

} // namespace kelvox
