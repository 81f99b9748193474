// The readable source: the first byte chooses the kind of file.

#include "preslib/Check.h"
#include "preslib/DrawingReader.h"
#include "preslib/Writer.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox::preslib;

    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    Library library;
    Diagnostics diagnostics;
    switch (data[0] % 4) {
    case 0:
        readColors("colours.txt", text, library, diagnostics);
        break;
    case 1:
        readLookUps("lookups.txt", text, library, diagnostics);
        break;
    case 2:
        static_cast<void>(readMonitor("monitor.txt", text, diagnostics));
        break;
    default:
        DrawingReader(library, diagnostics).read("drawings.txt", text);
    }
    check(library, diagnostics);
    if (diagnostics.isEmpty())
        static_cast<void>(exchangeForm(library));
    return 0;
}
