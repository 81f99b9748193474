#include "app/panels/AlarmsPanel.h"

#include "app/AlarmTones.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"

#include <QDateTime>
#include <QGridLayout>
#include <QHeaderView>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kelvox {

AlarmsPanel::AlarmsPanel(ChartHost& host)
    : SidePanel(QStringLiteral("alarms"), "NSAlarms", QStringLiteral("alarm"))
    , m_host(host)
    , m_lostPosition(makeHint({}, this))
    , m_list(new QTreeWidget(this))
    , m_empty(makeHint(text("NSNoAlarms"), this))
    , m_acknowledge(new QPushButton(text("NSAcknowledgeAll"), this))
    , m_clear(new QPushButton(text("NSClearHistory"), this))
{
    Program& program = host.program();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(Theme::theme().px(4));
    rows->addWidget(makeHeading("NSAlarmsWatching", this));
    rows->addLayout(makeWatches());
    rows->addWidget(m_lostPosition);
    rows->addWidget(makeSwitch(program, "audio", "NSSetting.audio", this, true));
    rows->addWidget(makeSwitch(program, "visual", "NSSetting.visual", this, true));
    auto* sound = new FlowLayout;
    std::vector<Choice> tones{{"", text("NSNoSound")}};
    for (const std::string& name : alarmToneNames())
        tones.push_back({name, text("NSTone." + name)});
    sound->add(new QLabel(text("NSSetting.alarmSound"), this), FlowLayout::Grow::Yes);
    sound->add(makeChoice(program, "alarmSound", "NSSetting.alarmSound", tones, "", this));
    auto* test = new QPushButton(text("NSTestSound"), this);
    makeTouchable(program, test);
    sound->add(test);
    rows->addLayout(sound);
    rows->addWidget(makeHeading("NSAlarmHistory", this));
    m_list->setRootIsDecorated(false);
    m_list->setWordWrap(true);
    m_list->setHeaderHidden(true);
    m_list->setColumnCount(2);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_list->setAccessibleName(text("NSAlarmHistory"));
    rows->addWidget(m_list, 1);
    rows->addWidget(m_empty, 1, Qt::AlignTop);
    auto* buttons = new FlowLayout;
    for (QPushButton* button : {m_acknowledge, m_clear})
        buttons->add(button, FlowLayout::Grow::Yes);
    rows->addLayout(buttons);
    makeTouchable(program, m_acknowledge);
    makeTouchable(program, m_clear);

    AlarmCenter& alarms = program.alarms();
    connect(test, &QPushButton::clicked, this, [&program] {
        const auto name = program.settings().text("alarmSound");
        program.alarms().playSound(name.empty() ? alarmToneNames().front() : name);
        program.alarms().speak(text("NSAnchorAlarm").toStdString());
    });
    connect(m_acknowledge, &QPushButton::clicked, &alarms, &AlarmCenter::acknowledgeAll);
    connect(m_clear, &QPushButton::clicked, &alarms, &AlarmCenter::clearHistory);
    connect(&alarms, &AlarmCenter::changed, this, &AlarmsPanel::reload);
    LiveData& live = program.live();
    for (const auto signal : {&LiveData::anchorChanged, &LiveData::proximityAlarmChanged,
                              &LiveData::staleChanged, &LiveData::connectionsChanged})
        connect(&live, signal, this, &AlarmsPanel::refreshWatches);
    connect(&program, &Program::steeringChanged, this, &AlarmsPanel::refreshWatches);
    refreshWatches();
    reload();
}

QGridLayout* AlarmsPanel::makeWatches()
{
    Program& program = m_host.program();
    auto* grid = new QGridLayout;
    grid->setColumnStretch(0, 1);
    grid->setVerticalSpacing(Theme::theme().px(4));
    const auto miles = [](double fallback) {
        return NumberField{
            .highest = 100, .step = 0.05, .decimals = 2, .fallback = fallback, .unit = [] {
                return std::pair(1.0, QStringLiteral("NM"));
            }};
    };
    GPSController& gps = program.live().gps();
    WaypointController& waypoints = program.waypointController();
    AISController& ais = program.live().ais();
    const auto positionKnown = [&gps] { return gps.position().isKnown(); };
    addWatch(
        *grid, "NSAnchorWatch", {nullptr, [&gps] { return gps.anchorAlarm(); }, positionKnown},
        [&gps](bool on) { gps.setAnchorAlarm(on); },
        makeNumber(program, "anchorDragDistance", "NSSetting.anchorDragDistance",
                   {.lowest = 0.002,
                    .highest = 1,
                    .step = 5,
                    .decimals = 0,
                    .fallback = 0.05,
                    .unit = shortDistanceUnit},
                   this));
    addWatch(
        *grid, "NSWatchArrival",
        {nullptr, [&waypoints] { return waypoints.isWaypointArrivalAlarmOn(); }, positionKnown},
        [&waypoints](bool on) { waypoints.setWaypointArrivalAlarm(on); },
        makeNumber(program, "waypointApproachDistance", "NSSetting.waypointApproachDistance",
                   miles(WaypointController::defaultApproachDistance), this));
    addWatch(
        *grid, "NSWatchCrossTrack",
        {nullptr, [&waypoints] { return waypoints.isCrossTrackAlarmOn(); }, positionKnown},
        [&waypoints](bool on) { waypoints.setCrossTrackAlarm(on); },
        makeNumber(program, "crossTrackDistance", "NSSetting.crossTrackDistance",
                   miles(WaypointController::defaultCrossTrackDistance), this));
    addWatch(
        *grid, "NSProximityAlarm",
        {nullptr, [&ais] { return ais.proximityAlarm(); }, [] { return true; }},
        [&ais](bool on) { ais.setProximityAlarm(on); },
        makeNumber(program, "aisProximityDistance", "NSSetting.aisProximityDistance",
                   miles(AISController::defaultProximityDistance), this));
    return grid;
}

void AlarmsPanel::addWatch(QGridLayout& grid, const char* labelKey, Watch watch,
                           const std::function<void(bool)>& set, QWidget* number)
{
    const int row = static_cast<int>(m_watches.size());
    watch.box = new QCheckBox(text(labelKey), this);
    watch.box->setObjectName(QStringLiteral("watch.") + QLatin1String(labelKey));
    makeTouchable(m_host.program(), watch.box);
    grid.addWidget(watch.box, row, 0);
    grid.addWidget(number, row, 1);
    connect(watch.box, &QCheckBox::clicked, this, [this, set](bool on) {
        set(on);
        refreshWatches();
    });
    m_watches.push_back(std::move(watch));
}

void AlarmsPanel::refreshWatches()
{
    for (const Watch& watch : m_watches) {
        const QSignalBlocker quiet(watch.box);
        const bool on = watch.isOn();
        watch.box->setChecked(on);
        watch.box->setEnabled(on || watch.isPossible());
    }
    LiveData& live = m_host.program().live();
    const bool watches = live.connection(ConsumerRole::GPS).reader().isOpen()
        || live.connection(ConsumerRole::Instruments).reader().isOpen()
        || live.network().clientConnected();
    const QString words = text(watches ? "NSWatchPositionOn" : "NSWatchPositionOff");
    if (m_lostPosition->text() != words)
        m_lostPosition->setText(words);
}

void AlarmsPanel::reload()
{
    const Theme& theme = Theme::theme();
    const AlarmCenter& alarms = m_host.program().alarms();
    const int place = m_list->verticalScrollBar()->value();
    m_list->clear();
    for (const AlarmEntry& entry : alarms.history()) {
        const auto time = [](std::chrono::system_clock::time_point point) {
            const auto moment = QDateTime::fromSecsSinceEpoch(
                std::chrono::duration_cast<std::chrono::seconds>(point.time_since_epoch()).count());
            return moment.date() == QDate::currentDate()
                ? QLocale().toString(moment.time(), QLocale::ShortFormat)
                : QLocale().toString(moment, QLocale::ShortFormat);
        };
        QString words = QString::fromStdString(entry.message);
        if (!entry.informativeText.empty())
            words += QLatin1Char('\n') + QString::fromStdString(entry.informativeText);
        auto* row = new QTreeWidgetItem(m_list, {time(entry.raised), words});
        row->setTextAlignment(0, Qt::AlignTop | Qt::AlignLeft);
        row->setForeground(0, theme.colors().dim);
        if (entry.acknowledged) {
            row->setToolTip(1, text("NSAcknowledgedAt", {time(*entry.acknowledged)}));
            continue;
        }
        QFont font = row->font(1);
        font.setBold(true);
        row->setFont(1, font);
        row->setForeground(1,
                           entry.urgency == AlarmEntry::Urgency::Danger ? theme.colors().red
                                                                        : theme.colors().amber);
    }
    m_list->verticalScrollBar()->setValue(place);
    m_list->setVisible(!alarms.history().empty());
    m_empty->setVisible(alarms.history().empty());
    m_acknowledge->setEnabled(!alarms.active().empty());
    m_clear->setEnabled(!alarms.history().empty());
}

} // namespace kelvox
