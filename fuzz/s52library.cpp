// The presentation library and the calibration file, cut at the first NUL, from memory.

#include "presentation/S52Model.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;

    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto cut = text.find('\0');
    S52Model model;
    model.loadPresentationLibrary(text.substr(0, cut),
                                  cut == std::string_view::npos ? std::string_view()
                                                                : text.substr(cut + 1));
    S52CcieMap colors{{"CHRED", {"CHRED", {}}}};
    for (const auto& [name, table] : model.cols())
        colors.insert(table.ccie().begin(), table.ccie().end());
    model.buildSymbolPaths(colors);
    for (auto& [name, pattern] : model.patt())
        pattern.processVct(colors);
    return 0;
}
