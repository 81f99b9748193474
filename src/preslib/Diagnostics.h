#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace kelvox::preslib {

/// A place in the readable source.
struct Place {
    std::filesystem::path file;
    int line = 0;
};

/// What is wrong with the source, each with its place. Nothing is written while there is any.
class Diagnostics {
public:
    void add(const Place& place, const std::string& message)
    {
        m_messages.push_back(place.file.string() + ':' + std::to_string(place.line) + ": "
                             + message);
    }
    [[nodiscard]] const std::vector<std::string>& messages() const { return m_messages; }
    [[nodiscard]] bool isEmpty() const { return m_messages.empty(); }

private:
    std::vector<std::string> m_messages;
};

} // namespace kelvox::preslib
