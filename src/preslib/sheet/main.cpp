// preslib-sheet: contact sheets of a presentation library, to be looked at.

#include "preslib/sheet/ContactSheet.h"

#include <QGuiApplication>

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv)
{
    CLI::App app("Draws all symbols, line styles and patterns with their names.", "preslib-sheet");
    std::string source;
    std::string target = ".";
    app.add_option("library", source, "folder that holds PresLib_e4.0.3.dai and CIE2RGB.ini")
        ->required();
    app.add_option("-o,--output", target, "folder that the pages are written to");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication qt(argc, argv);

    kelvox::S52Model model({source, {}});
    for (const auto& problem : model.report().problems)
        std::fprintf(stderr, "preslib-sheet: %s\n", problem.message.c_str());
    if (model.symb().empty())
        return 1;
    std::error_code error;
    std::filesystem::create_directories(target, error);
    const kelvox::preslib::ContactSheet sheet(model);
    for (const auto& [stem, page] : sheet.pages()) {
        const std::string file = (std::filesystem::path(target) / (stem + ".png")).string();
        if (!page.save(QString::fromStdString(file), "PNG", 0)) {
            std::fprintf(stderr, "preslib-sheet: cannot write %s\n", file.c_str());
            return 1;
        }
    }
    return 0;
}
