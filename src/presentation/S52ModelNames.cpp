// Whether the library and the program speak of the same names.

#include "presentation/CodeTables.h"
#include "presentation/ProgramNames.h"
#include "presentation/S52Lookup.h"
#include "presentation/S52Model.h"
#include "presentation/TextFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace kelvox {

namespace {
using Kind = S52UnknownName::Kind;

bool isIn(std::span<const std::string_view> names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

class NameCheck {
public:
    explicit NameCheck(const S52Model& model)
        : m_model(model)
    {
    }

    void instruction(std::string_view text, const std::string& usedBy)
    {
        const std::string_view prefix = part(text, 0, 2);
        const std::string_view name = part(text, 3, 8);
        if (prefix == "CS")
            need(isIn(conditionalProcedureNames(), name), Kind::Procedure, name, usedBy);
        else if (prefix == "SY")
            need(m_model.symb().contains(name), Kind::Symbol, name, usedBy);
        else if (prefix == "LC")
            need(m_model.lnst().contains(name), Kind::LineStyle, name, usedBy);
        else if (prefix == "AP")
            need(m_model.patt().contains(name), Kind::Pattern, name, usedBy);
        else if (prefix == "AC")
            color(part(text, 3, 5), usedBy);
        else if (prefix == "LS")
            color(part(text, text.find_last_of(',') + 1, 5), usedBy);
        else
            need(prefix == "TX" || prefix == "TE" || text.empty(), Kind::Instruction, prefix,
                 usedBy);
    }

    void condition(std::string_view text, const std::string& usedBy)
    {
        constexpr std::size_t acronymLength = 6;
        const std::string_view acronym = part(text, 0, acronymLength);
        need(text.empty() || attributeCode(acronym) != 0, Kind::Attribute, acronym, usedBy);
    }

    /// Both tables of one geometry speak of the same classes, or some vanish with a setting.
    void sameClasses(const S52LuptTable& one, const S52LuptTable& other, const std::string& name)
    {
        for (const auto& [acronym, entries] : one)
            need(other.contains(acronym), Kind::NoEntry, acronym, name);
    }

    void color(std::string_view token, const std::string& usedBy)
    {
        for (const auto& [name, table] : m_model.cols())
            need(table.ccie().contains(token), Kind::Color, token, usedBy);
    }

    void need(bool found, Kind kind, std::string_view name, const std::string& usedBy)
    {
        if (!found && m_seen.emplace(kind, name).second)
            m_unknown.push_back({kind, std::string(name), usedBy});
    }

    std::vector<S52UnknownName> take() { return std::move(m_unknown); }

private:
    const S52Model& m_model;
    std::set<std::pair<Kind, std::string>> m_seen;
    std::vector<S52UnknownName> m_unknown;
};
} // namespace

std::string S52UnknownName::sentence() const
{
    const bool byProgram = usedBy == "program";
    const auto of = [](std::string_view acronym) {
        const auto words = S57ObjectCatalogue::className(objectCode(acronym));
        return words.empty() ? std::string(acronym) : fmt::format("{} ({})", words, acronym);
    };
    const auto lacks = [&](std::string_view what) {
        return byProgram
            ? fmt::format("The library lacks the {} {}, which the program needs: what bears it is "
                          "not drawn.",
                          what, name)
            : fmt::format("{} names the {} {}, which the library does not have: it is not drawn.",
                          of(usedBy), what, name);
    };
    switch (kind) {
    case Kind::Procedure:
        return fmt::format("{} asks for the procedure {}, which the program does not have: what it "
                           "would decide on is not drawn.",
                           of(usedBy), name);
    case Kind::Symbol:
        return lacks("symbol");
    case Kind::LineStyle:
        return lacks("line style");
    case Kind::Pattern:
        return lacks("pattern");
    case Kind::Color:
        return lacks("colour");
    case Kind::ColorScheme:
        return fmt::format("The library lacks the colours of {}: nothing is drawn in them.", name);
    case Kind::Instruction:
        return fmt::format("{} uses the instruction {}, which the program does not have: it is "
                           "passed over.",
                           of(usedBy), name);
    case Kind::Attribute:
        return fmt::format("{} asks for the attribute {}, which the catalogue does not have: the "
                           "entry never applies.",
                           of(usedBy), name);
    case Kind::Class:
        return fmt::format("The library has entries for {}, which the program does not know: they "
                           "are never used.",
                           name);
    case Kind::NoEntry:
        return byProgram
            ? fmt::format("The library has no entry for {}: it is not drawn.", of(name))
            : fmt::format("The library has no entry for {} in the table {}: with it, it is not "
                          "drawn.",
                          of(name), usedBy);
    }
    return name;
}

std::vector<std::string> S52LoadReport::sentences() const
{
    std::vector<std::string> all;
    if (isUsersOwn)
        all.push_back(
            fmt::format("The charts are drawn by your own library, {}.", library.string()));
    for (const Error& problem : problems)
        all.push_back(problem.message);
    for (const S52UnknownName& unknown : unknownNames)
        all.push_back(unknown.sentence());
    return all;
}

std::vector<S52UnknownName> S52Model::findUnknownNames() const
{
    NameCheck check(*this);
    for (const auto* table :
         {&m_s52LuptPlainAreasBoundariesDictionary, &m_s52LuptSymbolizedAreasBoundariesDictionary,
          &m_s52LuptLinesDictionary, &m_s52LuptSimplifiedPointsDictionary,
          &m_s52LuptPaperChartPointsDictionary})
        for (const auto& [acronym, entries] : *table)
            for (const auto& entry : entries) {
                for (const std::string& instruction : entry->inst())
                    check.instruction(instruction, acronym);
                for (const std::string& condition : entry->attc())
                    check.condition(condition, acronym);
            }
    const std::string program = "program";
    const std::array tables{&m_s52LuptPlainAreasBoundariesDictionary,
                            &m_s52LuptSymbolizedAreasBoundariesDictionary,
                            &m_s52LuptLinesDictionary, &m_s52LuptSimplifiedPointsDictionary,
                            &m_s52LuptPaperChartPointsDictionary};
    for (const auto* table : tables)
        for (const auto& [acronym, entries] : *table)
            check.need(objectCode(acronym) != 0, Kind::Class, acronym, program);
    constexpr int classes = 160;
    for (int code = 1; code <= classes; ++code) {
        const std::string_view acronym = objectCodeAcronym(code);
        check.need(!S52Lookup::takesEntry(code)
                       || std::ranges::any_of(
                           tables, [&](const auto* table) { return table->contains(acronym); }),
                   Kind::NoEntry, acronym, program);
    }
    check.sameClasses(m_s52LuptSimplifiedPointsDictionary, m_s52LuptPaperChartPointsDictionary,
                      "PAPER_CHART");
    check.sameClasses(m_s52LuptPaperChartPointsDictionary, m_s52LuptSimplifiedPointsDictionary,
                      "SIMPLIFIED");
    check.sameClasses(m_s52LuptSymbolizedAreasBoundariesDictionary,
                      m_s52LuptPlainAreasBoundariesDictionary, "PLAIN_BOUNDARIES");
    for (const std::string_view name : colorTableNames())
        check.need(m_s52ColsDictionary.contains(name), Kind::ColorScheme, name, program);
    for (const std::string_view name : routineSymbolNames())
        check.need(m_s52SymbDictionary.contains(name), Kind::Symbol, name, program);
    for (const std::string_view name : routinePatternNames())
        check.need(m_s52PattDictionary.contains(name), Kind::Pattern, name, program);
    for (const std::string_view token : routineColorTokens())
        check.color(token, program);
    for (const auto& [name, item] : m_s52SymbDictionary)
        for (const auto& [letter, token] : item.crf())
            check.color(token, name);
    for (const auto& [name, item] : m_s52LnstDictionary)
        for (const auto& [letter, token] : item.crf())
            check.color(token, name);
    for (const auto& [name, item] : m_s52PattDictionary)
        for (const auto& [letter, token] : item.crf())
            check.color(token, name);
    return check.take();
}

} // namespace kelvox
