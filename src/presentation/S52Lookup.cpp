#include "presentation/S52Lookup.h"

#include "presentation/CodeTables.h"
#include "s57/S57ObjectCatalogue.h"

#include <algorithm>
#include <array>

namespace kelvox {

namespace {
bool isDrawnByRoutine(int classCode)
{
    using namespace s57class;
    constexpr std::array codes{DEPARE, DEPCNT, LAKARE, LNDARE, SBDARE, SOUNDG, WATTUR, 300,
                               M_COVR, 304,    305,    306,    308,    309,    310,    312};
    return std::ranges::find(codes, classCode) != codes.end();
}

bool holds(std::string_view condition, const S57FeatureAttribute& attribute)
{
    const std::string_view value = attribute.stringValue();
    const std::string_view acronym = attributeCodeAcronym(attribute.code());
    if (value.empty() || acronym.size() + value.size() < condition.size())
        return false;
    const std::string_view front = condition.substr(0, acronym.size());
    return front == acronym.substr(0, front.size())
        && value.starts_with(condition.substr(front.size()));
}

const S52LuptTable* tableFor(int geometry, const S52Model& model)
{
    switch (geometry) {
    case S57Feature::point:
        return &model.luptForPoints();
    case S57Feature::line:
        return &model.luptForLines();
    case S57Feature::area:
        return &model.luptForAreas();
    default:
        return nullptr;
    }
}
} // namespace

bool S52Lookup::takesEntry(int classCode)
{
    return !S57ObjectCatalogue::renderableName(classCode).empty() && !isDrawnByRoutine(classCode);
}

void S52Lookup::setS52Lupts(const S57ChartItems& cell, const S52Model& model)
{
    for (const auto& feature : cell.s57Features())
        setS52LuptForFeature(*feature, model);
}

void S52Lookup::setS52LuptForFeature(S57Feature& feature, const S52Model& model)
{
    if (takesEntry(feature.objectCode()))
        feature.setS52Lupt(s52LuptForS57Feature(feature, model));
}

const S52Lupt* S52Lookup::s52LuptForS57Feature(const S57Feature& feature, const S52Model& model)
{
    const S52LuptTable* table = tableFor(feature.geometry(), model);
    if (!table)
        return nullptr;
    const auto entries = table->find(objectCodeAcronym(feature.objectCode()));
    if (entries == table->end() || entries->second.empty())
        return nullptr;
    const auto& list = entries->second;
    const auto last = std::find_if(list.rbegin(), list.rend(), [&](const auto& entry) {
        return s52LuptMatchesS57Feature(feature, *entry);
    });
    return last == list.rend() ? list.front().get() : last->get();
}

bool S52Lookup::s52LuptMatchesS57Feature(const S57Feature& feature, const S52Lupt& entry)
{
    const auto attributes = feature.s57FeatureAttributes();
    if (attributes.empty() || entry.attc().empty())
        return false;
    return std::ranges::all_of(entry.attc(), [&](const std::string& condition) {
        return !condition.empty()
            && std::ranges::any_of(attributes, [&](const S57FeatureAttribute& attribute) {
                   return holds(condition, attribute);
               });
    });
}

} // namespace kelvox
