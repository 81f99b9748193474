// The user's files as a stranger may have left them: property lists, the journal, position texts.

#include "base/File.h"
#include "base/Strings.h"
#include "navigation/Journal.h"
#include "navigation/PositionFormatter.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace {
/// Where the journal lies while models load it; in memory where there is such a place.
struct Folder {
    Folder()
    {
        const char* memory = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
        path = std::string(memory) + "/kelvox-fuzz-" + std::to_string(::getpid());
        std::filesystem::create_directories(path);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::filesystem::path path;
};

const std::filesystem::path& folder()
{
    static const Folder made;
    return made.path;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 3) {
    case 0: { // one reading of each kind of record
        std::size_t records = 0;
        (void)readRecords(bytes,
                          {.restart = [&] { records = 0; },
                           .record =
                               [&](std::size_t, std::string_view, const PropertyFields& fields) {
                                   Waypoint waypoint;
                                   waypoint.read(fields);
                                   Track track;
                                   track.read(fields);
                                   ++records;
                               }});
        break;
    }
    case 1: { // a journal, and the models on it
        const auto file = folder() / "edits.journal";
        if (!writeFileAtomically(file, bytes))
            return 0;
        EditHistory history;
        (void)history.openJournal(file);
        WaypointsModel waypoints(history);
        RoutesModel routes(history, waypoints);
        TracksModel tracks(history);
        waypoints.load(folder() / "waypoints.plist");
        routes.load(folder() / "routes.plist");
        tracks.load(folder() / "tracks.plist");
        std::filesystem::remove(folder() / "edits.journal.unreadable-1");
        break;
    }
    default: {
        UnitsModel units;
        for (int format = 0; format < 4; ++format) {
            units.positionFormatUnits = format;
            for (const int axis : {0, 1}) {
                const NSPositionFormatter formatter(axis, englishStrings(), units);
                if (const auto value = formatter.getObjectValue(bytes))
                    if (!formatter.getObjectValue(formatter.stringForObjectValue(*value)))
                        std::abort(); // what is shown must read back
            }
        }
    }
    }
    return 0;
}
