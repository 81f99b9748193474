#include "app/ChartTools.h"

#include "app/ChartNotesLayer.h"
#include "app/ChartOutlineLayer.h"
#include "app/GraticuleLayer.h"
#include "app/MainWindow.h"
#include "app/MeasureTool.h"
#include "app/PickLayer.h"
#include "app/SearchBox.h"
#include "app/Text.h"
#include "app/ViewKeeper.h"
#include "app/WeatherLayer.h"
#include "app/panels/ChartsPanel.h"
#include "app/panels/DisplayPanel.h"
#include "app/panels/WeatherPanel.h"

#include <QMenu>

namespace kelvox {

namespace {
template <typename Layer> Layer& addLayer(MainWindow& window, std::unique_ptr<Layer> layer)
{
    Layer& added = *layer;
    window.addLayer(std::move(layer));
    return added;
}

void flip(Settings& settings, const char* key)
{
    settings.set(key, !settings.boolean(key));
}

void addCommands(MainWindow& window, MeasureTool& measure, ViewKeeper& views, SearchBox& search)
{
    Commands& commands = window.commands();
    FileSettings& settings = window.program().settings();
    const std::string view = "NSMenuView";
    auto* measuring = commands.addSwitch("chart.measure", "NSMenuTools", QKeySequence(Qt::Key_M),
                                         [&measure](bool on) {
                                             if (on)
                                                 measure.start();
                                             else
                                                 measure.stop();
                                         });
    QObject::connect(&measure, &MeasureTool::changed, measuring,
                     [measuring, &measure] { measuring->setChecked(measure.isActive()); });
    commands.add("search.focus", "NSMenuTools", QKeySequence::Find, [&search] {
        search.setFocus(Qt::ShortcutFocusReason);
        search.selectAll();
    });
    commands.add("chart.previousView", view, QKeySequence(Qt::ALT | Qt::Key_Left),
                 [&views] { views.back(); });
    commands.add("chart.nextView", view, QKeySequence(Qt::ALT | Qt::Key_Right),
                 [&views] { views.forward(); });
    commands.add("chart.texts", view, QKeySequence(Qt::Key_T), [&settings] {
        const bool on = !settings.boolean("showMarkNames") && !settings.boolean("showPlaceNames");
        settings.set("showMarkNames", on);
        settings.set("showPlaceNames", on);
    });
    commands.add("chart.soundings", view, QKeySequence(Qt::Key_S),
                 [&settings] { flip(settings, "showSoundings"); });
    commands.add("chart.sectors", view, QKeySequence(Qt::Key_L),
                 [&settings] { flip(settings, "showLightSectors"); });
    commands.add("chart.graticule", view, QKeySequence(Qt::Key_G),
                 [&settings] { flip(settings, "showGraticule"); });
    for (const char* panel : {"weather", "charts", "display"})
        commands.add(std::string("panel.") + panel, view, {},
                     [&window, panel] { window.openPanel(QLatin1String(panel)); });
}
} // namespace

void addChartTools(MainWindow& window)
{
    FileSettings& settings = window.program().settings();
    addLayer(window, std::make_unique<WeatherLayer>(window));
    auto& outlines = addLayer(window, std::make_unique<ChartOutlineLayer>([&window, &settings]() {
                                  return settings.boolean("showChartOutlines")
                                          || window.isPanelOpen(QStringLiteral("charts"))
                                      ? window.charts().charts()
                                      : ChartRecords();
                              }));
    addLayer(window, std::make_unique<GraticuleLayer>([&settings] {
                 return settings.boolean("showGraticule");
             }));
    auto& picks = addLayer(window, std::make_unique<PickLayer>(window));
    addLayer(window,
             std::make_unique<ChartNotesLayer>(
                 [&window]() -> const ChartRecords& { return window.charts().charts(); },
                 [&window] { return window.coveredWidth(); }));

    window.addPanel(new WeatherPanel(window));
    window.addPanel(new ChartsPanel(window, outlines));
    window.addPanel(new DisplayPanel(window));

    auto* measure = new MeasureTool(window);
    picks.setMeasure([measure](Position position) { measure->startAt(position); });
    auto* views = new ViewKeeper(window);
    auto* search = new SearchBox(window, picks, &window);
    window.setSearch(search);
    addCommands(window, *measure, *views, *search);
}

} // namespace kelvox
