#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace kelvox {

/// Gives a dialog a size of the design at the interface scale, as far as its screen has room.
void resizeDialog(QWidget& dialog, int width, int height);

// The toolkit's own dialogs for files and folders: they darken with the chart, grow with the
// interface, and name kinds of files without their endings. Empty when the user thought better.

[[nodiscard]] QStringList askForFiles(QWidget& parent, const QString& title, const QString& filter);
[[nodiscard]] QString askForFile(QWidget& parent, const QString& title, const QString& filter);
[[nodiscard]] QString askForFolder(QWidget& parent, const QString& title);
/// A file to be written; asks before one is replaced.
/// @param ending added to a name without one, without its dot
[[nodiscard]] QString askForNewFile(QWidget& parent, const QString& title, const QString& name,
                                    const QString& filter, const QString& ending = {});

} // namespace kelvox
