#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The edits since the last save, on disk before the edit returns: what a killed program made is
/// there at its next start.
///
/// A file of frames. A frame is one edit, perhaps of several collections, and counts whole or not
/// at all: its length and checksum stand before it. Entries say "this record is now so" or "this
/// record is gone" by name, so replaying them over a file that holds them already changes nothing.
/// Main thread. One process at a time: who has the journal open holds a lock on a file beside it,
/// which the system lets go of however the process ends.
class Journal {
public:
    /// Which collection an entry belongs to.
    enum class Collection : char { Waypoints = 'w', Routes = 'r', Tracks = 't' };
    struct Entry {
        Collection collection;
        std::string name;
        std::optional<std::string> record; ///< a dictionary as text; nothing when it is gone
    };
    /// The last state of every record that the journal names.
    using Recovered = std::map<std::string, std::optional<std::string>>;

    /// How far an append must reach before it returns: a killed program needs only the system, a
    /// power cut the disk.
    enum class Reach { System, Disk };

    Journal() = default;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal();

    /// Reads what is there and goes on behind its last whole frame. A file that is not a journal,
    /// or is damaged before its end, is first kept under another name.
    /// Fails while another copy of the program has it open, see isInUseElsewhere(): its edits so
    /// far are then recovered, the journal stays closed and nothing is changed on disk.
    /// @return the name under which a damaged file was kept, or nothing
    Result<std::optional<std::filesystem::path>> open(const std::filesystem::path& path);
    [[nodiscard]] bool isOpen() const { return m_file >= 0; }
    /// Whether open() found the journal in use: the collections' files then belong to the other
    /// copy of the program, and the models refuse to replace them.
    [[nodiscard]] bool isInUseElsewhere() const { return m_inUseElsewhere; }
    [[nodiscard]] const Recovered& recovered(Collection collection);

    [[nodiscard]] Result<void> append(const std::vector<Entry>& entries, Reach reach);
    [[nodiscard]] Result<void> sync();
    /// Where the next frame goes: remembered when a save begins.
    [[nodiscard]] std::uint64_t position() const { return m_size; }
    /// Drops a collection's entries before that position, because its file holds them now.
    [[nodiscard]] Result<void> forget(Collection collection, std::uint64_t before);

private:
    void close();
    bool lock();
    /// Fills m_recovered. @return the bytes up to the end of the last whole frame
    std::size_t replay(std::string_view bytes);
    Result<void> openForAppending();

    std::filesystem::path m_path;
    int m_file = -1;
    int m_lock = -1;
    bool m_inUseElsewhere = false;
    std::uint64_t m_size = 0;
    std::map<Collection, Recovered> m_recovered;
};

/// Gives a file that cannot be read a second, free name beside it, under which nothing overwrites
/// it. The first name stays as well.
[[nodiscard]] Result<std::filesystem::path> keepUnderAnotherName(const std::filesystem::path& file);

} // namespace kelvox
