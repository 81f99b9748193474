#include "exchange/ExchangeFile.h"
#include "tool/Command.h"

#include <memory>

namespace kelvox {

namespace {
struct Arguments {
    std::string in, out;
    bool waypoints = false, routes = false, tracks = false;
};

void convert(Tool& tool, const Arguments& arguments)
{
    const bool all = !arguments.waypoints && !arguments.routes && !arguments.tracks;
    const ExchangeKinds kinds{.waypoints = all || arguments.waypoints,
                              .routes = all || arguments.routes,
                              .tracks = all || arguments.tracks};
    ExchangeRecords records;
    const auto read = readExchangeFile(arguments.in, kinds, records);
    if (!read)
        tool.fail(arguments.in + ": " + read.error().message);
    if (!read && read.error().code != Error::Code::BadSyntax)
        return;
    // What was complete before a fault is written all the same.
    if (const auto written = writeExchangeFile(arguments.out, kinds, records); !written)
        tool.fail(arguments.out + ": " + written.error().message);
}
} // namespace

void addConvertCommand(Tool& tool)
{
    const auto arguments = std::make_shared<Arguments>();
    auto* command = tool.command("convert",
                                 "Waypoints, routes and tracks from one file format "
                                 "into another: GPX, KML, KMZ (read only), CSV");
    command->add_option("IN", arguments->in, "file to read")->required();
    command->add_option("OUT", arguments->out, "file to write, its format by its extension")
        ->required();
    command->add_flag("--waypoints", arguments->waypoints, "only these; several options add up");
    command->add_flag("--routes", arguments->routes, "only these");
    command->add_flag("--tracks", arguments->tracks, "only these");
    command->footer("Positions, dates and names stay as they stand in the file. A CSV file holds "
                    "one kind: waypoints where there are any, else routes, else tracks. Lines of a "
                    "KML file are tracks unless only --routes is asked for.");
    command->callback([&tool, arguments] { convert(tool, *arguments); });
}

} // namespace kelvox
