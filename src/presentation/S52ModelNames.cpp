// Whether the library and the program speak of the same names.

#include "presentation/ProgramNames.h"
#include "presentation/S52Model.h"
#include "presentation/TextFields.h"

#include <algorithm>
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

std::vector<S52UnknownName> S52Model::findUnknownNames() const
{
    NameCheck check(*this);
    for (const auto* table :
         {&m_s52LuptPlainAreasBoundariesDictionary, &m_s52LuptSymbolizedAreasBoundariesDictionary,
          &m_s52LuptLinesDictionary, &m_s52LuptSimplifiedPointsDictionary,
          &m_s52LuptPaperChartPointsDictionary})
        for (const auto& [acronym, entries] : *table)
            for (const auto& entry : entries)
                for (const std::string& instruction : entry->inst())
                    check.instruction(instruction, acronym);
    const std::string program = "program";
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
