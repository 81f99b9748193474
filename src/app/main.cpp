// kelvox: the chart plotter.

#include "app/Application.h"
#include "app/CrashReport.h"
#include "app/MainWindow.h"
#include "app/Text.h"
#include "base/Folders.h"

#include <QCommandLineParser>

#include <algorithm>
#include <span>
#include <string_view>

int main(int argc, char** argv)
{
    // What only prints a text wants no screen.
    const std::span<char*> given(argv, static_cast<std::size_t>(argc));
    const bool onlyPrints = std::ranges::any_of(given, [](std::string_view argument) {
        return argument == "--help" || argument == "-h" || argument == "--version"
            || argument == "-v";
    });
    if (onlyPrints)
        qputenv("QT_QPA_PLATFORM", "minimal");
    kelvox::Application application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kelvox"));
    QApplication::setApplicationVersion(QStringLiteral(KELVOX_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("kelvox"));

    QCommandLineParser arguments;
    arguments.setApplicationDescription(QStringLiteral("Marine chart plotter"));
    arguments.addHelpOption();
    arguments.addVersionOption();
    arguments.addPositionalArgument(QStringLiteral("charts"),
                                    QStringLiteral("Cells, catalogues or folders to open; the "
                                                   "demo charts without"),
                                    QStringLiteral("[charts...]"));
    arguments.process(application);

    if (const auto language = kelvox::setTextLanguage({}); !language)
        qWarning("%s", language.error().message.c_str());
    kelvox::S52Model::setFolders(
        {kelvox::folders::applicationResources(), kelvox::folders::userData()});
    const auto places = kelvox::Program::Places::ofUser();
    const auto crash = kelvox::CrashReport::takeLast(places.state);
    kelvox::CrashReport::install(places.state, "Kelvox " KELVOX_VERSION);
    kelvox::Program program(places);
    program.chooseUnitsForRegion();
    if (const auto chosen = program.settings().text("language"); !chosen.empty())
        if (const auto taken = kelvox::setTextLanguage(QString::fromStdString(chosen)); !taken)
            qWarning("%s", taken.error().message.c_str());
    auto* window = new kelvox::MainWindow(program);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();

    std::vector<std::filesystem::path> charts;
    for (const QString& name : arguments.positionalArguments())
        charts.emplace_back(name.toStdString());
    if (!charts.empty())
        window->openFiles(charts);
    else if (crash)
        window->offerRestore(*crash);
    else if (!window->openRemembered())
        window->openDemo();
    const int code = QApplication::exec();
    for (QWidget* top : QApplication::topLevelWidgets())
        if (qobject_cast<kelvox::MainWindow*>(top))
            delete top; // no window outlives what it shows
    return code;
}
