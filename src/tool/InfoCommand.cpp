#include "iso8211/ISOModule.h"
#include "raster/BSBChart.h"
#include "s57/ISO8211Wrap.h"
#include "s57/S57CellLoader.h"
#include "s57/S57ObjectCatalogue.h"
#include "tool/Command.h"
#include "tool/RasterInfo.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

namespace kelvox {

namespace {
using Json = nlohmann::ordered_json;

struct InfoOptions {
    std::vector<std::string> paths;
    bool noUpdates = false;
};

template <typename AnyJson> void print(const AnyJson& json)
{
    // Bytes that are no UTF-8 stand as the replacement character instead of ending the tool.
    std::puts(json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
}

Json boundsOf(double west, double south, double east, double north)
{
    return Json::array({west, south, east, north});
}

Json cellInfo(const std::filesystem::path& path, const S57CellLoader::Loaded& loaded)
{
    const S57ChartItems& cell = *loaded.cell;
    const auto& parameters = cell.parameters();
    std::map<std::string_view, int> byClass;
    for (const auto& feature : cell.s57Features())
        ++byClass[S57ObjectCatalogue::classAcronym(feature->objectCode())];
    Json info;
    info["path"] = path.string();
    info["kind"] = "s57-cell";
    info["edition"] = parameters.edition;
    info["update"] = parameters.update;
    info["issueDate"] = parameters.issueDate;
    info["compiledScale"] = parameters.compiledScale;
    info["coordinateMultiplier"] = parameters.coordinateMultiplier;
    info["soundingMultiplier"] = parameters.soundingMultiplier;
    const Rect bounds = cell.bounds();
    info["bounds"] = bounds.isEmpty()
        ? Json(nullptr)
        : boundsOf(bounds.left, bounds.bottom, bounds.right, bounds.top);
    info["features"] = cell.s57Features().size();
    info["vectors"] = cell.s57VectorCount();
    info["byClass"] = Json::object();
    for (const auto& [acronym, count] : byClass)
        info["byClass"][std::string(acronym)] = count;
    info["updatesApplied"] = loaded.updatesApplied;
    if (!loaded.notes.empty()) {
        info["notes"] = Json::array();
        for (const auto& note : loaded.notes)
            info["notes"].push_back(note.message);
    }
    return info;
}

void printCatalog(Tool& tool, const std::filesystem::path& path)
{
    ISO8211Wrap::Catalog catalog;
    if (const auto read = ISO8211Wrap::load(path, catalog); !read) {
        tool.fail(read.error().message);
        return;
    }
    Json info;
    info["path"] = path.string();
    info["kind"] = "s57-catalog";
    info["entries"] = Json::array();
    for (const auto& record : catalog) {
        Json entry;
        entry["path"] = record->path.string();
        entry["description"] = record->description;
        entry["format"] = record->format;
        entry["comment"] = record->comment;
        entry["base"] = record->binaryPrimary;
        entry["bounds"] = boundsOf(record->westLongitude, record->southLatitude,
                                   record->eastLongitude, record->northLatitude);
        info["entries"].push_back(entry);
    }
    print(info);
}

void printCell(Tool& tool, const std::filesystem::path& path, bool noUpdates)
{
    using Updates = S57CellLoader::Updates;
    const auto loaded = S57CellLoader::load(path, noUpdates ? Updates::Leave : Updates::Apply);
    if (loaded)
        print(cellInfo(path, *loaded));
    else
        tool.fail(loaded.error().message);
}

void printRaster(Tool& tool, const std::filesystem::path& path)
{
    BSBChart chart;
    if (const auto read = chart.loadHeader(path))
        print(rasterInfo(chart));
    else
        tool.fail(read.error().message);
}

/// Raster charts below a folder, in order of their paths.
std::vector<std::filesystem::path> rastersIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error))
        if (BSBChart::isNamedAsChart(entry.path()))
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

void runInfo(Tool& tool, const InfoOptions& options)
{
    for (const std::string& name : options.paths) {
        if (std::filesystem::path(name).filename() == "CATALOG.031") {
            printCatalog(tool, name);
            continue;
        }
        if (BSBChart::isNamedAsChart(name)) {
            printRaster(tool, name);
            continue;
        }
        const auto rasters = rastersIn(name);
        for (const auto& path : rasters)
            printRaster(tool, path);
        std::vector<Error> problems;
        const auto cells = S57CellLoader::findCells({name}, problems);
        for (const auto& problem : problems)
            tool.fail(problem.message);
        if (cells.empty() && rasters.empty() && problems.empty())
            tool.fail(name + ": no charts here");
        for (const auto& path : cells)
            printCell(tool, path, options.noUpdates);
    }
}

Json valueJson(const ISOData::Value& value)
{
    struct Visitor {
        Json operator()(std::monostate) const { return nullptr; }
        Json operator()(const ISODataRecord& name) const
        {
            return {{"rcnm", name.rcnm}, {"rcid", name.rcid}};
        }
        Json operator()(const ISODataAgency& name) const
        {
            return {{"agen", name.agen}, {"fidn", name.fidn}, {"fids", name.fids}};
        }
        Json operator()(const std::string& text) const { return text; }
        Json operator()(std::int32_t number) const { return number; }
        Json operator()(std::uint32_t number) const { return number; }
        Json operator()(double number) const { return number; }
    };
    return std::visit(Visitor{}, value);
}

void runDump(Tool& tool, const std::string& path)
{
    ISOModule module;
    if (const auto opened = module.open(path); !opened) {
        tool.fail(path + ": " + opened.error().message);
        return;
    }
    while (const ISORawRecord* raw = module.readRecord()) {
        const ISORecord record = ISORecord::copyOf(*raw);
        Json fields = Json::array();
        for (const auto& field : record.fields()) {
            Json rows = Json::array();
            for (const auto& row : field.rows()) {
                Json values = Json::object();
                for (const auto& data : row.datas())
                    values[data.name()] = valueJson(data.value());
                rows.push_back(std::move(values));
            }
            fields.push_back({{"tag", field.name()}, {"rows", std::move(rows)}});
        }
        print(Json{{"fields", std::move(fields)}});
    }
    if (const Error* error = module.lastError())
        tool.fail(path + ": " + error->message + " at byte " + std::to_string(error->offset));
}

void runCatalog(Tool& tool, const std::string& folder)
{
    const auto path = std::filesystem::path(folder) / "CATALOG.031";
    ISO8211Wrap::Catalog catalog;
    const auto saved = ISO8211Wrap::save(path, catalog);
    if (!saved) {
        tool.fail(saved.error().message);
        return;
    }
    for (const auto& error : *saved)
        tool.fail(error.message);
    std::printf("%s: %zu cells\n", path.c_str(), catalog.size());
}
} // namespace

void addInfoCommand(Tool& tool)
{
    auto* info = tool.command("info", "Describe cells and catalogues, one JSON object per line");
    auto options = std::make_shared<InfoOptions>();
    info->add_option("paths", options->paths, "Cells, catalogues or folders")->required();
    info->add_flag("--no-updates", options->noUpdates, "Leave the update files beside a cell");
    info->callback([&tool, options] { runInfo(tool, *options); });

    auto* dump = tool.command("dump", "Print the records of an ISO 8211 file as JSON lines");
    auto file = std::make_shared<std::string>();
    dump->add_option("file", *file, "Any ISO 8211 file")->required();
    dump->callback([&tool, file] { runDump(tool, *file); });

    auto* catalog = tool.command("catalog", "Write CATALOG.031 for the cells of a folder");
    auto folder = std::make_shared<std::string>();
    catalog->add_option("folder", *folder, "Folder of cells")->required();
    catalog->callback([&tool, folder] { runCatalog(tool, *folder); });
}

} // namespace kelvox
