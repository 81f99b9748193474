// A busy line through the real threads: sentences at a given rate through a pseudo-terminal or a
// socket into GPSController on the main thread. Counts what is lost or out of order and how much
// of the time the main thread works. Arguments: sentences a second (0: as fast as they go),
// seconds.

#include "connections/HandOver.h"
#include "positioning/NmeaConnection.h"
#include "positioning/OwnVessel.h"
#include "support/MainLoop.h"
#include "support/PseudoTerminal.h"

#include <benchmark/benchmark.h>

#include <poll.h>

namespace kelvox {
namespace {

using Seconds = std::chrono::duration<double>;

/// The main thread's work, timed.
class TimedExecutor final : public Executor {
public:
    explicit TimedExecutor(MainLoop& loop)
        : m_loop(loop)
    {
    }
    void post(std::function<void()> work) override
    {
        m_loop.post([this, work = std::move(work)] {
            const auto began = std::chrono::steady_clock::now();
            work();
            busy += std::chrono::steady_clock::now() - began;
        });
    }
    void performAndWait(std::function<void()> work) override { m_loop.performAndWait(work); }
    Seconds busy{0};

private:
    MainLoop& m_loop;
};

/// Every tenth sentence is numbered, so that a gap or a wrong order shows.
class Numbers final : public GPSListener {
public:
    void waypointReceived(Position, const std::string& name) override
    {
        const auto number = std::stoul(name);
        wrong += number != next;
        next = number + 1;
    }
    std::size_t next = 0;
    std::size_t wrong = 0;
};

struct Line {
    virtual ~Line() = default;
    virtual void open(NmeaConnection& connection, TCPConnectionModel& network) = 0;
    virtual void ready() { }
    virtual void write(std::string_view bytes) = 0;
};

struct SerialLine final : Line {
    explicit SerialLine(MemorySettings& settings) { settings.set("serialPort", terminal.path()); }
    void open(NmeaConnection& connection, TCPConnectionModel&) override { connection.open(); }
    void write(std::string_view bytes) override { terminal.write(bytes); }
    PseudoTerminal terminal;
};

struct SocketLine final : Line {
    explicit SocketLine(MemorySettings&)
        : listening(std::move(*NetSocket::listen(0)))
    {
    }
    void open(NmeaConnection& connection, TCPConnectionModel& network) override
    {
        network.createClientConnection(connection, "127.0.0.1",
                                       std::to_string(listening.localPort()));
    }
    void ready() override
    {
        pollfd waiting{listening.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, -1);
        socket = std::move(*listening.accept());
    }
    void write(std::string_view bytes) override
    {
        std::string queue(bytes);
        pollfd waiting{socket.descriptor(), POLLOUT, 0};
        while (!queue.empty() && ::poll(&waiting, 1, -1) > 0)
            if (socket.write(queue) == NetSocket::Answer::Closed)
                return;
    }
    NetSocket listening;
    NetSocket socket;
};

template <typename LineType> void load(benchmark::State& state)
{
    const auto rate = static_cast<double>(state.range(0));
    const auto seconds = static_cast<double>(state.range(1));
    constexpr std::size_t batch = 200;
    const auto batches = static_cast<std::size_t>((rate > 0 ? rate : 200000) * seconds) / batch;
    while (state.KeepRunning()) {
        const SystemClock clock;
        MainLoop loop;
        TimedExecutor timed(loop);
        HandOver main(timed);
        OwnVessel parts(clock); // for the parts that play no role here
        LineType line(parts.settings);
        NullAlarms alarms;
        InstrumentsController instruments(main, clock, parts.settings, englishStrings(),
                                          parts.compass);
        GPSController gps({main, clock, parts.settings, englishStrings(), alarms,
                           parts.notification, parts.compass});
        Numbers numbers;
        gps.setInstruments(&instruments);
        gps.addListener(numbers);
        TCPConnectionModel network(main, clock);
        NmeaConnection connection(ConsumerRole::GPS, gps, {main, clock, parts.settings, &network},
                                  {.start = 0});
        connection.start();
        static_cast<Line&>(line).open(connection, network);
        line.ready();
        if (!loop.runUntil(
                [&] { return connection.reader().isOpen() || network.clientConnected(); }))
            state.SkipWithError("not open");

        std::vector<std::string> sentences;
        for (const auto* text :
             {"$GPRMC,085411.000,A,5222.3215,N,00454.5778,E,0.58,251.34,030414,2.0,E",
              "$GPGGA,085411.000,5222.3215,N,00454.5778,E,1,4,2.95,16.0,M,47.0,M,,",
              "$IIHDG,182.1,00.0,E,2.0,E", "$IIVHW,181.0,T,179.0,M,06.11,N,11.31,K",
              "$IIDBT,036.9,f,011.3,M,006.1,F", "$IIMTW,12.5,C", "$IIMWV,084.0,T,06.64,N,A",
              "$IIVPW,4.71,N,,", "$GPVTG,251.34,T,,M,0.58,N,1.07,K,A"})
            sentences.push_back(completeSentence(text, AddChecksum::Yes));
        timed.busy = Seconds(0);
        const auto began = std::chrono::steady_clock::now();
        std::thread sender([&] {
            std::size_t number = 0;
            for (std::size_t i = 0; i < batches; ++i) {
                std::string bytes;
                for (std::size_t k = 0; k < batch; ++k)
                    bytes += k % 10 == 9 ? completeSentence("$GPWPL,5222.321,N,00454.577,E,"
                                                                + std::to_string(number++),
                                                            AddChecksum::Yes)
                                         : sentences[k % 10];
                if (rate > 0)
                    std::this_thread::sleep_until(began
                                                  + Seconds(static_cast<double>(i * batch) / rate));
                line.write(bytes);
            }
        });
        const std::size_t expected = batches * batch / 10;
        bool moves = true;
        while (moves && numbers.next < expected) {
            const auto before = numbers.next;
            moves = loop.runUntil([&] { return numbers.next != before; });
        }
        sender.join();
        const Seconds took = std::chrono::steady_clock::now() - began;
        state.counters["sentences/s"] = static_cast<double>(batches * batch) / took.count();
        state.counters["lost"] = static_cast<double>(expected - numbers.next);
        state.counters["outOfOrder"] = static_cast<double>(numbers.wrong);
        state.counters["mainThreadBusy%"] = 100 * timed.busy.count() / took.count();
        main.close();
        connection.stop();
    }
}
BENCHMARK_TEMPLATE(load, SerialLine)->Args({20000, 5})->Args({0, 5})->Iterations(1)->UseRealTime();
BENCHMARK_TEMPLATE(load, SocketLine)->Args({20000, 5})->Args({0, 5})->Iterations(1)->UseRealTime();
// The figures asked of a bus gone mad: a minute.
BENCHMARK_TEMPLATE(load, SerialLine)->Args({20000, 60})->Iterations(1)->UseRealTime();
BENCHMARK_TEMPLATE(load, SocketLine)->Args({20000, 60})->Iterations(1)->UseRealTime();

} // namespace
} // namespace kelvox
