// kelvox-tool: the headless companion for scripts and tests.

#include "base/Folders.h"
#include "tool/Command.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace {
/// Drawing needs a graphics library, so it lives in a program of its own beside this one.
int render(char** arguments)
{
    const auto program = kelvox::folders::program() / "kelvox-render";
    ::execv(program.c_str(), arguments);
    std::fprintf(stderr, "kelvox-tool: %s: %s\n", program.c_str(), std::strerror(errno));
    return 1;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::string_view(argv[1]) == "render")
        return render(argv + 1);

    CLI::App app("Reads, checks, converts and draws what Kelvox works with.", "kelvox-tool");
    app.require_subcommand(1);
    app.set_version_flag("--version", KELVOX_VERSION);
    kelvox::Tool tool(app);
    kelvox::addAISCommand(tool);
    kelvox::addConvertCommand(tool);
    kelvox::addDeviceCommand(tool);
    kelvox::addGribCommand(tool);
    kelvox::addInfoCommand(tool);
    kelvox::addNavigationCommand(tool);
    kelvox::addNmeaCommand(tool);
    kelvox::addPickCommand(tool);
    kelvox::addRasterCommand(tool);
    kelvox::addSimulateCommand(tool);
    tool.command("render", "Draw charts into a PNG");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const std::exception& error) {
        tool.fail(error.what());
    }
    return tool.exitCode();
}
