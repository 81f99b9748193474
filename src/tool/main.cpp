// kelvox-tool: the headless companion for scripts and tests.

#include "tool/Command.h"

int main(int argc, char** argv)
{
    CLI::App app("Reads, checks, converts and draws what Kelvox works with.", "kelvox-tool");
    app.require_subcommand(1);
    app.set_version_flag("--version", KELVOX_VERSION);
    kelvox::Tool tool(app);
    kelvox::addGribCommand(tool);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const std::exception& error) {
        tool.fail(error.what());
    }
    return tool.exitCode();
}
