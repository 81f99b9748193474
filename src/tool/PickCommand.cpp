// pick: what the chart shows at a place, as a click on it would tell.

#include "base/Folders.h"
#include "presentation/ChartPick.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "tool/Command.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <memory>

namespace kelvox {

namespace {
using Json = nlohmann::ordered_json;

struct PickOptions {
    std::string at;
    int scale = 20'000;
    bool noUpdates = false;
    std::vector<std::string> paths;
};

std::optional<Position> parsePosition(const std::string& text)
{
    Position position;
    char end = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf%c", &position.latitude, &position.longitude, &end) != 2)
        return std::nullopt;
    const bool onEarth = std::abs(position.latitude) < 85 && std::abs(position.longitude) <= 360;
    return onEarth ? std::optional(position) : std::nullopt;
}

std::vector<std::shared_ptr<const CellGeometry>> loadCells(Tool& tool, const PickOptions& options)
{
    using Updates = S57CellLoader::Updates;
    std::vector<Error> problems;
    std::vector<std::shared_ptr<const CellGeometry>> cells;
    const std::vector<std::filesystem::path> named(options.paths.begin(), options.paths.end());
    for (const auto& path : S57CellLoader::findCells(named, problems)) {
        auto loaded =
            S57CellLoader::load(path, options.noUpdates ? Updates::Leave : Updates::Apply);
        if (loaded)
            cells.push_back(std::make_shared<CellGeometry>(std::move(loaded->cell)));
        else
            problems.push_back(loaded.error());
    }
    for (const auto& problem : problems)
        tool.fail(problem.message);
    std::ranges::stable_sort(cells, {}, [](const auto& geometry) {
        return geometry->cell().parameters().compiledScale;
    });
    return cells;
}

Json json(const ChartPick::Hit& hit, const RenderSettings& settings)
{
    const auto description = ChartPick::describe(hit, settings);
    constexpr std::array kinds{"mark", "line", "area", "information"};
    Json object;
    object["class"] = description.acronym;
    object["className"] = description.className;
    object["title"] = description.title;
    object["kind"] = kinds[static_cast<std::size_t>(hit.kind)];
    if (description.position)
        object["position"] = {description.position->latitude, description.position->longitude};
    if (!description.carrier.empty())
        object["on"] = description.carrier;
    object["attributes"] = Json::array();
    for (const auto& attribute : description.attributes)
        object["attributes"].push_back({{"acronym", attribute.acronym},
                                        {"name", attribute.name},
                                        {"value", attribute.value},
                                        {"words", attribute.words}});
    if (!description.information.empty())
        object["information"] = description.information;
    for (const auto& file : description.textFiles) {
        Json entry{{"name", file.name}};
        if (const auto text = ChartPick::read(file))
            entry["text"] = *text;
        else
            entry["missing"] = text.error().message;
        object["textFiles"].push_back(std::move(entry));
    }
    object["cell"] = description.cell;
    object["edition"] = description.edition;
    object["update"] = description.update;
    object["issueDate"] = description.issueDate;
    object["compiledScale"] = description.compiledScale;
    return object;
}

void runPick(Tool& tool, const PickOptions& options)
{
    const auto place = parsePosition(options.at);
    if (!place) {
        tool.fail(options.at + " is no place: LAT,LON in degrees");
        tool.setExitCode(2);
        return;
    }
    const auto cells = loadCells(tool, options);
    S52Model library({folders::applicationResources(), folders::userData()});
    const S52Render presentation(library);
    const auto portrayal = presentation.portrayal();
    if (portrayal->symbols.empty()) {
        tool.fail("the presentation library is missing");
        return;
    }
    for (const auto& geometry : cells)
        S52Lookup::setS52Lupts(geometry->cell(), library);
    const RenderSettings settings;
    const ViewFrame frame =
        ViewFrame::at(*place, options.scale, 0, 800, 600, 1, S57Controller::maximumDpi);
    for (const auto& hit : ChartPick::at(cells, *portrayal, settings, frame, {400, 300}))
        std::printf("%s\n",
                    json(hit, settings).dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
}
} // namespace

void addPickCommand(Tool& tool)
{
    auto* pick =
        tool.command("pick", "Tell what the charts show at a place, one JSON object per line");
    auto options = std::make_shared<PickOptions>();
    pick->add_option("--at", options->at, "LAT,LON in degrees")->required();
    pick->add_option("--scale", options->scale, "Scale denominator of the chart clicked on")
        ->check(CLI::Range(500, 200'000'000));
    pick->add_flag("--no-updates", options->noUpdates, "Leave the update files beside a cell");
    pick->add_option("paths", options->paths, "Cells, catalogues or folders")->required();
    pick->callback([&tool, options] { runPick(tool, *options); });
}

} // namespace kelvox
