#pragma once

#include "devices/Emulator.h"
#include "support/PseudoTerminal.h"

#include <thread>

namespace kelvox {

/// An emulated receiver that answers in real time, on a thread of its own.
class LiveReceiver {
public:
    explicit LiveReceiver(Emulator& emulator)
        : m_emulator(emulator)
        , m_thread([this](const std::stop_token& stop) { run(stop); })
    {
    }
    [[nodiscard]] const std::string& path() const { return m_terminal.path(); }

private:
    void run(const std::stop_token& stop)
    {
        while (!stop.stop_requested()) {
            const auto heard = m_terminal.readAvailable();
            if (heard.empty()) {
                ::poll(nullptr, 0, 1);
                continue;
            }
            m_emulator.hear(heard);
            for (const auto& said : m_emulator.takeSaid()) {
                if (said.pulledOut) {
                    m_terminal.unplug();
                    return;
                }
                m_terminal.write(said.bytes);
            }
        }
    }
    Emulator& m_emulator;
    PseudoTerminal m_terminal;
    std::jthread m_thread;
};

} // namespace kelvox
