// preslib: compiles the readable presentation library into the files that the program loads.

#include "base/File.h"
#include "presentation/S52Model.h"
#include "preslib/Source.h"
#include "preslib/Writer.h"

#include <CLI/CLI.hpp>

#include <cstdio>

int main(int argc, char** argv)
{
    using namespace kelvox;

    CLI::App app("Compiles the readable presentation library into the form that Kelvox loads.",
                 "preslib");
    std::string source;
    std::string target;
    app.add_option("source", source, "folder with the readable source")->required();
    app.add_option("-o,--output", target, "folder that the files are written to")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    const preslib::Source read = preslib::readSource(source);
    for (const std::string& message : read.diagnostics.messages())
        std::fprintf(stderr, "%s\n", message.c_str());
    if (!read.diagnostics.isEmpty())
        return 1;
    const std::filesystem::path folder = target;
    for (const auto& [name, bytes] :
         {std::pair{S52Model::libraryName, preslib::exchangeForm(read.library)},
          std::pair{S52Model::calibrationName, preslib::calibrationFile(read.monitor)}}) {
        if (const auto written = writeFileAtomically(folder / name, bytes); !written) {
            std::fprintf(stderr, "preslib: %s\n", written.error().message.c_str());
            return 1;
        }
    }
    return 0;
}
