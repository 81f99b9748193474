#include "connections/Recording.h"

#include "connections/SentenceText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace kelvox {
namespace {

/// Seconds of the "c" member of a tag block at the start of the line: some write seconds, some
/// milliseconds.
std::optional<double> tagTime(std::string_view line)
{
    if (!line.starts_with('\\'))
        return std::nullopt;
    const auto block = line.substr(1, line.find('\\', 1) - 1);
    const auto at = block.starts_with("c:") ? 0 : block.find(",c:");
    if (at == std::string_view::npos)
        return std::nullopt;
    const auto digits = block.substr(block.find(':', at) + 1);
    long long value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (read.ec != std::errc{} || value < 0)
        return std::nullopt;
    constexpr long long lastSecond = 100'000'000'000; // beyond the year 5000: milliseconds
    return value < lastSecond ? static_cast<double>(value) : static_cast<double>(value) / 1000;
}

} // namespace

Result<void> Recorder::start(const std::filesystem::path& path)
{
    const std::scoped_lock lock(m_mutex);
    m_file.reset(std::fopen(path.c_str(), "ab"));
    m_path = path;
    m_error = 0;
    if (!m_file)
        return failure(
            Error::Code::CannotOpen,
            fmt::format("Cannot record to {}: {}.", path.string(), std::strerror(errno)));
    return {};
}

Result<void> Recorder::stop()
{
    const std::scoped_lock lock(m_mutex);
    if (m_file && std::fflush(m_file.get()) != 0 && m_error == 0)
        m_error = errno;
    m_file.reset();
    if (m_error == 0)
        return {};
    return failure(Error::Code::CannotOpen,
                   fmt::format("The recording {} is not complete: {}.", m_path.string(),
                               std::strerror(std::exchange(m_error, 0))));
}

bool Recorder::isRecording() const
{
    const std::scoped_lock lock(m_mutex);
    return m_file != nullptr;
}

void Recorder::record(std::string_view line)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_file)
        return;
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.now().time_since_epoch());
    const auto tag = fmt::format("c:{}", now.count());
    // The checksum of a tag block covers all its characters; that of a sentence skips the first.
    const auto text = fmt::format("\\{}*{:02X}\\{}{}", tag, sentenceChecksum('\\' + tag), line,
                                  line.ends_with('\n') ? "" : "\r\n");
    if (std::fwrite(text.data(), 1, text.size(), m_file.get()) != text.size() && m_error == 0)
        m_error = errno;
}

Result<std::unique_ptr<Replay>> Replay::open(const std::filesystem::path& path, const Clock& clock)
{
    auto replay = std::unique_ptr<Replay>(new Replay(clock));
    replay->m_file.reset(std::fopen(path.c_str(), "rb"));
    if (!replay->m_file)
        return failure(Error::Code::CannotOpen,
                       fmt::format("Cannot open {}: {}.", path.string(), std::strerror(errno)));
    replay->m_givenAt = clock.monotonicSeconds();
    return replay;
}

void Replay::setSpeed(double factor)
{
    const std::scoped_lock lock(m_mutex);
    const auto now = m_clock.monotonicSeconds();
    // What was played so far stays played: the clock of the recording goes on from here.
    m_logTime += (now - m_givenAt) * m_speed;
    if (m_next)
        m_logTime = std::min(m_logTime, m_next->logTime);
    m_givenAt = now;
    m_speed = std::clamp(factor, 1.0, 60.0);
}

// False at the end. A file may hold no sentence for gigabytes: after so much of it comes back
// without a line, for the caller to look whether it is still wanted.
bool Replay::fetch()
{
    constexpr int mostBlocks = 64;
    for (int blocks = 0; !m_next;) {
        auto line = m_lines.next();
        std::string last;
        if (!line) {
            std::array<char, 16384> block;
            const auto count = std::fread(block.data(), 1, block.size(), m_file.get());
            if (count > 0) {
                m_lines.append({block.data(), count});
                if (++blocks == mostBlocks)
                    return true;
                continue;
            }
            last = m_lines.takeRest();
            if (last.empty())
                return false;
            line = last;
        }
        if (!hasSentenceStart(*line))
            continue;
        const auto time = tagTime(*line).value_or(m_logTime + secondsBetweenLines);
        if (!m_started)
            m_logTime = time;
        m_started = true;
        m_next = {std::string(sentenceFromStart(*line)), std::max(time, m_logTime)};
    }
    return true;
}

double Replay::wait()
{
    constexpr double longestGap = 60; // a pause in the recording is not waited out for hours
    const std::scoped_lock lock(m_mutex);
    if (!fetch() || !m_next)
        return 0;
    const auto due = m_givenAt + std::min(m_next->logTime - m_logTime, longestGap) / m_speed;
    return std::max(0.0, due - m_clock.monotonicSeconds());
}

std::optional<std::string> Replay::next()
{
    if (wait() > 0)
        return std::nullopt;
    const std::scoped_lock lock(m_mutex);
    if (!m_next)
        return std::nullopt;
    auto line = std::move(m_next->text);
    m_logTime = m_next->logTime;
    m_givenAt = m_clock.monotonicSeconds();
    m_next.reset();
    return line;
}

bool Replay::atEnd()
{
    const std::scoped_lock lock(m_mutex);
    return !fetch();
}

} // namespace kelvox
