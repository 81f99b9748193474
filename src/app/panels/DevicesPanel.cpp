#include "app/panels/DevicesPanel.h"

#include "app/PortBox.h"
#include "app/SettingControls.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/ImportJob.h"
#include "app/nav/NavRecords.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace kelvox {

namespace {
using Direction = DeviceJob::Direction;

constexpr std::pair<DeviceType, const char*> types[] = {
    {DeviceType::Garmin, "NSReceiverGarmin"},
    {DeviceType::Magellan, "NSReceiverMagellan"},
    {DeviceType::Furuno, "NSReceiverFuruno"},
    {DeviceType::SiRF, "NSReceiverSirf"},
    {DeviceType::NMEA, "NSReceiverNMEA"}};

bool sendsTracks(DeviceType type)
{
    return type == DeviceType::Garmin || type == DeviceType::Magellan;
}

/// Others only say what they are called when it is known beforehand.
bool canBeIdentified(DeviceType type)
{
    return sendsTracks(type);
}

QString typeName(DeviceType type)
{
    const auto* found = std::ranges::find(types, type, &std::pair<DeviceType, const char*>::first);
    return text(found->second);
}

QString doingWords(const TransferProgress& progress)
{
    const char* const receiving[] = {"NSReceivingRecords", "NSReceivingWaypoints",
                                     "NSReceivingRoutes", "NSReceivingTracks"};
    const char* const sending[] = {"NSSendingRecords", "NSSendingWaypoints", "NSSendingRoutes",
                                   "NSSendingTracks"};
    const auto kind = static_cast<std::size_t>(progress.kind);
    switch (progress.phase) {
    case TransferProgress::Phase::Identifying:
        return text("NSAskingReceiver");
    case TransferProgress::Phase::Waiting:
        return text("NSWaitingForReceiver");
    case TransferProgress::Phase::Receiving:
        return text(receiving[kind]);
    case TransferProgress::Phase::Sending:
        return text(sending[kind]);
    }
    return {};
}

QLabel* makeWords(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}
} // namespace

DevicesPanel::DevicesPanel(NavActions& actions)
    : SidePanel(QStringLiteral("devices"), "NSDevices", QStringLiteral("device"))
    , m_actions(actions)
    , m_session(actions.program().devices())
    , m_setup(new QWidget)
    , m_running(new QWidget)
    , m_result(makeWords(nullptr))
{
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* setupRows = new QVBoxLayout(m_setup);
    setupRows->setContentsMargins(0, 0, 0, 0);
    buildReceiver(*setupRows);
    buildReceive(*setupRows);
    buildSend(*setupRows);
    auto* runningRows = new QVBoxLayout(m_running);
    runningRows->setContentsMargins(0, 0, 0, 0);
    buildRunning(*runningRows);
    m_result->setObjectName(QStringLiteral("deviceResult"));
    m_result->setTextInteractionFlags(Qt::TextSelectableByMouse); // a remedy is to be copied
    rows->addWidget(m_setup);
    rows->addWidget(m_running);
    rows->addWidget(m_result);
    rows->addStretch(1);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(page);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);

    Program& program = actions.program();
    connect(&m_session, &DeviceSession::changed, this, &DevicesPanel::refreshRunning);
    connect(&m_session, &DeviceSession::finished, this, &DevicesPanel::finished);
    connect(&program, &Program::settingChanged, this, &DevicesPanel::refresh);
    connect(&program.live(), &LiveData::connectionsChanged, this, &DevicesPanel::refresh);
    for (const auto signal :
         {&Program::waypointsChanged, &Program::routesChanged, &Program::tracksChanged})
        connect(&program, signal, this, [this] {
            if (isVisible())
                listChoices();
        });
    restyle();
    refreshRunning();
}

DevicesPanel::~DevicesPanel()
{
    if (m_isMine)
        m_session.cancel(); // nobody would take what comes
}

void DevicesPanel::buildReceiver(QVBoxLayout& rows)
{
    Program& program = m_actions.program();
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft);
    std::vector<kelvox::Choice> makes;
    for (const auto& [type, key] : types)
        makes.push_back({std::to_string(static_cast<int>(type)), text(key)});
    m_type = makeChoice(program, "device.type", "NSReceiver", makes, "0", m_setup);
    m_port = makePortBox(program, "device.port", m_setup);
    std::vector<kelvox::Choice> rates{{"", {}}}; // the usual one of the make: see refresh()
    for (const std::string& rate : Serial::offeredRates())
        rates.push_back({rate, QString::fromStdString(rate)});
    m_rate = makeChoice(program, "device.rate", "NSSetting.rate", rates, "", m_setup);
    form->addRow(text("NSReceiver"), m_type);
    form->addRow(text("NSSetting.serialPort"), m_port);
    form->addRow(text("NSSetting.rate"), m_rate);
    rows.addLayout(form);
    m_hint = makeHint({}, m_setup);
    m_lends = makeHint(text("NSPortIsLent"), m_setup);
    m_identify = new QPushButton(text("NSIdentifyReceiver"), m_setup);
    m_identify->setObjectName(QStringLiteral("deviceIdentify"));
    connect(m_identify, &QPushButton::clicked, this, [this] { start(Direction::Identify); });
    rows.addWidget(m_hint);
    rows.addWidget(m_lends);
    rows.addWidget(m_identify);
    rows.addSpacing(Theme::theme().px(8));
}

void DevicesPanel::buildReceive(QVBoxLayout& rows)
{
    Program& program = m_actions.program();
    rows.addWidget(makeHeading("NSFromReceiver", m_setup));
    auto* kinds = new QHBoxLayout;
    m_waypoints = makeSwitch(program, "device.waypoints", "NSWaypoints", m_setup, true);
    m_routes = makeSwitch(program, "device.routes", "NSRoutes", m_setup, true);
    m_tracks = makeSwitch(program, "device.tracks", "NSTracks", m_setup, true);
    for (QCheckBox* box : {m_waypoints, m_routes, m_tracks})
        kinds->addWidget(box);
    kinds->addStretch(1);
    rows.addLayout(kinds);
    m_receive = new QPushButton(text("NSReceive"), m_setup);
    m_receive->setObjectName(QStringLiteral("deviceReceive"));
    connect(m_receive, &QPushButton::clicked, this, [this] { start(Direction::Receive); });
    rows.addWidget(m_receive);
    rows.addSpacing(Theme::theme().px(8));
}

void DevicesPanel::buildSend(QVBoxLayout& rows)
{
    rows.addWidget(makeHeading("NSToReceiver", m_setup));
    m_what = new QComboBox(m_setup);
    m_what->setObjectName(QStringLiteral("deviceWhat"));
    m_what->setAccessibleName(text("NSToReceiver"));
    m_what->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    rows.addWidget(m_what);
    m_send = new QPushButton(text("NSSend"), m_setup);
    m_send->setObjectName(QStringLiteral("deviceSend"));
    connect(m_send, &QPushButton::clicked, this, [this] { start(Direction::Send); });
    rows.addWidget(m_send);
    rows.addSpacing(Theme::theme().px(8));
    listChoices();
}

void DevicesPanel::buildRunning(QVBoxLayout& rows)
{
    m_doing = makeWords(m_running);
    m_doing->setProperty("role", QStringLiteral("heading"));
    m_bar = new QProgressBar(m_running);
    m_bar->setTextVisible(false);
    m_ask = makeWords(m_running);
    m_proceed = new QPushButton(text("NSContinue"), m_running);
    m_proceed->setObjectName(QStringLiteral("deviceProceed"));
    m_cancel = new QPushButton(text("NSCancel"), m_running);
    m_cancel->setObjectName(QStringLiteral("deviceCancel"));
    connect(m_proceed, &QPushButton::clicked, &m_session, &DeviceSession::proceed);
    connect(m_cancel, &QPushButton::clicked, &m_session, &DeviceSession::cancel);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_proceed);
    buttons->addWidget(m_cancel);
    rows.addWidget(m_doing);
    rows.addWidget(m_bar);
    rows.addWidget(m_ask);
    rows.addLayout(buttons);
}

void DevicesPanel::restyle()
{
    const int height = Theme::theme().px(40);
    for (QWidget* control : std::initializer_list<QWidget*>{m_identify, m_receive, m_what, m_send,
                                                            m_proceed, m_cancel})
        control->setMinimumHeight(height);
}

void DevicesPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    m_shownPort = port();
    fillPorts(m_port, m_shownPort);
    listChoices();
    refresh();
}

DeviceType DevicesPanel::type() const
{
    const auto number = m_actions.program().settings().integer("device.type");
    for (const auto& [type, key] : types)
        if (static_cast<long long>(type) == number)
            return type;
    return DeviceType::Garmin;
}

std::string DevicesPanel::port() const
{
    // Most have one receiver only: the one the position comes from.
    const Settings& settings = m_actions.program().settings();
    return settings.text("device.port", settings.text("serialPort"));
}

ExchangeKinds DevicesPanel::wantedKinds() const
{
    return {.waypoints = m_waypoints->isChecked(),
            .routes = m_routes->isChecked(),
            .tracks = m_tracks->isChecked() && sendsTracks(type())};
}

void DevicesPanel::choose(const QString& name, ExchangeRecords records)
{
    if (m_hasChosen)
        m_choices.erase(m_choices.begin());
    m_hasChosen = true;
    m_choices.insert(m_choices.begin(), Choice{name, [kept = std::move(records)] { return kept; }});
    listChoices();
    m_what->setCurrentIndex(0);
    m_send->setFocus();
}

void DevicesPanel::listChoices()
{
    Program& program = m_actions.program();
    const QString before = m_what->currentText();
    m_choices.resize(m_hasChosen ? 1 : 0);
    const auto add = [&](const QString& label, std::function<ExchangeRecords()> records) {
        m_choices.push_back({label, std::move(records)});
    };
    add(text("NSExportEverything"), [&program] { return allRecords(program); });
    const auto addAll = [&](const char* key, std::size_t count, auto recordsOf) {
        if (count > 0)
            add(countedText(key, count), [&program, recordsOf] { return recordsOf(program); });
    };
    addAll("NSExportWaypoints", program.waypoints().count(), &allWaypoints);
    addAll("NSAllRoutes", program.routes().count(), &allRoutes);
    addAll("NSExportTracks", program.tracks().count(), &wholeTrack);
    for (const auto& group : program.waypoints().createGroupsFromWaypoints())
        add(text("NSExportGroup", {QString::fromStdString(group)}),
            [&program, group] { return groupOfWaypoints(program, group); });
    for (const auto& route : program.routes().objectEnumerator())
        add(text("NSExportRoute", {QString::fromStdString(route->name)}), [route] {
            ExchangeRecords records;
            addRoute(*route, records);
            return records;
        });
    m_what->clear();
    for (const Choice& choice : m_choices)
        m_what->addItem(choice.label);
    m_what->setCurrentIndex(std::max(0, m_what->findText(before)));
}

void DevicesPanel::refresh()
{
    if (!isVisible())
        return;
    const DeviceType make = type();
    const int number = static_cast<int>(make);
    m_hint->setText(text("NSReceiverHint." + std::to_string(number)));
    m_rate->setItemText(0, text("NSUsualRate", {QString::fromLatin1(usualRate(make))}));
    const std::string path = port();
    LiveData& live = m_actions.program().live();
    m_lends->setVisible(!path.empty() && live.isPortOpen(path));
    m_identify->setVisible(canBeIdentified(make));
    m_tracks->setEnabled(sendsTracks(make));
    const bool isReady = !path.empty();
    const ExchangeKinds kinds = wantedKinds();
    m_identify->setEnabled(isReady);
    m_receive->setEnabled(isReady && (kinds.waypoints || kinds.routes || kinds.tracks));
    m_send->setEnabled(isReady);
    if (path != std::exchange(m_shownPort, path))
        fillPorts(m_port, path);
}

void DevicesPanel::refreshRunning()
{
    const bool runs = m_session.isRunning();
    m_setup->setEnabled(!runs);
    m_running->setVisible(runs);
    m_result->setVisible(!runs && !m_result->text().isEmpty());
    if (!runs) {
        refresh();
        return;
    }
    const TransferProgress& progress = m_session.progress();
    QString words = doingWords(progress);
    if (progress.total > 0)
        words += QLatin1Char(' ')
            + text("NSCountOf", {QString::number(progress.done), QString::number(progress.total)});
    else if (progress.done > 0)
        words += QLatin1Char(' ') + QString::number(progress.done);
    if (m_session.isCancelled())
        words = text("NSLeavingReceiver");
    const bool asks = !m_session.question().empty();
    if (asks)
        words = text(m_session.question());
    m_doing->setText(words);
    m_bar->setAccessibleName(words);
    const std::string message = asks ? std::string() : m_session.message();
    m_bar->setVisible(!asks);
    m_bar->setRange(0, static_cast<int>(progress.total)); // of no length: it only says it is alive
    m_bar->setValue(static_cast<int>(progress.done));
    m_ask->setVisible(!message.empty());
    if (!message.empty())
        m_ask->setText(text(message));
    const bool asksAnew = asks && m_proceed->isHidden();
    m_proceed->setVisible(asks);
    if (asksAnew)
        m_proceed->setFocus();
    m_cancel->setEnabled(!m_session.isCancelled());
}

void DevicesPanel::start(Direction direction)
{
    const DeviceType make = type();
    const std::string rate = m_actions.program().settings().text("device.rate");
    DeviceJob job{.type = make,
                  .port = port(),
                  .rate = rate.empty() ? usualRate(make) : rate,
                  .direction = direction,
                  .kinds = direction == Direction::Receive ? wantedKinds() : ExchangeKinds{}};
    const int chosen = m_what->currentIndex();
    if (direction == Direction::Send && chosen >= 0)
        job.records = m_choices[static_cast<std::size_t>(chosen)].records();
    m_result->clear();
    m_isMine = true;
    if (!m_session.start(std::move(job)))
        m_isMine = false;
}

QString DevicesPanel::sentWords(const DeviceResult& result) const
{
    constexpr std::size_t mostNames = 8;
    QStringList lines;
    const auto add = [&](const char* key, std::size_t count) {
        if (count > 0)
            lines << countedText(key, count);
    };
    add("NSSentWaypoints", result.sent.waypoints);
    add("NSSentRoutes", result.sent.routes);
    add("NSSentTrackPoints", result.sent.trackPoints);
    if (lines.isEmpty())
        lines << text("NSNothingSent");
    add("NSLeftOutOfReceiver", result.leftOut);
    for (const auto& [name, given] : result.renamed) {
        if (lines.size() > static_cast<qsizetype>(mostNames))
            break;
        lines << text("NSNamedInReceiver",
                      {QString::fromStdString(name), QString::fromStdString(given)});
    }
    return lines.join(QLatin1Char('\n'));
}

void DevicesPanel::finished(const DeviceResult& result)
{
    if (!std::exchange(m_isMine, false))
        return;
    const DeviceJob& job = m_session.job();
    const QString name =
        result.ident.empty() ? typeName(job.type) : QString::fromStdString(result.ident);
    QString words;
    if (result.error)
        words = result.error->code == Error::Code::Cancelled
            ? text("NSTransferCancelled")
            : QString::fromStdString(result.error->message);
    else if (job.direction == Direction::Identify)
        words = text("NSReceiverIs", {name});
    else if (job.direction == Direction::Send)
        words = text("NSSentTo", {name}) + QLatin1Char('\n') + sentWords(result);
    else
        words = text("NSReceivedFrom", {name});
    m_result->setText(words);
    refreshRunning();
    if (!isVisible())
        m_actions.host().showNote(words);
    if (!result.error && job.direction == Direction::Receive)
        ImportJob::start(m_actions, name, result.records);
}

} // namespace kelvox
