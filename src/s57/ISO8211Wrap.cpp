#include "s57/ISO8211Wrap.h"

#include "iso8211/ISOWriter.h"
#include "s57/S57CellLoader.h"
#include "s57/S57RecordReader.h"

#include <fmt/format.h>

#include <array>
#include <fstream>

namespace kelvox {

namespace {
Result<ISO8211Wrap::LoadNote> readInto(ISOModule& module,
                                       const std::shared_ptr<const S57CatalogRecord>& base,
                                       S57ChartItems& cell)
{
    S57RecordReader reader(module, base, cell);
    while (const ISORawRecord* record = module.readRecord())
        reader.read(*record);
    reader.finish();
    ISO8211Wrap::LoadNote note;
    if (const Error* error = module.lastError())
        note.stoppedBy = *error;
    return note;
}

/// The catalogue's folder and the components of a name written with backslashes.
std::filesystem::path resolve(const std::filesystem::path& folder, std::string_view name)
{
    auto path = folder;
    while (!name.empty()) {
        const auto part = name.substr(0, name.find('\\'));
        name.remove_prefix(std::min(part.size() + 1, name.size()));
        path /= std::filesystem::path(part).relative_path();
    }
    return path;
}

std::shared_ptr<S57CatalogRecord> catalogRecordOf(const ISORawField& field,
                                                  const std::filesystem::path& folder)
{
    auto record = std::make_shared<S57CatalogRecord>();
    auto left = field.data();
    for (const auto& subfield : field.definition().subfields()) {
        std::size_t consumed = 0;
        const std::string& label = subfield.label();
        if (subfield.dataType() == ISODataType::Float) {
            const double degrees = subfield.extractFloat(left, consumed);
            if (label == "SLAT")
                record->southLatitude = degrees;
            else if (label == "NLAT")
                record->northLatitude = degrees;
            else if (label == "WLON")
                record->westLongitude = degrees;
            else if (label == "ELON")
                record->eastLongitude = degrees;
        } else {
            std::string_view text = subfield.extractString(left, consumed);
            text = text.substr(0, text.find('\0'));
            if (label == "FILE")
                record->path = resolve(folder, text);
            else if (label == "LFIL")
                record->description = text;
            else if (label == "IMPL")
                record->format = text;
            else if (label == "COMT")
                record->comment = text;
        }
        left = left.subspan(std::min(consumed, left.size()));
    }
    record->binaryPrimary = record->path.extension() == ".000";
    return record;
}

ISOWriter catalogWriter()
{
    ISOFieldDefinition control("0000", "", "0001CATD", 0, 0, "");
    ISOFieldDefinition identifier("0001", "ISO 8211 Record Identifier", "", 0, 5, "(b12)");
    ISOFieldDefinition directory("CATD", "Catalogue Directory Field", "", 1, 6, "");
    for (const auto& [label, format] : std::array<std::pair<const char*, const char*>, 8>{{
             {"RCNM", "A"},
             {"RCID", "I"},
             {"FILE", "A"},
             {"IMPL", "A"},
             {"SLAT", "R"},
             {"WLON", "R"},
             {"NLAT", "R"},
             {"ELON", "R"},
         }})
        directory.addSubfield(label, format);
    return {ISOLeader{}, {std::move(control), std::move(identifier), std::move(directory)}};
}

Result<void> writeCatalogEntry(ISOWriter& writer, int number, const std::string& name,
                               const S57CatalogRecord& record)
{
    ISOWriteRecord entry;
    entry.addField(*writer.definition("0001"));
    entry.setBytes("0001", 0,
                   {static_cast<char>(number), static_cast<char>(number >> 8), isoFieldTerminator});
    entry.addField(*writer.definition("CATD"));
    entry.setString("CATD", 0, "RCNM", 0, "CD");
    entry.setInt("CATD", 0, "RCID", 0, number);
    entry.setString("CATD", 0, "FILE", 0, name);
    entry.setString("CATD", 0, "IMPL", 0, "BIN");
    entry.setFloat("CATD", 0, "SLAT", 0, record.southLatitude);
    entry.setFloat("CATD", 0, "WLON", 0, record.westLongitude);
    entry.setFloat("CATD", 0, "NLAT", 0, record.northLatitude);
    entry.setFloat("CATD", 0, "ELON", 0, record.eastLongitude);
    return writer.write(entry);
}
} // namespace

bool ISO8211Wrap::isS57Cell(const std::filesystem::path& path)
{
    std::array<char, 16> head{};
    std::ifstream file(path, std::ios::binary);
    if (!file.read(head.data(), head.size()))
        return false;
    return head[5] >= '1' && head[5] <= '3' && head[6] == 'L' && (head[8] == '1' || head[8] == ' ');
}

Result<ISOFile> ISO8211Wrap::pathToISOFile(const std::filesystem::path& path)
{
    return ISOFile::read(path);
}

Result<ISOFile> ISO8211Wrap::loadFromPath(const std::filesystem::path& path)
{
    return pathToISOFile(path);
}

Result<ISOFile> ISO8211Wrap::load(const S57CatalogRecord& record)
{
    return pathToISOFile(record.path);
}

Result<ISO8211Wrap::LoadNote> ISO8211Wrap::load(const std::shared_ptr<const S57CatalogRecord>& base,
                                                const S57CatalogRecord& file, S57ChartItems& cell)
{
    ISOModule module;
    if (auto opened = module.open(file.path); !opened)
        return tl::unexpected(opened.error());
    return readInto(module, base, cell);
}

Result<ISO8211Wrap::LoadNote> ISO8211Wrap::load(const std::shared_ptr<const S57CatalogRecord>& base,
                                                std::span<const char> bytes, S57ChartItems& cell)
{
    ISOModule module;
    if (auto opened = module.openBytes(bytes); !opened)
        return tl::unexpected(opened.error());
    return readInto(module, base, cell);
}

Result<void> ISO8211Wrap::load(const std::filesystem::path& catalog, Catalog& into)
{
    ISOModule module;
    if (auto opened = module.open(catalog); !opened)
        return opened;
    const std::size_t before = into.size();
    while (const ISORawRecord* record = module.readRecord()) {
        for (const ISORawField& field : record->fields()) {
            if (field.definition().tag() != "CATD")
                continue;
            auto entry = catalogRecordOf(field, catalog.parent_path());
            std::error_code ignored;
            if (entry->validCell() && entry->format == "BIN"
                && std::filesystem::exists(entry->path, ignored))
                into.push_back(std::move(entry));
        }
    }
    if (into.size() > before)
        return {};
    return failure(Error::Code::BadSyntax, catalog.string() + ": lists no cell that is there");
}

Result<std::vector<Error>> ISO8211Wrap::save(const std::filesystem::path& catalog, Catalog& into)
{
    const auto folder = catalog.parent_path();
    std::error_code error;
    std::vector<std::filesystem::path> cells;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".000")
            cells.push_back(entry.path());
    if (error)
        return failure(Error::Code::CannotOpen, folder.string() + ": " + error.message());
    std::sort(cells.begin(), cells.end());

    ISOWriter writer = catalogWriter();
    std::vector<Error> leftOut;
    int number = 0;
    for (const auto& path : cells) {
        auto loaded = S57CellLoader::load(path, S57CellLoader::Updates::Apply);
        if (!loaded) {
            leftOut.push_back(loaded.error());
            continue;
        }
        auto record = std::make_shared<S57CatalogRecord>(*loaded->cell->s57CatalogRecord());
        into.push_back(record);
        for (int n = 0; n <= S57CellLoader::maximumUpdate; ++n) {
            const std::string name = fmt::format("{}.{:03}", path.stem().string(), n);
            if (!std::filesystem::exists(folder / name, error))
                break;
            if (auto written = writeCatalogEntry(writer, ++number, name, *record); !written)
                return tl::unexpected(written.error());
        }
    }
    if (auto saved = writer.save(catalog); !saved)
        return tl::unexpected(saved.error());
    return leftOut;
}

} // namespace kelvox
