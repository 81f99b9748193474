#include "presentation/S52Model.h"

#include "base/File.h"
#include "presentation/ProgramNames.h"
#include "presentation/TextFields.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kelvox {

namespace {
S52Model::Folders& sharedFolders()
{
    static S52Model::Folders folders;
    return folders;
}

template <typename Item> void setIdentification(Item& item, std::string_view body)
{
    item.modnString = part(body, 0, 2);
    item.rcidNumber = integerValue(part(body, 2, 5));
    item.statString = part(body, 7, 3);
}

/// Pivot, size and box corner: six numbers of five digits from position on.
void setGeometry(S52Item& item, std::string_view body, std::size_t position)
{
    for (int* number : {&item.clNumber, &item.rwNumber, &item.hlNumber, &item.vlNumber,
                        &item.xcNumber, &item.xrNumber}) {
        *number = integerValue(part(body, position, 5));
        position += 5;
    }
}

/// The tags of one kind of definition; the geometry begins at the position given.
struct DefinitionTags {
    std::string_view definition;
    std::string_view exposition;
    std::string_view colors;
    std::string_view vectors;
    std::size_t geometry;
};

constexpr DefinitionTags symbolTags{"SYMD", "SXPO", "SCRF", "SVCT", 9};
constexpr DefinitionTags lineStyleTags{"LIND", "LXPO", "LCRF", "LVCT", 8};
constexpr DefinitionTags patternTags{"PATD", "PXPO", "PCRF", "PVCT", 25};

/// Reads a module into an item and files it under its name; fields before the name still count.
template <typename Item, typename Items, typename OnName>
void processDefinition(const S52Module& module, const DefinitionTags& tags, Items& items,
                       OnName onName)
{
    Item item;
    setIdentification(item, module.moduleS52Field()->fieldValue());
    bool named = false;
    for (const S52Field& field : module.s52FieldsArray) {
        const std::string_view tag = field.fieldIdentification();
        const std::string_view body = field.fieldValue();
        if (tag == tags.definition) {
            item.nmString = part(body, 0, 8);
            item.dfString = part(body, 8, 1);
            setGeometry(item, body, tags.geometry);
            onName(item, body);
            named = true;
        } else if (tag == tags.exposition) {
            item.poString = body;
        } else if (tag == tags.colors) {
            item.setColorReference(body);
        } else if (tag == tags.vectors) {
            item.addVectorCommands(body);
        }
    }
    if (named)
        items.insert_or_assign(item.nmString, std::move(item));
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    for (;;) {
        const auto end = text.find("\r\n");
        lines.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return lines;
        text.remove_prefix(end + 2);
    }
}

/// The file of that name in the user's folder, else in the program's; empty when in neither.
std::filesystem::path findResource(const S52Model::Folders& folders, const char* name)
{
    for (const auto& folder : {folders.user, folders.application}) {
        std::error_code error;
        if (!folder.empty() && std::filesystem::is_regular_file(folder / name, error))
            return folder / name;
    }
    return {};
}
} // namespace

S52Model::S52Model(Folders folders)
    : m_folders(std::move(folders))
{
    loadPresentationLibrary();
}

S52Model& S52Model::s52()
{
    static S52Model model(sharedFolders());
    return model;
}

void S52Model::setFolders(Folders folders)
{
    sharedFolders() = std::move(folders);
}

void S52Model::loadPresentationLibrary()
{
    m_report = {};
    readCalibration();
    load(readPresentationLibrary());
}

void S52Model::loadPresentationLibrary(std::string_view library, std::string_view calibration)
{
    m_report = {};
    m_calibration.reset();
    if (!calibration.empty()) {
        auto parsed = MonitorCalibration::parse(calibration);
        if (parsed)
            m_calibration = std::move(*parsed);
        else
            m_report.problems.push_back(parsed.error());
    }
    load(linesOf(library));
}

void S52Model::readCalibration()
{
    m_calibration.reset();
    const auto path = findResource(m_folders, calibrationName);
    if (path.empty())
        return;
    const auto text = readFile(path);
    auto parsed = text ? MonitorCalibration::parse(*text)
                       : Result<MonitorCalibration>(tl::unexpected(text.error()));
    if (parsed) {
        m_calibration = std::move(*parsed);
        m_report.calibration = path;
    } else {
        parsed.error().message = path.string() + ": " + parsed.error().message;
        m_report.problems.push_back(parsed.error());
    }
}

std::vector<std::string> S52Model::readPresentationLibrary()
{
    const auto path = findResource(m_folders, libraryName);
    if (path.empty()) {
        m_report.problems.push_back(
            {Error::Code::CannotOpen,
             std::string("the presentation library ") + libraryName + " is in no resource folder"});
        return {};
    }
    const auto text = readFile(path);
    if (!text) {
        m_report.problems.push_back(text.error());
        return {};
    }
    m_report.library = path;
    m_report.isUsersOwn = !m_folders.user.empty() && path == m_folders.user / libraryName;
    return linesOf(*text);
}

void S52Model::load(const std::vector<std::string>& lines)
{
    m_s52ColsDictionary.clear();
    for (auto* table :
         {&m_s52LuptLinesDictionary, &m_s52LuptPaperChartPointsDictionary,
          &m_s52LuptSimplifiedPointsDictionary, &m_s52LuptPlainAreasBoundariesDictionary,
          &m_s52LuptSymbolizedAreasBoundariesDictionary})
        table->clear();
    m_s52LnstDictionary.clear();
    m_s52PattDictionary.clear();
    m_s52SymbDictionary.clear();
    createModules(lines);
    processModules();
    m_s52ModulesArray.clear();
    // Without a library one problem says it all.
    if (!m_s52SymbDictionary.empty() || !m_s52ColsDictionary.empty())
        m_report.unknownNames = findUnknownNames();
}

void S52Model::createModules(const std::vector<std::string>& lines)
{
    m_s52ModulesArray = S52Module::modules(lines);
}

void S52Model::processModules()
{
    for (const S52Module& module : m_s52ModulesArray) {
        const S52Field* first = module.moduleS52Field();
        const std::string_view tag = first ? first->fieldIdentification() : std::string_view();
        if (tag == "COLS")
            processColors(module);
        else if (tag == "LUPT")
            processLookUp(module);
        else if (tag == "PATT")
            processPattern(module);
        else if (tag == "SYMB")
            processSymbol(module);
        else if (tag == "LNST")
            processLineStyle(module);
    }
}

void S52Model::processColors(const S52Module& module)
{
    S52Cols table;
    const std::string_view head = module.moduleS52Field()->fieldValue();
    setIdentification(table, head);
    table.ctusString = part(head, 10);
    for (const S52Field& field : module.s52FieldsArray) {
        if (field.fieldIdentification() != "CCIE")
            continue;
        std::vector<std::string_view> parts;
        forEachPart(part(field.fieldValue(), 5), S52Field::unitSeparator,
                    [&](std::string_view text) { parts.push_back(text); });
        if (parts.size() < 4)
            continue;
        const CieColor cie{decimalValue(parts[0]), decimalValue(parts[1]), decimalValue(parts[2])};
        const std::string token(part(field.fieldValue(), 0, 5));
        table.ccieDictionary.insert_or_assign(token, S52Ccie{token, displayColor(cie)});
    }
    m_s52ColsDictionary.insert_or_assign(table.ctusString, std::move(table));
}

void S52Model::processLookUp(const S52Module& module)
{
    const auto entry = std::make_shared<S52Lupt>();
    const std::string_view head = module.moduleS52Field()->fieldValue();
    setIdentification(*entry, head);
    entry->obclString = part(head, 10, 6);
    entry->ftypString = part(head, 16, 1);
    entry->drpiNumber = integerValue(part(head, 17, 5));
    entry->rpriString = part(head, 22, 1);
    entry->tnamString = part(head, 23);
    for (const S52Field& field : module.s52FieldsArray) {
        const std::string_view tag = field.fieldIdentification();
        const std::string_view body = field.fieldValue();
        if (tag == "ATTC") {
            forEachPart(body, S52Field::unitSeparator,
                        [&](std::string_view text) { entry->attcArray.emplace_back(text); });
            // Filed once for each condition field: on purpose, also when there are two.
            if (S52LuptTable* table = luptTable(entry->tnamString))
                (*table)[entry->obclString].push_back(entry);
        } else if (tag == "INST" && body.size() >= 3) {
            forEachPart(body, ';',
                        [&](std::string_view text) { entry->instArray.emplace_back(text); });
        } else if (tag == "DISC") {
            entry->discString = body;
        } else if (tag == "LUCM") {
            entry->lucmString = body;
        }
    }
}

void S52Model::processSymbol(const S52Module& module)
{
    processDefinition<S52Symb>(module, symbolTags, m_s52SymbDictionary,
                               [](S52Symb&, std::string_view) {});
}

void S52Model::processLineStyle(const S52Module& module)
{
    processDefinition<S52Lnst>(module, lineStyleTags, m_s52LnstDictionary,
                               [](S52Lnst& item, std::string_view) { item.dfString = "V"; });
}

void S52Model::processPattern(const S52Module& module)
{
    processDefinition<S52Patt>(module, patternTags, m_s52PattDictionary,
                               [](S52Patt& item, std::string_view body) {
                                   item.patpString = part(body, 9, 3);
                                   item.paspString = part(body, 12, 3);
                                   item.pamiNumber = integerValue(part(body, 15, 5));
                                   item.pamaNumber = integerValue(part(body, 20, 5));
                               });
}

S52LuptTable* S52Model::luptTable(std::string_view name)
{
    if (name == "PLAIN_BOUNDARIES")
        return &m_s52LuptPlainAreasBoundariesDictionary;
    if (name == "SYMBOLIZED_BOUNDARIES")
        return &m_s52LuptSymbolizedAreasBoundariesDictionary;
    if (name == "LINES")
        return &m_s52LuptLinesDictionary;
    if (name == "SIMPLIFIED")
        return &m_s52LuptSimplifiedPointsDictionary;
    if (name == "PAPER_CHART")
        return &m_s52LuptPaperChartPointsDictionary;
    return nullptr;
}

void S52Model::setSymbols(bool symbolizedBoundaries, bool paperChartPoints)
{
    m_useSymbolizedAreaBoundaries = symbolizedBoundaries;
    m_usePaperChartSymbols = paperChartPoints;
}

const S52LuptTable& S52Model::luptForAreas() const
{
    return m_useSymbolizedAreaBoundaries ? m_s52LuptSymbolizedAreasBoundariesDictionary
                                         : m_s52LuptPlainAreasBoundariesDictionary;
}

const S52LuptTable& S52Model::luptForPoints() const
{
    return m_usePaperChartSymbols ? m_s52LuptPaperChartPointsDictionary
                                  : m_s52LuptSimplifiedPointsDictionary;
}

DisplayColor S52Model::displayColor(const CieColor& color) const
{
    return m_calibration ? m_calibration->color(color) : standardColor(color);
}

void S52Model::buildSymbolPaths(const S52CcieMap& colors)
{
    for (auto& [name, item] : m_s52SymbDictionary)
        item.processVct(colors);
    for (auto& [name, item] : m_s52LnstDictionary)
        item.processVct(colors);
}

void S52Model::resetS52Ccie()
{
    for (auto& [name, item] : m_s52SymbDictionary)
        item.s52Ccie.reset();
    for (auto& [name, item] : m_s52LnstDictionary)
        item.s52Ccie.reset();
    for (auto& [name, item] : m_s52PattDictionary)
        item.s52Ccie.reset();
}

} // namespace kelvox
