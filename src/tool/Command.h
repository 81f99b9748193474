#pragma once

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

namespace kelvox {

/// What the commands of kelvox-tool share. Exit codes: 0 success, 1 failure with one line on
/// standard error that names the file and the reason, 2 wrong usage.
class Tool {
public:
    explicit Tool(CLI::App& app)
        : m_app(app)
    {
    }
    /// Declares a command; its callback runs after the command line was read.
    CLI::App* command(const std::string& name, const std::string& description)
    {
        return m_app.add_subcommand(name, description);
    }
    /// Reports a failure in one line; the tool will end with 1, other files are still worked on.
    void fail(const std::string& message)
    {
        std::fflush(stdout);
        std::fprintf(stderr, "kelvox-tool: %s\n", message.c_str());
        m_exitCode = 1;
    }
    void setExitCode(int code) { m_exitCode = code; }
    [[nodiscard]] int exitCode() const { return m_exitCode; }

private:
    CLI::App& m_app;
    int m_exitCode = 0;
};

// One per file <Name>Command.cpp: declares the command and what it does.

// One function for each file <Name>Command.cpp: declares its commands and says what they do.
void addAISCommand(Tool& tool);
void addConvertCommand(Tool& tool);
void addDeviceCommand(Tool& tool);
void addGribCommand(Tool& tool);
void addInfoCommand(Tool& tool);
void addNavigationCommand(Tool& tool);
void addNmeaCommand(Tool& tool);
void addPickCommand(Tool& tool);
void addRasterCommand(Tool& tool);
void addSimulateCommand(Tool& tool);

} // namespace kelvox
