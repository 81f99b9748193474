#pragma once

#include <functional>

namespace kelvox {

/// The thread that owns all state. Reader threads hand their work over to it.
class Executor {
public:
    virtual ~Executor() = default;
    /// Runs the work on the executor's thread, later; returns at once. Order is kept.
    virtual void post(std::function<void()> work) = 0;
    /// Runs the work on the executor's thread and waits for it. From that thread itself: at once.
    virtual void performAndWait(std::function<void()> work) = 0;
};

/// Runs everything at once on the calling thread: for tests and headless tools.
class InlineExecutor final : public Executor {
public:
    void post(std::function<void()> work) override { work(); }
    void performAndWait(std::function<void()> work) override { work(); }
};

} // namespace kelvox
