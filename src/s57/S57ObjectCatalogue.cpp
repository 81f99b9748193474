#include "s57/S57ObjectCatalogue.h"

#include "s57/S57ChartItems.h"
#include "s57/S57Object.h"
#include "s57/S57ObjectCatalogueTables.h"

#include <algorithm>
#include <charconv>

namespace kelvox {

namespace {
template <typename Table> const typename Table::value_type* findCode(const Table& table, int code)
{
    const auto it = std::lower_bound(table.begin(), table.end(), code,
                                     [](const auto& row, int wanted) { return row.code < wanted; });
    return it != table.end() && it->code == code ? &*it : nullptr;
}
} // namespace

std::string_view S57ObjectCatalogue::renderableName(int classCode)
{
    const auto* row = findCode(s57tables::classes, classCode);
    return row && row->shown ? row->name : std::string_view();
}

std::string_view S57ObjectCatalogue::classAcronym(int classCode)
{
    const auto* row = findCode(s57tables::classes, classCode);
    return row ? row->acronym : std::string_view();
}

std::string_view S57ObjectCatalogue::className(int classCode)
{
    const auto* row = findCode(s57tables::classes, classCode);
    return row ? row->name : std::string_view();
}

std::string_view S57ObjectCatalogue::attributeAcronym(int attributeCode)
{
    const auto* row = findCode(s57tables::attributes, attributeCode);
    return row ? row->acronym : std::string_view();
}

std::string_view S57ObjectCatalogue::attributeName(int attributeCode)
{
    const auto* row = findCode(s57tables::attributes, attributeCode);
    return row ? row->name : std::string_view();
}

std::string_view S57ObjectCatalogue::valueMeaning(int attributeCode, int value)
{
    const auto& table = s57tables::values;
    const auto before = [](const auto& row, std::pair<int, int> wanted) {
        return std::pair<int, int>(row.attribute, row.value) < wanted;
    };
    const auto it =
        std::lower_bound(table.begin(), table.end(), std::pair(attributeCode, value), before);
    return it != table.end() && it->attribute == attributeCode && it->value == value
        ? it->meaning
        : std::string_view();
}

std::string S57ObjectCatalogue::readableValue(int attributeCode, std::string_view value)
{
    const auto* row = findCode(s57tables::attributes, attributeCode);
    if (!row || (row->type != 'E' && row->type != 'L'))
        return std::string(value);
    std::string words;
    while (!value.empty()) {
        const auto part = value.substr(0, value.find(','));
        value.remove_prefix(std::min(part.size() + 1, value.size()));
        int number = -1;
        std::from_chars(part.data(), part.data() + part.size(), number);
        const auto meaning = valueMeaning(attributeCode, number);
        if (!words.empty())
            words += ", ";
        words += meaning.empty() ? part : meaning;
    }
    return words;
}

void S57ObjectCatalogue::s57ObjectCreateForFeature(S57Feature& feature, S57ChartItems& cell)
{
    feature.setS57Object(&cell.newObject(feature));
}

} // namespace kelvox
