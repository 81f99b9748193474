// kelvox: the chart plotter.

#include "app/MainWindow.h"
#include "app/Text.h"
#include "base/Folders.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kelvox"));
    QApplication::setApplicationVersion(QStringLiteral(KELVOX_VERSION));

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
    kelvox::WorkerPool pool(std::max(std::thread::hardware_concurrency(), 2U));
    kelvox::MainWindow window(kelvox::S52Model::s52(), pool);
    window.show();

    std::vector<std::filesystem::path> charts;
    for (const QString& name : arguments.positionalArguments())
        charts.emplace_back(name.toStdString());
    if (charts.empty())
        window.openDemo(kelvox::folders::applicationResources());
    else
        window.open(charts);
    return QApplication::exec();
}
