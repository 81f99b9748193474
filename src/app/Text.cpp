#include "app/Text.h"

#include "base/Folders.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdlib>

namespace kelvox {

namespace {
std::optional<std::string> environmentValue(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

/// Buttons and dialogs that the toolkit brings; it has its own tables and no other way in.
void translateToolkit(const std::string& language)
{
    static QTranslator translator;
    QCoreApplication::removeTranslator(&translator);
    const QString name = QStringLiteral("qtbase_") + QString::fromStdString(language);
    if (language != "en"
        && translator.load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);
}

/// The arguments as UTF-8 and views of them.
template <typename Use> QString withArguments(std::initializer_list<QString> arguments, Use use)
{
    std::vector<std::string> bytes;
    for (const QString& argument : arguments)
        bytes.push_back(argument.toStdString());
    const std::vector<std::string_view> views(bytes.begin(), bytes.end());
    return QString::fromStdString(use(views));
}
} // namespace

StringCatalog& textCatalog()
{
    static StringCatalog catalog(
        {folders::applicationResources() / "strings", folders::userData() / "strings"});
    return catalog;
}

Result<void> setTextLanguage(const QString& language)
{
    auto& catalog = textCatalog();
    auto taken = catalog.setLanguage(
        language.isEmpty() ? catalog.preferredLanguage(environmentValue) : language.toStdString());
    translateToolkit(catalog.language());
    return taken;
}

QString text(std::string_view key)
{
    return QString::fromStdString(textCatalog().strings().text(key));
}

QString text(std::string_view key, std::initializer_list<QString> arguments)
{
    return withArguments(arguments, [&](Strings::Arguments views) {
        return textCatalog().strings().text(key, views);
    });
}

QString countedText(std::string_view key, std::size_t count,
                    std::initializer_list<QString> arguments)
{
    return withArguments(arguments, [&](Strings::Arguments views) {
        return textCatalog().strings().counted(key, count, views);
    });
}

} // namespace kelvox
