#include "preslib/Source.h"

#include "base/File.h"
#include "preslib/Check.h"
#include "preslib/DrawingReader.h"

#include <algorithm>

namespace kelvox::preslib {

namespace {
std::vector<std::filesystem::path> textFiles(const std::filesystem::path& folder,
                                             Diagnostics& diagnostics)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".txt")
            files.push_back(entry.path());
    if (files.empty())
        diagnostics.add({folder, 0}, "no source files here");
    std::ranges::sort(files);
    return files;
}

template <typename Use>
void readText(const std::filesystem::path& file, Diagnostics& diagnostics, Use use)
{
    if (const auto text = readFile(file))
        use(*text);
    else
        diagnostics.add({file, 0}, text.error().message);
}
} // namespace

Source readSource(const std::filesystem::path& folder)
{
    Source source;
    Library& library = source.library;
    Diagnostics& diagnostics = source.diagnostics;
    const auto colors = folder / "colours.txt";
    readText(colors, diagnostics,
             [&](const std::string& text) { readColors(colors, text, library, diagnostics); });
    const auto monitor = folder / "monitor.txt";
    readText(monitor, diagnostics, [&](const std::string& text) {
        source.monitor = readMonitor(monitor, text, diagnostics);
    });
    for (const auto& file : textFiles(folder / "lookups", diagnostics))
        readText(file, diagnostics,
                 [&](const std::string& text) { readLookUps(file, text, library, diagnostics); });
    DrawingReader drawings(library, diagnostics);
    for (const auto& file : textFiles(folder / "drawings", diagnostics))
        readText(file, diagnostics, [&](const std::string& text) { drawings.read(file, text); });
    check(library, diagnostics);
    checkComplete(library, {folder, 0}, diagnostics);
    return source;
}

} // namespace kelvox::preslib
