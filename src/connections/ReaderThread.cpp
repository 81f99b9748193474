#include "connections/ReaderThread.h"

#include "connections/SentenceText.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include <array>

namespace kelvox {
namespace {

// Enough to make hand-overs cheap, few enough that commands never wait long.
constexpr std::size_t linesAtOnce = 64;

} // namespace

ReaderThread::ReaderThread(Owner& owner, Executor& main, const Clock& clock, Pace pace)
    : m_owner(owner)
    , m_main(main)
    , m_clock(clock)
    , m_pace(pace)
{
}

ReaderThread::~ReaderThread()
{
    stop();
}

void ReaderThread::start()
{
    m_stopping = false;
    m_thread = std::thread([this] { run(); });
}

void ReaderThread::stop()
{
    m_stopping = true;
    retryNow();
    if (m_thread.joinable())
        m_thread.join();
}

void ReaderThread::request(Command command)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_command = command;
    }
    retryNow();
}

void ReaderThread::retryNow()
{
    const std::scoped_lock lock(m_mutex);
    m_status.retryAt = 0;
    m_woken = true;
    m_changed.notify_all();
    m_wakeUp.ring();
}

ConnectionStatus ReaderThread::status() const
{
    const std::scoped_lock lock(m_mutex);
    return m_status;
}

bool ReaderThread::isOpen() const
{
    return status().state == ConnectionStatus::State::Open;
}

void ReaderThread::setSimulator(std::function<std::vector<std::string>()> nextLines)
{
    const std::scoped_lock lock(m_mutex);
    m_simulator = std::move(nextLines);
    m_woken = true;
    m_changed.notify_all();
    m_wakeUp.ring();
}

void ReaderThread::setLogFile(std::shared_ptr<Replay> log)
{
    const std::scoped_lock lock(m_mutex);
    m_log = std::move(log);
    m_woken = true;
    m_changed.notify_all();
    m_wakeUp.ring();
}

bool ReaderThread::isReadingLogFile() const
{
    const std::scoped_lock lock(m_mutex);
    return m_log != nullptr;
}

bool ReaderThread::writeRepeat(std::string_view line)
{
    const std::scoped_lock lock(m_portMutex);
    auto& port = m_repeatsToPort ? m_port : m_repeatPort;
    return port.isOpen() && port.writePort(line);
}

bool ReaderThread::writePort(std::string_view line)
{
    const std::scoped_lock lock(m_portMutex);
    return m_port.isOpen() && m_port.writePort(line);
}

void ReaderThread::run()
{
    // Before other work where the system lets us; of no consequence where it does not.
    ::setpriority(PRIO_PROCESS, 0, -10);
    wait(m_pace.start);
    bool connects = false;
    if (!m_stopping)
        m_main.performAndWait([this, &connects] { connects = m_owner.connectsAtStart(); });
    if (connects && !m_port.isOpen())
        m_wanted = true;

    while (!m_stopping) {
        Command command = Command::None;
        bool simulates = false;
        bool plays = false;
        bool due = false;
        {
            const std::scoped_lock lock(m_mutex);
            command = std::exchange(m_command, Command::None);
            simulates = static_cast<bool>(m_simulator);
            plays = m_log != nullptr;
            due = m_clock.monotonicSeconds() >= m_status.retryAt;
        }
        execute(command);
        const bool isOpen = m_port.isOpen() || m_withoutPort;
        if (m_wanted && !isOpen && due && !plays && command != Command::Open)
            open();

        if (simulates)
            readSimulator();
        else if (plays)
            readLogFile();
        else if (m_port.isOpen())
            readPort();
        else
            wait(m_pace.idle);
    }
    closePorts();
}

void ReaderThread::execute(Command command)
{
    switch (command) {
    case Command::Open:
        if (isReadingLogFile())
            break;
        m_wanted = true;
        m_backoff.reset();
        if (m_port.isOpen() || m_withoutPort) {
            if (m_port.isOpen() && m_plan.beforeReopening)
                m_plan.beforeReopening(m_port, [this] { waitForRestart(); });
            closePorts();
            tellMain([](Owner& owner) { owner.connectionClosed(); });
        }
        open();
        break;
    case Command::Close:
    case Command::CloseAndReport:
        m_wanted = false;
        closePorts();
        setStatus({});
        if (command == Command::Close)
            tellMain([](Owner& owner) { owner.connectionClosed(); });
        else
            m_main.performAndWait([this] { m_owner.connectionClosed(); });
        break;
    case Command::Clear:
    case Command::None:
        break;
    }
}

void ReaderThread::open()
{
    m_main.performAndWait([this] { m_plan = m_owner.portPlan(); });
    const auto target = fmt::format("{} at {}", m_plan.port, m_plan.rate);
    m_withoutPort = !m_plan.hasPort;
    if (m_plan.hasPort) {
        setStatus({.state = ConnectionStatus::State::Opening, .target = target, .reason = {}});
        Result<void> opened;
        {
            const std::scoped_lock lock(m_portMutex);
            opened = m_port.open(m_plan.port, m_plan.rate, m_plan.flow);
        }
        if (!opened) {
            tellMain([port = m_plan.port, reason = opened.error().message](Owner& owner) {
                owner.openPortFail(port, reason);
            });
            lost(opened.error().message);
            return;
        }
        m_owner.showInMonitor(fmt::format("#### Open {} at {}", m_plan.port, m_plan.rate));
        m_lines.clear();
        if (m_plan.initialise)
            m_plan.initialise(m_port, [this] { waitForRestart(); });
    }
    openRepeat(m_plan);
    m_backoff.reset();
    setStatus({.state = ConnectionStatus::State::Open, .target = target, .reason = {}});
    tellMain([](Owner& owner) { owner.connectionOpened(); });
}

void ReaderThread::openRepeat(const PortPlan& plan)
{
    Result<void> opened;
    {
        const std::scoped_lock lock(m_portMutex);
        m_repeatsToPort = plan.repeat == PortPlan::Repeat::SamePort && plan.hasPort;
        if (plan.repeat == PortPlan::Repeat::Off || m_repeatsToPort)
            return;
        opened = m_repeatPort.open(plan.repeatPort, plan.repeatRate);
    }
    if (opened)
        m_owner.showInMonitor(fmt::format("#### Open {} at {}", plan.repeatPort, plan.repeatRate));
    else
        tellMain([port = plan.repeatPort, reason = opened.error().message](Owner& owner) {
            owner.openPortFail(port, reason);
        });
}

void ReaderThread::closePorts()
{
    const std::scoped_lock lock(m_portMutex);
    m_repeatPort.closePort();
    m_port.closePort();
    m_repeatsToPort = false;
    m_withoutPort = false;
}

void ReaderThread::lost(const std::string& reason)
{
    auto now = status();
    now.state = ConnectionStatus::State::Waiting;
    now.reason = reason;
    now.retryAt = m_clock.monotonicSeconds() + m_backoff.next();
    setStatus(std::move(now));
}

void ReaderThread::readPort()
{
    const auto answer = m_port.read(m_bytes, m_wakeUp.descriptor());
    m_wakeUp.clear();
    m_lines.append(m_bytes);
    m_bytes.clear();

    std::array<std::string_view, linesAtOnce> lines;
    std::size_t count = 0;
    while (const auto line = m_lines.next()) {
        lines[count++] = *line;
        if (count < lines.size())
            continue;
        deliver(lines);
        count = 0;
    }
    deliver({lines.data(), count});
    if (answer != Serial::ReadStatus::Closed)
        return;
    closePorts();
    lost(fmt::format("{} is gone. Plug it in again; it is opened by itself.", m_plan.port));
    tellMain([](Owner& owner) { owner.connectionClosed(); });
}

void ReaderThread::readSimulator()
{
    wait(m_pace.simulator);
    std::function<std::vector<std::string>()> nextLines;
    {
        const std::scoped_lock lock(m_mutex);
        nextLines = m_simulator;
    }
    if (!nextLines)
        return;
    const auto texts = nextLines();
    const std::vector<std::string_view> lines(texts.begin(), texts.end());
    deliver(lines);
}

void ReaderThread::readLogFile()
{
    std::shared_ptr<Replay> log;
    {
        const std::scoped_lock lock(m_mutex);
        log = m_log;
    }
    if (!log)
        return;
    if (log->atEnd()) {
        {
            const std::scoped_lock lock(m_mutex);
            if (m_log != log)
                return; // another one has been chosen meanwhile
            m_log = nullptr;
        }
        tellMain([](Owner& owner) { owner.logFileEnded(); });
        return;
    }
    wait(log->wait());
    {
        const std::scoped_lock lock(m_mutex);
        if (m_log != log)
            return;
    }
    if (const auto text = log->next()) {
        const std::string_view line = *text;
        deliver({&line, 1});
    }
}

void ReaderThread::deliver(std::span<const std::string_view> lines)
{
    std::array<std::string_view, linesAtOnce> sentences;
    std::size_t count = 0;
    for (const auto line : lines) {
        m_owner.showInMonitor(line);
        if (!hasSentenceStart(line))
            continue;
        sentences[count++] = sentenceFromStart(line);
        if (count < sentences.size())
            continue;
        m_owner.takeLines(sentences);
        count = 0;
    }
    if (count > 0)
        m_owner.takeLines({sentences.data(), count});
}

void ReaderThread::wait(double seconds)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::duration<double>(seconds),
                       [this] { return m_woken || m_stopping; });
    m_woken = false;
}

void ReaderThread::waitForRestart()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::duration<double>(m_pace.restart),
                       [this] { return m_stopping.load(); });
}

void ReaderThread::setStatus(ConnectionStatus status)
{
    {
        const std::scoped_lock lock(m_mutex);
        if (m_status == status)
            return;
        m_status = status;
    }
    tellMain([status = std::move(status)](Owner& owner) { owner.statusChanged(status); });
}

void ReaderThread::tellMain(std::function<void(Owner&)> call)
{
    m_main.post([this, call = std::move(call)] { call(m_owner); });
}

} // namespace kelvox
