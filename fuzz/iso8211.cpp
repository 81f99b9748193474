// Any bytes as an ISO 8211 file: the record engine, every way of reading a value, the value tree.

#include "iso8211/ISOModule.h"
#include "iso8211/ISOTree.h"

#include <cstdlib>

using namespace kelvox;

namespace {
std::size_t bytesSeen = 0;

void readField(const ISORawField& field)
{
    auto left = field.data();
    bytesSeen += left.size();
    const auto& subfields = field.definition().subfields();
    const std::size_t rows = field.repeatCount();
    if (rows > 1 && rows > field.data().size())
        std::abort(); // rows out of nothing
    for (std::size_t row = 0; row < rows; ++row)
        for (const auto& subfield : subfields) {
            std::size_t consumed = 0;
            std::size_t same = 0;
            (void)subfield.extractInt(left, consumed);
            (void)subfield.extractFloat(left, same);
            if (consumed != same)
                std::abort(); // the way to the next value does not depend on how this one is read
            if (subfield.extractString(left, same).size() > left.size())
                std::abort();
            left = left.subspan(std::min(consumed, left.size()));
        }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ISOModule module;
    if (!module.openBytes({reinterpret_cast<const char*>(data), size}))
        return 0;
    bytesSeen = 0;
    std::size_t values = 0;
    while (const ISORawRecord* record = module.readRecord()) {
        for (const ISORawField& field : record->fields())
            readField(field);
        const ISORecord copy = ISORecord::copyOf(*record);
        if (copy.fields().size() != record->fields().size())
            std::abort();
        values += copy.fields().size();
    }
    if (bytesSeen > 2 * size || values > size)
        std::abort(); // the same bytes were read again and again
    return 0;
}
