#pragma once

#include "connections/FileDescriptor.h"

#include <sys/eventfd.h>

#include <cstdint>

namespace kelvox {

/// A bell that a thread waiting in poll() listens to.
class WakeUp {
public:
    WakeUp()
        : m_event(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    {
    }
    void ring()
    {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(m_event.get(), &one, sizeof one);
    }
    void clear()
    {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto read = ::read(m_event.get(), &count, sizeof count);
    }
    [[nodiscard]] int descriptor() const { return m_event.get(); }

private:
    FileDescriptor m_event;
};

} // namespace kelvox
