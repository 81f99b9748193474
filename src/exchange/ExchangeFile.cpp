#include "exchange/ExchangeFile.h"

#include "exchange/GPXExport.h"
#include "exchange/GPXImport.h"

namespace kelvox {

namespace {
/// Whether a line of the track begins here: lines are told apart by their colour.
bool isStart(const std::vector<Track>& tracks, std::size_t i)
{
    return i == 0 || tracks[i].color != tracks[i - 1].color;
}

Result<void> writeGPX(const std::filesystem::path& path, const ExchangeKinds& kinds,
                      const ExchangeRecords& records)
{
    TextOutput out(path);
    GPXWriter writer(out);
    writer.writeHeader();
    if (kinds.waypoints)
        for (const auto& waypoint : records.waypoints)
            writer.writeWaypoint(waypoint, "wpt");
    if (kinds.routes)
        for (const auto& route : records.routes) {
            writer.beginRoute(route.name);
            for (const auto& waypoint : route.points)
                writer.writeWaypoint(waypoint, "rtept");
            writer.endRoute();
        }
    if (kinds.tracks && !records.tracks.empty()) {
        writer.beginTrack(path.stem().string());
        for (std::size_t i = 0; i < records.tracks.size(); ++i)
            writer.writeTrack(records.tracks[i], isStart(records.tracks, i));
        writer.endTrack();
    }
    writer.writeFooter();
    return out.finish();
}
} // namespace

Result<void> readExchangeFile(const std::filesystem::path& path, const ExchangeKinds& /*kinds*/,
                              ExchangeRecords& records)
{
    ImportOptions options = ImportOptions::now(SystemClock());
    options.timeZoneOffset = {};
    Result<void> read;
    if (GPXExport::isGPX(path) || GPXImport::isGPX(path))
        read = GPXImport(options).import(path, records);
    else
        read = failure(Error::Code::Unsupported, "not a format that is read");
    records.nameTheNameless();
    return read;
}

Result<void> writeExchangeFile(const std::filesystem::path& path, const ExchangeKinds& kinds,
                               const ExchangeRecords& records)
{
    if (GPXExport::isGPX(path))
        return writeGPX(path, kinds, records);
    return failure(Error::Code::Unsupported, "not a format that is written");
}

} // namespace kelvox
