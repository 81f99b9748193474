#include "app/Speech.h"

#include <libspeechd.h>
#include <utility>

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace kelvox {

namespace {
struct Words {
    std::string text;
    std::string language;
};

/// Null where there is none; starts it where it does not run yet.
SPDConnection* openService()
{
    char* error = nullptr; // the library insists on saying it
    auto* connection = spd_open2("kelvox", "alarms", nullptr, SPD_MODE_SINGLE, nullptr, 1, &error);
    std::free(error); // NOLINT(cppcoreguidelines-no-malloc): it is the library's way
    return connection;
}
} // namespace

struct Speech::Shared {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Words> queue;
    bool running = false;
    bool ending = false;

    static void run(const std::shared_ptr<Shared>& shared);
};

void Speech::Shared::run(const std::shared_ptr<Shared>& shared)
{
    SPDConnection* connection = nullptr;
    for (;;) {
        Words next;
        {
            std::unique_lock lock(shared->mutex);
            shared->changed.wait(lock, [&] { return shared->ending || !shared->queue.empty(); });
            if (shared->ending)
                break;
            next = std::move(shared->queue.front());
            shared->queue.pop_front();
        }
        // The service may have been restarted since the last alarm: then once more from the start.
        for (int attempt = 0; attempt < 2; ++attempt) {
            if (!connection)
                connection = openService();
            if (!connection)
                break;
            if (!next.language.empty())
                spd_set_language(connection, next.language.c_str());
            if (spd_say(connection, SPD_IMPORTANT, next.text.c_str()) >= 0)
                break;
            spd_close(connection);
            connection = nullptr;
        }
    }
    if (connection)
        spd_close(connection);
}

Speech::Speech()
    : m_shared(std::make_shared<Shared>())
{
}

Speech::~Speech()
{
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->ending = true;
    m_shared->changed.notify_all();
}

void Speech::say(const std::string& text, const std::string& language)
{
    constexpr std::size_t longestQueue = 4; // old alarms are not spoken after the new ones
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->queue.push_back({text, language});
    if (m_shared->queue.size() > longestQueue)
        m_shared->queue.pop_front();
    if (!std::exchange(m_shared->running, true))
        std::thread([shared = m_shared] { Shared::run(shared); }).detach();
    m_shared->changed.notify_all();
}

} // namespace kelvox
