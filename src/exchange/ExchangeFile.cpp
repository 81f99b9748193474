#include "exchange/ExchangeFile.h"

#include "base/File.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "exchange/CSVExport.h"
#include "exchange/CSVImport.h"
#include "exchange/FileKind.h"
#include "exchange/GPXExport.h"
#include "exchange/GPXImport.h"
#include "exchange/KMLExport.h"
#include "exchange/KMLImport.h"

#include <algorithm>

namespace kelvox {

namespace {
bool isStart(const ExchangeRecords& records, std::size_t i)
{
    return i == 0
        || startsLine(records.tracks[i - 1], records.tracks[i], records.startTrackInterval);
}

Result<void> writeGPX(const std::filesystem::path& path, const ExchangeKinds& kinds,
                      const ExchangeRecords& records, const std::stop_token& stop)
{
    TextOutput out(path, stop);
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
            writer.writeTrack(records.tracks[i], isStart(records, i));
        writer.endTrack();
    }
    writer.writeFooter();
    return out.finish();
}

Result<void> writeKML(const std::filesystem::path& path, const ExchangeKinds& kinds,
                      const ExchangeRecords& records, const ExchangeStyle& style,
                      const std::stop_token& stop)
{
    TextOutput out(path, stop);
    KMLWriter writer(out, style.iconBase);
    writer.writeHeader(path.stem().string());
    if (kinds.waypoints)
        for (const auto& waypoint : records.waypoints)
            writer.writeWaypoint(waypoint);
    if (kinds.routes)
        for (const auto& route : records.routes) {
            for (const auto& waypoint : route.points)
                writer.writeWaypoint(waypoint);
            writer.startRoute(route.name);
            for (const auto& waypoint : route.points)
                writer.writePosition(waypoint);
            writer.endTrack();
        }
    if (kinds.tracks)
        for (std::size_t i = 0; i < records.tracks.size(); ++i) {
            if (isStart(records, i)) {
                if (i > 0)
                    writer.endTrack();
                writer.startTrack(records.tracks[i].color);
            }
            writer.writePosition(records.tracks[i]);
            if (i + 1 == records.tracks.size())
                writer.endTrack();
        }
    writer.writeFooter();
    return out.finish();
}

Result<void> writeCSV(const std::filesystem::path& path, const ExchangeKinds& kinds,
                      const ExchangeRecords& records, const ExchangeStyle& style,
                      const std::stop_token& stop)
{
    TextOutput out(path, stop);
    UnitsModel units;
    units.positionFormatUnits = style.positionFormatUnits;
    CSVWriter writer(out, englishStrings(), units);
    if (kinds.waypoints && !records.waypoints.empty()) {
        for (const auto& waypoint : records.waypoints)
            writer.writeWaypoint(waypoint);
    } else if (kinds.routes && !records.routes.empty()) {
        for (const auto& route : records.routes)
            for (const auto& waypoint : route.points)
                writer.writeWaypoint(waypoint);
    } else if (kinds.tracks) {
        for (const auto& point : records.tracks)
            writer.writeTrack(point);
    }
    return out.finish();
}

Result<void> readCSV(const std::filesystem::path& path, const ExchangeKinds& kinds,
                     const ImportOptions& options, ExchangeRecords& records)
{
    const auto text = readFile(path);
    if (!text)
        return tl::unexpected(text.error());
    UnitsModel units;
    units.positionFormatUnits = UnitsModel::DecimalDegrees;
    const CSVImport reader(options, englishStrings(), units);
    std::string faults;
    if (kinds.tracks && (CSVImport::isTrack(*text) || (!kinds.waypoints && !kinds.routes)))
        faults = reader.readTracks(*text, records);
    else if (kinds.routes && !kinds.waypoints)
        faults = reader.readRoute(*text, path.stem().string(), records);
    else
        faults = reader.readWaypoints(*text, records);
    if (faults.empty())
        return {};
    const auto lines = std::count(faults.begin(), faults.end(), '\n');
    return failure(Error::Code::BadSyntax,
                   std::to_string(lines) + " lines without a position passed over: "
                       + faults.substr(0, faults.find('\n')));
}
} // namespace

Result<void> readExchangeFile(const std::filesystem::path& path, const ExchangeKinds& kinds,
                              ExchangeRecords& records)
{
    ImportOptions options = ImportOptions::now(SystemClock());
    options.timeZoneOffset = {};
    Result<void> read;
    const auto lines =
        kinds.routes && !kinds.tracks ? KMLImport::Lines::AsRoutes : KMLImport::Lines::AsTracks;
    if (KMLExport::isKML(path))
        read = KMLImport(options, lines).import(path, records);
    else if (CSVExport::isCSV(path))
        read = readCSV(path, kinds, options, records);
    else if (GPXExport::isGPX(path) || GPXImport::isGPX(path))
        read = GPXImport(options).import(path, records);
    else
        read = failure(Error::Code::Unsupported, "not a format that is read");
    records.nameTheNameless();
    return read;
}

Result<void> writeExchangeFile(const std::filesystem::path& path, const ExchangeKinds& kinds,
                               const ExchangeRecords& records, const ExchangeStyle& style,
                               const std::stop_token& stop)
{
    if (GPXExport::isGPX(path))
        return writeGPX(path, kinds, records, stop);
    if (hasExtension(path, ".KML"))
        return writeKML(path, kinds, records, style, stop);
    if (CSVExport::isCSV(path))
        return writeCSV(path, kinds, records, style, stop);
    return failure(Error::Code::Unsupported, "not a format that is written");
}

} // namespace kelvox
