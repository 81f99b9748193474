#pragma once

#include "base/Executor.h"

#include <memory>
#include <thread>

namespace kelvox {

/// The main thread as reader threads see it: like the executor behind it, but it can be closed.
///
/// Without it a reader that waits for the main thread and a main thread that waits for the reader
/// to end would wait for ever. Make it and close it on the main thread.
class HandOver final : public Executor {
public:
    explicit HandOver(Executor& main);
    void post(std::function<void()> work) override;
    /// From the main thread itself: at once. After close(): the work is not done at all.
    void performAndWait(std::function<void()> work) override;
    /// Releases all who wait and drops what has not begun.
    void close();

private:
    struct Shared;
    Executor& m_main;
    std::thread::id m_mainThread;
    std::shared_ptr<Shared> m_shared;
};

} // namespace kelvox
