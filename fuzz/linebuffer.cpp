// Framing: whatever bytes come in whatever portions, every byte comes out once and in order, in
// lines that end at the terminator or are full.

#include "connections/LineBuffer.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t longest = 1 + data[0];
    const std::size_t portion = 1 + data[1];
    const std::string_view input(reinterpret_cast<const char*>(data) + 2, size - 2);
    kelvox::LineBuffer lines(longest);
    std::string output;
    for (std::size_t at = 0; at < input.size(); at += portion) {
        lines.append(input.substr(at, portion));
        while (const auto line = lines.next()) {
            const auto end = line->find('\n');
            const bool ends = end == line->size() - 1;
            const bool full = end == line->npos && line->size() == longest;
            if (line->empty() || !(ends || full))
                std::abort();
            output += *line;
        }
        if (lines.pending() >= longest)
            std::abort();
    }
    output += lines.takeRest();
    if (output != input)
        std::abort();
    return 0;
}
