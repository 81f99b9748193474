#include "navigation/Journal.h"

#include "base/File.h"

#include <fmt/format.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace kelvox {

namespace {
constexpr std::string_view magic = "KelvoxJournal 1\n";
constexpr std::size_t frameHead = 8; // length and checksum, little-endian

void appendNumber(std::string& out, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out += static_cast<char>(value >> shift & 0xFF);
}

std::uint32_t numberAt(std::string_view bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

std::uint32_t checksum(std::string_view bytes)
{
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

// An entry: '+' or '-', collection, length and bytes of the name; after '+' those of the record.
void appendEntry(std::string& out, const Journal::Entry& entry)
{
    out += entry.record ? '+' : '-';
    out += static_cast<char>(entry.collection);
    appendNumber(out, static_cast<std::uint32_t>(entry.name.size()));
    out += entry.name;
    if (entry.record) {
        appendNumber(out, static_cast<std::uint32_t>(entry.record->size()));
        out += *entry.record;
    }
}

std::optional<std::string> takeText(std::string_view& payload)
{
    if (payload.size() < 4)
        return std::nullopt;
    const std::size_t length = numberAt(payload, 0);
    if (payload.size() - 4 < length)
        return std::nullopt;
    std::string text(payload.substr(4, length));
    payload.remove_prefix(4 + length);
    return text;
}

std::optional<Journal::Entry> takeEntry(std::string_view& payload)
{
    if (payload.size() < 2 || (payload[0] != '+' && payload[0] != '-'))
        return std::nullopt;
    const bool present = payload[0] == '+';
    Journal::Entry entry{static_cast<Journal::Collection>(payload[1]), {}, {}};
    payload.remove_prefix(2);
    auto name = takeText(payload);
    if (!name)
        return std::nullopt;
    entry.name = std::move(*name);
    if (present) {
        entry.record = takeText(payload);
        if (!entry.record)
            return std::nullopt;
    }
    return entry;
}

std::string framed(const std::string& payload)
{
    std::string frame;
    frame.reserve(frameHead + payload.size());
    appendNumber(frame, static_cast<std::uint32_t>(payload.size()));
    appendNumber(frame, checksum(payload));
    return frame += payload;
}

/// The next whole frame's payload; nothing at the end or at damage.
std::optional<std::string_view> frameAt(std::string_view bytes, std::size_t at)
{
    if (bytes.size() - at < frameHead)
        return std::nullopt;
    const std::size_t length = numberAt(bytes, at);
    if (bytes.size() - at - frameHead < length)
        return std::nullopt;
    const auto payload = bytes.substr(at + frameHead, length);
    if (checksum(payload) != numberAt(bytes, at + 4))
        return std::nullopt;
    return payload;
}

tl::unexpected<Error> systemFailure(const std::filesystem::path& path)
{
    return failure(Error::Code::CannotOpen, path.string() + ": " + std::strerror(errno));
}
} // namespace

Result<std::filesystem::path> keepUnderAnotherName(const std::filesystem::path& file)
{
    for (int number = 1; number < 10'000; ++number) {
        const std::filesystem::path name = fmt::format("{}.unreadable-{}", file.string(), number);
        // A link, because it never replaces a file and later writes rename over the original.
        if (::link(file.c_str(), name.c_str()) == 0)
            return name;
        if (errno == EEXIST)
            continue;
        std::error_code error;
        if (!std::filesystem::copy_file(file, name, error) && error != std::errc::file_exists)
            return failure(Error::Code::CannotOpen, file.string() + ": " + error.message());
        if (!error)
            return name;
    }
    return failure(Error::Code::CannotOpen, file.string() + ": no free name to keep it under");
}

Journal::~Journal()
{
    close();
    if (m_lock >= 0)
        ::close(m_lock);
}

void Journal::close()
{
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}

bool Journal::lock()
{
    if (m_lock >= 0)
        ::close(m_lock);
    // Not the journal itself: that one is replaced whenever a save shortens it.
    const std::string name = m_path.string() + ".lock";
    m_lock = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    // Where files cannot be locked, e.g. on some network folders, going on beats refusing.
    return m_lock < 0 || ::flock(m_lock, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

std::size_t Journal::replay(std::string_view bytes)
{
    std::size_t at = magic.size();
    while (const auto payload = frameAt(bytes, at)) {
        at += frameHead + payload->size();
        auto rest = *payload;
        while (auto entry = takeEntry(rest))
            m_recovered[entry->collection][entry->name] = std::move(entry->record);
    }
    return at;
}

Result<std::optional<std::filesystem::path>> Journal::open(const std::filesystem::path& path)
{
    close();
    m_path = path;
    m_recovered.clear();
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    m_inUseElsewhere = !lock();
    if (m_inUseElsewhere) {
        const auto bytes = readFile(path, UINT32_MAX);
        if (bytes && bytes->starts_with(magic))
            replay(*bytes);
        return failure(Error::Code::CannotOpen,
                       path.parent_path().string()
                           + ": another running copy of the program keeps its waypoints, routes "
                             "and tracks here");
    }
    std::optional<std::filesystem::path> kept;
    std::string good(magic);
    if (std::filesystem::exists(path, error)) {
        const auto bytes = readFile(path, UINT32_MAX);
        const bool known = bytes && std::string_view(*bytes).starts_with(magic);
        if (known) {
            const std::size_t at = replay(*bytes);
            good = bytes->substr(0, at);
            // A torn last frame is what a kill leaves; whole frames behind damage are not.
            const bool torn = bytes->size() - at < frameHead
                || numberAt(*bytes, at) >= bytes->size() - at - frameHead;
            if (at == bytes->size()) {
                if (auto opened = openForAppending(); !opened)
                    return tl::unexpected(opened.error());
                return kept;
            }
            if (!torn)
                kept = path;
        } else if (bytes && std::string_view(magic).starts_with(*bytes)) {
            good = magic; // killed while it was made
        } else {
            kept = path;
        }
    }
    if (kept) {
        auto name = keepUnderAnotherName(path);
        if (!name)
            return tl::unexpected(name.error());
        kept = *name;
    }
    if (auto written = writeFileAtomically(path, good); !written)
        return tl::unexpected(written.error());
    if (auto opened = openForAppending(); !opened)
        return tl::unexpected(opened.error());
    return kept;
}

Result<void> Journal::openForAppending()
{
    close();
    m_file = ::open(m_path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    const off_t end = m_file >= 0 ? ::lseek(m_file, 0, SEEK_END) : -1;
    if (end < 0)
        return systemFailure(m_path);
    m_size = static_cast<std::uint64_t>(end);
    return {};
}

const Journal::Recovered& Journal::recovered(Collection collection)
{
    return m_recovered[collection];
}

Result<void> Journal::append(const std::vector<Entry>& entries, Reach reach)
{
    if (m_file < 0)
        return failure(Error::Code::CannotOpen, m_path.string() + ": the journal is not open");
    std::string payload;
    for (const auto& entry : entries)
        appendEntry(payload, entry);
    const std::string frame = framed(payload);
    std::size_t done = 0;
    while (done < frame.size()) {
        const ssize_t written = ::write(m_file, frame.data() + done, frame.size() - done);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0) {
            const auto error = systemFailure(m_path);
            // Half a frame would hide every later one.
            if (done > 0 && ::ftruncate(m_file, static_cast<off_t>(m_size)) != 0)
                close();
            return error;
        }
        done += static_cast<std::size_t>(written);
    }
    m_size += frame.size();
    return reach == Reach::Disk ? sync() : Result<void>();
}

Result<void> Journal::sync()
{
    if (m_file >= 0 && ::fdatasync(m_file) != 0)
        return systemFailure(m_path);
    return {};
}

Result<void> Journal::forget(Collection collection, std::uint64_t before)
{
    if (m_file < 0)
        return {};
    m_recovered[collection].clear();
    const auto bytes = readFile(m_path, UINT32_MAX);
    if (!bytes)
        return tl::unexpected(bytes.error());
    std::string kept(magic);
    std::size_t at = magic.size();
    while (const auto payload = frameAt(*bytes, at)) {
        const bool old = at < before;
        std::string remaining;
        auto rest = *payload;
        while (auto entry = takeEntry(rest))
            if (!old || entry->collection != collection)
                appendEntry(remaining, *entry);
        if (!remaining.empty())
            kept += framed(remaining);
        at += frameHead + payload->size();
    }
    // Not synced: should the power go first, the old frames say what the saved file says.
    if (kept == magic && ::ftruncate(m_file, static_cast<off_t>(magic.size())) == 0) {
        m_size = magic.size();
        return {};
    }
    if (auto written = writeFileAtomically(m_path, kept); !written)
        return written;
    return openForAppending();
}

} // namespace kelvox
