#include "app/panels/ConnectionsPanel.h"

#include "app/ChartView.h"
#include "app/Dialogs.h"
#include "app/MonitorDialog.h"
#include "app/PortBox.h"
#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"
#include "connections/Serial.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <cmath>

namespace kelvox {

namespace {
using State = ConnectionStatus::State;

constexpr int titleRole = Qt::UserRole + 1;

/// The state's mark: its shape says it as well as its colour.
enum Mark { ClosedMark, OpenMark, WaitingMark, SimulatedMark };

QPixmap markPixmap(int mark)
{
    const Theme& theme = Theme::theme();
    const int size = theme.px(18);
    QPixmap pixmap(size * 2, size * 2);
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF room(size * 0.22, size * 0.22, size * 0.56, size * 0.56);
    switch (mark) {
    case OpenMark:
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.colors().green);
        painter.drawEllipse(room);
        break;
    case WaitingMark:
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.colors().amber);
        painter.drawPolygon(QPolygonF(
            {QPointF(room.center().x(), room.top()), room.bottomRight(), room.bottomLeft()}));
        break;
    case SimulatedMark:
        painter.setPen(QPen(theme.colors().accent, 2));
        painter.drawEllipse(room);
        painter.setBrush(theme.colors().accent);
        painter.drawEllipse(room.center(), room.width() / 5, room.width() / 5);
        break;
    default:
        painter.setPen(QPen(theme.colors().dim, 1.6));
        painter.drawEllipse(room);
    }
    return pixmap;
}

int markOf(State state)
{
    return state == State::Open ? OpenMark : state == State::Closed ? ClosedMark : WaitingMark;
}

QString stateWords(const ConnectionStatus& status, const Clock& clock)
{
    switch (status.state) {
    case State::Closed:
        return text("NSStateClosed");
    case State::Opening:
        return text("NSStateOpening", {QString::fromStdString(status.target)});
    case State::Open:
        return text("NSStateOpen", {QString::fromStdString(status.target)});
    case State::Waiting: {
        const double left = std::ceil(status.retryAt - clock.monotonicSeconds());
        return text("NSStateWaiting", {QString::number(std::max(0, static_cast<int>(left)))});
    }
    }
    return {};
}

/// With the reason and what to do about it.
QString fullWords(const ConnectionStatus& status, const Clock& clock)
{
    QString words = stateWords(status, clock);
    if (!status.reason.empty())
        words += QLatin1Char('\n') + QString::fromStdString(status.reason);
    return words;
}

void setWords(QLabel* label, const QString& words)
{
    if (label->text() != words)
        label->setText(words);
}

QScrollArea* scrolling(QWidget* content, QWidget* parent)
{
    auto* scroll = new QScrollArea(parent);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(content);
    return scroll;
}

std::vector<Choice> rateChoices()
{
    std::vector<Choice> choices;
    for (const std::string& rate : Serial::offeredRates())
        choices.push_back({rate, QString::fromStdString(rate)});
    return choices;
}

QFormLayout* makeForm()
{
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft);
    return form;
}
} // namespace

SerialPage::SerialPage(ChartHost& host, ConsumerRole role, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
    , m_role(role)
    , m_state(new QLabel(this))
    , m_open(new QPushButton(text("NSOpenPort"), this))
    , m_close(new QPushButton(text("NSClosePort"), this))
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    m_state->setWordWrap(true);
    m_state->setTextInteractionFlags(Qt::TextSelectableByMouse); // the remedy is to be copied
    rows->addWidget(m_state);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_open);
    buttons->addWidget(m_close);
    rows->addLayout(buttons);
    makeTouchable(host.program(), m_open);
    makeTouchable(host.program(), m_close);
    m_open->setObjectName(QStringLiteral("openPort"));
    m_close->setObjectName(QStringLiteral("closePort"));
    buildPort(*rows);
    buildLog(*rows);
    rows->addStretch(1);
    LiveData& live = host.program().live();
    connect(m_open, &QPushButton::clicked, this, [this, &live] { live.open(m_role); });
    connect(m_close, &QPushButton::clicked, this, [this, &live] { live.close(m_role); });
    refresh();
}

std::string SerialPage::key(const char* name) const
{
    const char* prefix = m_role == ConsumerRole::GPS ? ""
        : m_role == ConsumerRole::Instruments        ? "instruments."
                                                     : "ais.";
    return std::string(prefix) + name;
}

void SerialPage::buildPort(QVBoxLayout& rows)
{
    Program& program = m_host.program();
    auto* form = makeForm();
    m_port = makePortBox(program, key("serialPort"), this);
    form->addRow(text("NSSetting.serialPort"), m_port);
    form->addRow(text("NSSetting.rate"),
                 makeChoice(program, key("rate"), "NSSetting.rate", rateChoices(), "4800", this));
    if (m_role == ConsumerRole::GPS)
        form->addRow(text("NSSetting.type"),
                     makeChoice(program, "type", "NSSetting.type",
                                {{"1", text("NSReceiverNMEA")},
                                 {"0", text("NSReceiverGarmin")},
                                 {"2", text("NSReceiverSirf")},
                                 {"5", text("NSReceiverNoPort")}},
                                "1", this));
    rows.addLayout(form);
    if (m_role == ConsumerRole::Instruments)
        rows.addWidget(makeSwitch(program, "instruments.useGPSPort",
                                  "NSSetting.instruments.useGPSPort", this, true));
    if (m_role == ConsumerRole::AIS) {
        rows.addWidget(
            makeSwitch(program, "ais.useGPSPort", "NSSetting.ais.useGPSPort", this, true));
        rows.addWidget(makeSwitch(program, "ais.useInstrumentsPort",
                                  "NSSetting.ais.useInstrumentsPort", this));
    }
    const char* const atStart = m_role == ConsumerRole::GPS ? "connectGPSAtStartup"
        : m_role == ConsumerRole::Instruments               ? "connectInstrumentsAtStartup"
                                                            : "connectAISAtStartup";
    rows.addWidget(makeSwitch(program, atStart, std::string("NSSetting.") + atStart, this));
}

void SerialPage::buildLog(QVBoxLayout& rows)
{
    Program& program = m_host.program();
    auto* monitor = new QPushButton(text("NSMonitor"), this);
    m_record = new QPushButton(text("NSRecord"), this);
    m_replay = new QPushButton(text("NSReplay"), this);
    m_speed = new QComboBox(this);
    m_speed->setAccessibleName(text("NSReplaySpeed"));
    m_speed->setToolTip(text("NSReplaySpeed"));
    for (const int factor : {1, 2, 5, 10, 20, 60})
        m_speed->addItem(QStringLiteral("%1×").arg(factor), factor);
    m_recordState = makeHint({}, this);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(monitor);
    buttons->addWidget(m_record);
    rows.addLayout(buttons);
    auto* replay = new QHBoxLayout;
    replay->addWidget(m_replay, 1);
    replay->addWidget(m_speed);
    rows.addLayout(replay);
    rows.addWidget(m_recordState);
    for (QWidget* control : std::initializer_list<QWidget*>{monitor, m_record, m_replay, m_speed})
        makeTouchable(program, control);
    connect(monitor, &QPushButton::clicked, this, &SerialPage::showMonitor);
    connect(m_record, &QPushButton::clicked, this, &SerialPage::toggleRecording);
    connect(m_replay, &QPushButton::clicked, this, &SerialPage::chooseReplay);
    connect(m_speed, &QComboBox::activated, this, [this](int index) {
        m_host.program().live().setReplaySpeed(m_role, m_speed->itemData(index).toDouble());
    });
}

void SerialPage::listPorts()
{
    fillPorts(m_port, m_host.program().settings().text(key("serialPort")));
}

void SerialPage::refresh()
{
    LiveData& live = m_host.program().live();
    const auto status = live.status(m_role);
    QString words = fullWords(status, live.clock());
    if (live.isReplaying(m_role))
        words = text("NSStateReplaying");
    else if (m_role == ConsumerRole::GPS && live.isSimulated())
        words = text("NSStateSimulated");
    else if (status.state == State::Closed
             && m_host.program().settings().text(key("serialPort")).empty())
        words += QLatin1Char('\n') + text("NSChoosePort");
    setWords(m_state, words);
    m_open->setEnabled(status.state != State::Open && status.state != State::Opening);
    m_close->setEnabled(status.state != State::Closed);
    const bool recording = live.connection(m_role).recorder().isRecording();
    m_record->setText(text(recording ? "NSStopRecording" : "NSRecord"));
    m_replay->setText(text(live.isReplaying(m_role) ? "NSStopReplay" : "NSReplay"));
    m_speed->setEnabled(live.isReplaying(m_role));
    if (!live.isReplaying(m_role))
        m_speed->setCurrentIndex(0);
    if (recording)
        setWords(m_recordState, text("NSRecordingTo", {m_recordFile}));
    else if (m_recordFile.isEmpty())
        setWords(m_recordState, {});
    m_recordState->setVisible(!m_recordState->text().isEmpty());
}

void SerialPage::toggleRecording()
{
    Recorder& recorder = m_host.program().live().connection(m_role).recorder();
    if (recorder.isRecording()) {
        const auto stopped = recorder.stop();
        setWords(m_recordState,
                 stopped ? text("NSRecordedTo", {m_recordFile})
                         : QString::fromStdString(stopped.error().message));
        refresh();
        return;
    }
    const QString file = askForNewFile(m_host.window(), text("NSRecord"),
                                       QStringLiteral("kelvox.nmea"), text("NSLogFilter"));
    if (file.isEmpty())
        return;
    if (const auto started = recorder.start(file.toStdString()); !started)
        m_host.showNote(QString::fromStdString(started.error().message));
    else
        m_recordFile = QFileInfo(file).fileName();
    refresh();
}

void SerialPage::chooseReplay()
{
    LiveData& live = m_host.program().live();
    if (live.isReplaying(m_role)) {
        live.stopReplay(m_role);
        return;
    }
    const QString file = askForFile(m_host.window(), text("NSReplay"), text("NSLogFilter"));
    if (file.isEmpty())
        return;
    if (const auto started = live.replay(m_role, file.toStdString()); !started)
        m_host.showNote(QString::fromStdString(started.error().message));
}

void SerialPage::showMonitor()
{
    const char* const titles[] = {"NSGps", "NSInstruments", "NSAis"};
    if (!m_monitor)
        m_monitor = new MonitorDialog(
            m_host.program(), m_host.program().live().connection(m_role).monitor(),
            text("NSMonitorOf", {text(titles[static_cast<int>(m_role)])}), &m_host.window());
    m_monitor->show();
    m_monitor->raise();
}

ConnectionsPanel::ConnectionsPanel(ChartHost& host)
    : SidePanel(QStringLiteral("connections"), "NSConnections", QStringLiteral("connections"))
    , m_host(host)
    , m_rows(new QListWidget(this))
    , m_pages(new QStackedWidget(this))
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setObjectName(QStringLiteral("connectionRows"));
    m_rows->setAccessibleName(text("NSConnections"));
    m_rows->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rows->addWidget(m_rows);
    rows->addWidget(m_pages, 1);
    for (const auto& [role, title] : {std::pair(ConsumerRole::GPS, "NSGps"),
                                      std::pair(ConsumerRole::Instruments, "NSInstruments"),
                                      std::pair(ConsumerRole::AIS, "NSAis")}) {
        auto* page = new SerialPage(host, role, nullptr);
        m_serial.push_back(page);
        addRow(title, page);
    }
    addRow("NSNetwork", makeNetworkPage());
    addRow("NSRepeat", makeRepeatPage());
    addRow("NSSimulator", makeSimulatorPage());
    connect(m_rows, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    m_rows->setCurrentRow(0);

    Program& program = host.program();
    connect(&program.live(), &LiveData::connectionsChanged, this, &ConnectionsPanel::refresh);
    connect(&program.live(), &LiveData::connectionFailed, this,
            [this](const QString& reason) { m_host.showNote(reason); });
    connect(&program, &Program::settingChanged, this, &ConnectionsPanel::refresh);
    m_retryTimer.setInterval(std::chrono::seconds(1));
    connect(&m_retryTimer, &QTimer::timeout, this, &ConnectionsPanel::refresh);
    restyle();
}

void ConnectionsPanel::addRow(const char* titleKey, QWidget* page)
{
    auto* item = new QListWidgetItem(text(titleKey), m_rows);
    item->setData(titleRole, text(titleKey));
    m_pages->addWidget(scrolling(page, m_pages));
}

QWidget* ConnectionsPanel::makeNetworkPage()
{
    Program& program = m_host.program();
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, 0, 0);
    m_networkState = new QLabel(page);
    m_networkState->setWordWrap(true);
    rows->addWidget(m_networkState);
    rows->addSpacing(Theme::theme().px(8));
    rows->addWidget(makeHeading("NSNetworkClient", page));
    const auto toggle = [&](const char* key) {
        rows->addWidget(makeSwitch(program, key, std::string("NSSetting.") + key, page));
    };
    toggle("tcpipClientModeTCP");
    toggle("tcpipClientModeUDP");
    auto* client = makeForm();
    client->addRow(text("NSSetting.tcpipClientHost"),
                   makeText(program, "tcpipClientHost", "NSSetting.tcpipClientHost",
                            QString::fromStdString(TCPIPController::defaultClientHost()), page));
    client->addRow(text("NSSetting.tcpipClientPort"),
                   makeText(program, "tcpipClientPort", "NSSetting.tcpipClientPort",
                            QStringLiteral("2114"), page));
    rows->addLayout(client);
    rows->addSpacing(Theme::theme().px(8));
    rows->addWidget(makeHeading("NSNetworkServer", page));
    toggle("tcpipServerEnable");
    auto* server = makeForm();
    server->addRow(text("NSSetting.tcpipServerPort"),
                   makeText(program, "tcpipServerPort", "NSSetting.tcpipServerPort",
                            QStringLiteral("2114"), page));
    rows->addLayout(server);
    for (const char* key : {"tcpipServerGPS", "tcpipServerInstruments", "tcpipServerAIS",
                            "tcpipServerLimitToProcessed"})
        toggle(key);
    rows->addStretch(1);
    return page;
}

QWidget* ConnectionsPanel::makeRepeatPage()
{
    Program& program = m_host.program();
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(makeHint(text("NSRepeatHint"), page));
    rows->addWidget(makeSwitch(program, "repeat", "NSSetting.repeat", page));
    auto* form = makeForm();
    auto* port = makePortBox(program, "repeatSerialPort", page);
    fillPorts(port, program.settings().text("repeatSerialPort"));
    form->addRow(text("NSSetting.repeatSerialPort"), port);
    form->addRow(
        text("NSSetting.repeatRate"),
        makeChoice(program, "repeatRate", "NSSetting.repeatRate", rateChoices(), "4800", page));
    rows->addLayout(form);
    rows->addWidget(makeSwitch(program, "autopilot", "NSSetting.autopilot", page));
    auto* speed = makeForm();
    speed->addRow(text("NSSetting.tack1Speed"),
                  makeNumber(program, "tack1Speed", "NSSetting.tack1Speed",
                             {.step = 0.1,
                              .decimals = 1,
                              .unit = [] { return std::pair(1.0, QStringLiteral("kn")); }},
                             page));
    rows->addLayout(speed);
    rows->addStretch(1);
    return page;
}

QWidget* ConnectionsPanel::makeSimulatorPage()
{
    Program& program = m_host.program();
    LiveData& live = program.live();
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(makeHint(text("NSSimulatorHint"), page));
    m_simulate = new QPushButton(page);
    m_simulate->setObjectName(QStringLiteral("simulate"));
    rows->addWidget(m_simulate);
    auto* form = makeForm();
    const auto number = [&](const char* labelKey, double highest, const QString& unit) {
        auto* box = new QDoubleSpinBox(page);
        box->setRange(0, highest);
        box->setDecimals(highest > 100 ? 0 : 1);
        box->setSuffix(QLatin1Char(' ') + unit);
        box->setKeyboardTracking(false);
        box->setButtonSymbols(QAbstractSpinBox::NoButtons);
        box->setAlignment(Qt::AlignRight);
        box->setAccessibleName(text(labelKey));
        makeTouchable(program, box);
        form->addRow(text(labelKey), box);
        return box;
    };
    m_simulatedSpeed = number("NSSpeed", 60, QStringLiteral("kn"));
    m_simulatedHeading = number("NSGauge.heading", 359, QStringLiteral("°"));
    rows->addLayout(form);
    auto* back = new QPushButton(text("NSSimulatorBack"), page);
    auto* file = new QPushButton(text("NSSimulatorFile"), page);
    rows->addWidget(back);
    rows->addWidget(file);
    rows->addStretch(1);
    for (QWidget* control : {m_simulate, back, file})
        makeTouchable(program, control);
    connect(m_simulate, &QPushButton::clicked, this, [this, &live] {
        // Where the boat is; without a boat, where the user looks.
        if (!live.isSimulated() && !live.simulator().position().isKnown())
            live.simulator().setPosition(m_host.chart().center());
        live.setSimulating(!live.isSimulated());
    });
    connect(m_simulatedSpeed, &QDoubleSpinBox::valueChanged, this,
            [&live](double knots) { live.simulator().setSpeed(static_cast<float>(knots)); });
    connect(m_simulatedHeading, &QDoubleSpinBox::valueChanged, this,
            [&live](double degrees) { live.simulator().setHeading(static_cast<float>(degrees)); });
    connect(back, &QPushButton::clicked, this, [&live] { live.simulator().resetStartPosition(); });
    connect(file, &QPushButton::clicked, this, [this, &live] {
        const QString name =
            askForFile(m_host.window(), text("NSSimulatorFile"), text("NSSimulatorFilter"));
        if (name.isEmpty())
            return;
        if (const auto started = live.simulate(name.toStdString()); !started)
            m_host.showNote(QString::fromStdString(started.error().message));
    });
    return page;
}

void ConnectionsPanel::restyle()
{
    const Theme& theme = Theme::theme();
    const int height = theme.px(44);
    m_rows->setIconSize(QSize(theme.px(18), theme.px(18)));
    for (int i = 0; i < m_rows->count(); ++i)
        m_rows->item(i)->setSizeHint(QSize(0, height));
    m_rows->setFixedHeight(height * m_rows->count() + 4);
    for (int i = 0; i < m_rows->count(); ++i)
        m_rows->item(i)->setData(Qt::UserRole, -1); // marks are painted anew
    refresh();
}

void ConnectionsPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    for (SerialPage* page : m_serial)
        page->listPorts();
    refresh();
}

void ConnectionsPanel::hideEvent(QHideEvent* event)
{
    SidePanel::hideEvent(event);
    m_retryTimer.stop();
}

void ConnectionsPanel::setRow(Row row, const QString& state, int kind)
{
    QListWidgetItem* const item = m_rows->item(row);
    const QString words = item->data(titleRole).toString() + QStringLiteral("   ") + state;
    if (item->text() != words)
        item->setText(words);
    if (item->data(Qt::UserRole).toInt() != kind || item->icon().isNull()) {
        item->setData(Qt::UserRole, kind);
        QIcon icon(markPixmap(kind));
        icon.addPixmap(markPixmap(kind), QIcon::Selected); // a state is not tinted
        item->setIcon(icon);
    }
}

void ConnectionsPanel::refresh()
{
    if (m_rows->count() <= Simulator)
        return;
    LiveData& live = m_host.program().live();
    const Settings& settings = m_host.program().settings();
    bool waits = false;
    const ConsumerRole roles[] = {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS};
    for (int i = 0; i < 3; ++i) {
        const auto status = live.status(roles[i]);
        waits = waits || status.state == State::Waiting;
        if (live.isReplaying(roles[i]))
            setRow(static_cast<Row>(i), text("NSStateReplaying"), SimulatedMark);
        else if (i == GPS && live.isSimulated())
            setRow(GPS, text("NSStateSimulated"), SimulatedMark);
        else if (status.state == State::Closed
                 && ((i == Instruments && settings.boolean("instruments.useGPSPort"))
                     || (i == AIS && settings.boolean("ais.useGPSPort"))))
            setRow(static_cast<Row>(i), text("NSStateByGps"), ClosedMark);
        else
            setRow(static_cast<Row>(i), stateWords(status, live.clock()), markOf(status.state));
    }
    for (SerialPage* page : m_serial)
        page->refresh();

    TCPConnectionModel& network = live.network();
    const auto client = network.clientStatus();
    waits = waits || client.state == State::Waiting;
    QString words = fullWords(client, live.clock());
    QString brief = stateWords(client, live.clock());
    int mark = markOf(client.state);
    if (network.serverConnected()) {
        const QString serves = countedText("NSServing", network.serverClientCount(),
                                           {QString::number(network.serverPort())});
        words = client.state == State::Closed ? serves : words + QLatin1Char('\n') + serves;
        if (client.state == State::Closed) {
            brief = serves;
            mark = OpenMark;
        }
    }
    setRow(Network, brief, mark);
    setWords(m_networkState, words);
    const bool repeats = settings.boolean("repeat") && !settings.text("repeatSerialPort").empty();
    setRow(Repeat,
           repeats ? QString::fromStdString(settings.text("repeatSerialPort")) : text("NSOff"),
           repeats ? OpenMark : ClosedMark);
    const bool simulated = live.isSimulated();
    setRow(Simulator, simulated ? text("NSOn") : text("NSOff"),
           simulated ? SimulatedMark : ClosedMark);
    m_simulate->setText(text(simulated ? "NSStopSimulator" : "NSStartSimulator"));
    if (!m_simulatedSpeed->hasFocus() && !m_simulatedHeading->hasFocus()) {
        const QSignalBlocker quietSpeed(m_simulatedSpeed);
        const QSignalBlocker quietHeading(m_simulatedHeading);
        m_simulatedSpeed->setValue(static_cast<double>(live.simulator().speed()));
        m_simulatedHeading->setValue(static_cast<double>(live.simulator().heading()));
    }
    if (waits && isVisible())
        m_retryTimer.start();
    else
        m_retryTimer.stop();
}

} // namespace kelvox
