#pragma once

#include <memory>
#include <string>

namespace kelvox {

/// Speaks through the desktop's speech service. Nothing here ever waits for it: a thread of its own
/// does, which is started with the first text and forgotten at the end.
class Speech {
public:
    Speech();
    ~Speech();
    Speech(const Speech&) = delete;
    Speech& operator=(const Speech&) = delete;

    /// @param language as in "de"; empty takes the service's own
    void say(const std::string& text, const std::string& language = {});

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};

} // namespace kelvox
