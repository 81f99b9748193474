// Tables of texts are files that anybody may edit.

#include "base/StringCatalog.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    const auto strings = parseStrings({reinterpret_cast<const char*>(data), size});
    if (strings)
        for (const auto& [key, text] : strings->texts())
            (void)strings->text(key, {"a", "b{0}"}).size();
    return 0;
}
