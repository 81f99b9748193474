#pragma once

#include "base/Clock.h"
#include "devices/SerialLine.h"

#include "support/PseudoTerminal.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// What goes wrong with one of the things that an emulated receiver says.
struct Fault {
    enum class Kind {
        None,
        LoseByte, ///< one in the middle
        SpoilByte, ///< one before the checksum
        Swallow, ///< all of it
        Late, ///< a second later
        StrangerFirst, ///< something that nobody asked for goes before it
        NotHeard, ///< what it would answer was not heard
        PulledOut ///< the cable, from then on
    };
    Kind kind = Kind::None;
    std::size_t at = 0; ///< counted from 0 over all that is said
};

/// A receiver that hears bytes and says messages, with one fault.
class Emulator {
public:
    explicit Emulator(Fault fault = {})
        : m_fault(fault)
    {
    }
    virtual ~Emulator() = default;
    Emulator(const Emulator&) = delete;
    Emulator& operator=(const Emulator&) = delete;
    virtual void hear(std::string_view bytes) = 0;

    struct Said {
        std::string bytes;
        double delay = 0;
        bool pulledOut = false;
    };
    [[nodiscard]] std::vector<Said> takeSaid() { return std::exchange(m_said, {}); }
    [[nodiscard]] std::size_t saidCount() const { return m_count; }

protected:
    [[nodiscard]] virtual std::string stranger() const = 0;
    /// Whether the next thing said is an answer that never was, its question not having been heard.
    bool isDeafNow()
    {
        if (m_fault.kind != Fault::Kind::NotHeard || m_count != m_fault.at)
            return false;
        m_fault.kind = Fault::Kind::None;
        return true;
    }
    void say(std::string bytes, double delay = 0)
    {
        const bool strikes = m_count++ == m_fault.at;
        const auto kind = strikes ? m_fault.kind : Fault::Kind::None;
        const auto middle = bytes.size() / 2;
        switch (kind) {
        case Fault::Kind::LoseByte:
            bytes.erase(middle, 1);
            break;
        case Fault::Kind::SpoilByte:
            bytes[middle] = static_cast<char>(bytes[middle] ^ 4);
            break;
        case Fault::Kind::Swallow:
            return;
        case Fault::Kind::Late:
            delay += 1;
            break;
        case Fault::Kind::StrangerFirst:
            m_said.push_back({stranger(), delay});
            break;
        case Fault::Kind::PulledOut:
            m_said.push_back({{}, delay, true});
            return;
        case Fault::Kind::NotHeard:
        case Fault::Kind::None:
            break;
        }
        m_said.push_back({std::move(bytes), delay});
    }

private:
    Fault m_fault;
    std::size_t m_count = 0;
    std::vector<Said> m_said;
};

/// A pseudo-terminal with an emulated receiver at its other end, on the test's own thread and in
/// time that only passes when the program waits.
class EmulatedLine final : public DeviceLine {
public:
    EmulatedLine(ManualClock& clock, Emulator& emulator)
        : m_clock(clock)
        , m_emulator(emulator)
    {
        m_line =
            *SerialLine::open(m_terminal.path(), "9600", Serial::FlowControl::None, m_real, {});
    }
    [[nodiscard]] bool write(std::string_view bytes) override
    {
        if (m_isPulledOut || !m_line->write(bytes))
            return false;
        m_emulator.hear(m_terminal.read(bytes.size()));
        for (auto& said : m_emulator.takeSaid())
            m_toSay.push_back({std::move(said), m_clock.monotonicSeconds() + said.delay});
        return true;
    }
    [[nodiscard]] ReadStatus read(std::string& bytes, double seconds) override
    {
        if (m_onLine == 0 && !m_isPulledOut && !putOnLine(seconds))
            return ReadStatus::Timeout;
        const auto before = bytes.size();
        const auto status = m_line->read(bytes, 10);
        m_onLine -= std::min(m_onLine, bytes.size() - before);
        m_clock.advance(std::chrono::milliseconds(1));
        return status;
    }
    void flush() override
    {
        std::string ignored;
        while (m_onLine > 0 && m_line->read(ignored, 10) == ReadStatus::Data) {
            m_onLine -= std::min(m_onLine, ignored.size());
            ignored.clear();
        }
        while (!m_toSay.empty() && !m_toSay.front().said.pulledOut
               && m_toSay.front().due <= m_clock.monotonicSeconds())
            m_toSay.pop_front();
        m_line->flush();
    }

private:
    struct Due {
        Emulator::Said said;
        double due = 0;
    };
    /// The next of what the receiver says, at most what the line holds; false when it says nothing
    /// for so long.
    bool putOnLine(double seconds)
    {
        constexpr std::size_t most = 1000;
        const double now = m_clock.monotonicSeconds();
        if (m_toSay.empty() || m_toSay.front().due > now + seconds) {
            m_clock.advance(std::chrono::duration<double>(seconds));
            return false;
        }
        auto& next = m_toSay.front();
        m_clock.advance(std::chrono::duration<double>(std::max(0.0, next.due - now)));
        if (next.said.pulledOut) {
            m_terminal.unplug();
            m_isPulledOut = true;
            return true;
        }
        const auto part = next.said.bytes.substr(0, most);
        m_terminal.write(part);
        m_onLine = part.size();
        next.said.bytes.erase(0, most);
        if (next.said.bytes.empty())
            m_toSay.pop_front();
        return true;
    }

    SystemClock m_real;
    PseudoTerminal m_terminal;
    std::unique_ptr<SerialLine> m_line;
    ManualClock& m_clock;
    Emulator& m_emulator;
    std::deque<Due> m_toSay;
    std::size_t m_onLine = 0; ///< written to the terminal, not yet read from it
    bool m_isPulledOut = false;
};

} // namespace kelvox
