#include "s57/S57CellLoader.h"

#include "iso8211/ISOModule.h"
#include "iso8211/ISONumbers.h"
#include "s57/ISO8211Wrap.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvox {

namespace {
struct Identification {
    std::string edition;
    int update = 0;
};

/// What a file says of itself, without reading on.
Result<Identification> identify(const std::filesystem::path& path)
{
    ISOModule module;
    if (auto opened = module.open(path); !opened)
        return tl::unexpected(opened.error());
    const ISORawRecord* record = module.readRecord();
    for (; record; record = module.readRecord()) {
        for (const ISORawField& field : record->fields()) {
            if (field.definition().tag() != "DSID")
                continue;
            Identification found;
            auto left = field.data();
            for (const auto& subfield : field.definition().subfields()) {
                std::size_t consumed = 0;
                const auto text = subfield.extractString(left, consumed);
                if (subfield.label() == "EDTN")
                    found.edition = text;
                else if (subfield.label() == "UPDN")
                    found.update = static_cast<int>(isoDecimal(text));
                left = left.subspan(std::min(consumed, left.size()));
            }
            return found;
        }
    }
    return failure(Error::Code::BadSyntax, "no data set identification");
}

Error about(const std::filesystem::path& path, const Error& error)
{
    Error named = error;
    if (named.message.find(path.filename().string()) == std::string::npos)
        named.message = path.string() + ": " + named.message;
    return named;
}

/// Applies the chain of updates beside the base cell.
void applyUpdates(const std::shared_ptr<const S57CatalogRecord>& base,
                  S57CellLoader::Loaded& loaded)
{
    S57ChartItems& cell = *loaded.cell;
    const auto stop = [&](const std::filesystem::path& path, std::string why) {
        loaded.notes.push_back({Error::Code::OutOfRange, path.string() + ": " + std::move(why), 0});
    };
    int last = static_cast<int>(isoDecimal(cell.parameters().update));
    for (int n = 1; n <= S57CellLoader::maximumUpdate; ++n) {
        auto path = base->path;
        path.replace_extension(fmt::format(".{:03}", n));
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored))
            return;
        const auto identification = identify(path);
        if (!identification) {
            loaded.notes.push_back(about(path, identification.error()));
            return;
        }
        if (identification->update <= last)
            continue;
        if (identification->edition != cell.parameters().edition)
            return stop(path,
                        fmt::format("updates edition {}, the cell is of edition {}",
                                    identification->edition, cell.parameters().edition));
        if (identification->update != last + 1)
            return stop(
                path,
                fmt::format("update {} does not follow update {}", identification->update, last));
        S57CatalogRecord record;
        record.path = path;
        const auto note = ISO8211Wrap::load(base, record, cell);
        if (!note) {
            loaded.notes.push_back(about(path, note.error()));
            return;
        }
        ++loaded.updatesApplied;
        last = identification->update;
        if (note->stoppedBy) {
            loaded.notes.push_back(about(path, *note->stoppedBy));
            return;
        }
    }
}

/// A file whose first record opens but that holds nothing of a chart is no cell.
bool holdsNothing(const S57ChartItems& cell)
{
    return cell.s57Features().empty() && cell.s57VectorCount() == 0
        && cell.parameters().coordinateMultiplier == 0 && cell.parameters().edition.empty();
}
} // namespace

Result<S57CellLoader::Loaded> S57CellLoader::load(const std::filesystem::path& path,
                                                  Updates updates)
{
    auto record = std::make_shared<S57CatalogRecord>();
    record->path = path;
    record->format = "BIN";
    record->binaryPrimary = true;

    Loaded loaded;
    loaded.cell = std::make_shared<S57ChartItems>();
    const auto note = ISO8211Wrap::load(record, *record, *loaded.cell);
    if (!note)
        return tl::unexpected(about(path, note.error()));
    if (note->stoppedBy)
        loaded.notes.push_back(about(path, *note->stoppedBy));
    if (holdsNothing(*loaded.cell))
        return failure(Error::Code::BadSyntax,
                       loaded.notes.empty() ? path.string() + ": holds no chart data"
                                            : loaded.notes.front().message);
    if (updates == Updates::Apply)
        applyUpdates(record, loaded);
    loaded.cell->assemble();

    const Rect bounds = loaded.cell->bounds();
    if (!bounds.isEmpty()) {
        record->westLongitude = bounds.left;
        record->southLatitude = bounds.bottom;
        record->eastLongitude = bounds.right;
        record->northLatitude = bounds.top;
    }
    loaded.cell->setS57CatalogRecord(record);
    return loaded;
}

Result<S57CellLoader::Loaded> S57CellLoader::loadBytes(std::span<const char> bytes)
{
    Loaded loaded;
    loaded.cell = std::make_shared<S57ChartItems>();
    const auto note = ISO8211Wrap::load(std::make_shared<S57CatalogRecord>(), bytes, *loaded.cell);
    if (!note)
        return tl::unexpected(note.error());
    if (note->stoppedBy)
        loaded.notes.push_back(*note->stoppedBy);
    loaded.cell->assemble();
    return loaded;
}

std::vector<std::filesystem::path>
S57CellLoader::findCells(const std::vector<std::filesystem::path>& filesAndFolders,
                         std::vector<Error>& problems)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> cells;
    for (const auto& named : filesAndFolders) {
        std::error_code error;
        if (fs::is_directory(named, error)) {
            const auto options = fs::directory_options::skip_permission_denied;
            for (fs::recursive_directory_iterator it(named, options, error), end;
                 !error && it != end; it.increment(error))
                if (it->path().extension() == ".000" && it->is_regular_file(error))
                    cells.push_back(it->path());
            if (error)
                problems.push_back(
                    {Error::Code::CannotOpen, named.string() + ": " + error.message(), 0});
        } else if (named.filename() == "CATALOG.031") {
            ISO8211Wrap::Catalog catalog;
            if (auto read = ISO8211Wrap::load(named, catalog); !read)
                problems.push_back(about(named, read.error()));
            for (const auto& record : catalog)
                if (record->binaryPrimary)
                    cells.push_back(record->path);
        } else {
            cells.push_back(named);
        }
    }
    std::sort(cells.begin(), cells.end());
    cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
    return cells;
}

} // namespace kelvox
