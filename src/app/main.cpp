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
    kelvox::Program program(kelvox::Program::Places::ofUser());
    kelvox::MainWindow window(program);
    window.show();

    std::vector<std::filesystem::path> charts;
    for (const QString& name : arguments.positionalArguments())
        charts.emplace_back(name.toStdString());
    if (!charts.empty())
        window.openFiles(charts);
    else if (!window.openRemembered())
        window.openDemo();
    return QApplication::exec();
}
