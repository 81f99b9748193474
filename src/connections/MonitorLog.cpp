#include "connections/MonitorLog.h"

#include "base/File.h"

#include <algorithm>

namespace kelvox {

void MonitorLog::append(std::string_view line)
{
    constexpr std::size_t longest = 256;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    std::string text(line.substr(0, longest));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '.');

    const std::scoped_lock lock(m_mutex);
    ++m_revision;
    if (m_paused) {
        ++m_missed;
        return;
    }
    m_lines.push_back(std::move(text));
    if (m_lines.size() > m_mostLines)
        m_lines.pop_front();
}

void MonitorLog::setPaused(bool paused)
{
    const std::scoped_lock lock(m_mutex);
    if (paused && !m_paused)
        m_missed = 0;
    m_paused = paused;
}

bool MonitorLog::isPaused() const
{
    const std::scoped_lock lock(m_mutex);
    return m_paused;
}

std::uint64_t MonitorLog::missed() const
{
    const std::scoped_lock lock(m_mutex);
    return m_missed;
}

void MonitorLog::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_lines.clear();
    ++m_revision;
}

std::vector<std::string> MonitorLog::lines(std::string_view filter) const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<std::string> result;
    for (const auto& line : m_lines)
        if (line.find(filter) != std::string::npos)
            result.push_back(line);
    return result;
}

std::uint64_t MonitorLog::revision() const
{
    const std::scoped_lock lock(m_mutex);
    return m_revision;
}

Result<void> MonitorLog::save(const std::filesystem::path& path, std::string_view filter) const
{
    std::string text;
    for (const auto& line : lines(filter))
        text.append(line).append("\n");
    return writeFileAtomically(path, text);
}

} // namespace kelvox
