#include "app/Dialogs.h"

#include "app/Theme.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QScreen>
#include <QTreeView>

namespace kelvox {

namespace {
void prepare(QFileDialog& dialog, QFileDialog::FileMode mode)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setFileMode(mode);
    resizeDialog(dialog, 680, 480);
    if (const auto* list = dialog.findChild<QTreeView*>())
        list->header()->setSectionResizeMode(0, QHeaderView::Stretch); // the name matters most
}

QStringList filesOf(QFileDialog& dialog)
{
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}
} // namespace

void resizeDialog(QWidget& dialog, int width, int height)
{
    constexpr double share = 0.95; // its frame wants some
    const Theme& theme = Theme::theme();
    const QSize most = dialog.screen()->availableSize() * share;
    dialog.resize(QSize(theme.px(width), theme.px(height)).boundedTo(most));
}

QStringList askForFiles(QWidget& parent, const QString& title, const QString& filter)
{
    QFileDialog dialog(&parent, title, {}, filter);
    prepare(dialog, QFileDialog::ExistingFiles);
    return filesOf(dialog);
}

QString askForFile(QWidget& parent, const QString& title, const QString& filter)
{
    QFileDialog dialog(&parent, title, {}, filter);
    prepare(dialog, QFileDialog::ExistingFile);
    return filesOf(dialog).value(0);
}

QString askForFolder(QWidget& parent, const QString& title)
{
    QFileDialog dialog(&parent, title);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    prepare(dialog, QFileDialog::Directory);
    return filesOf(dialog).value(0);
}

QString askForNewFile(QWidget& parent, const QString& title, const QString& name,
                      const QString& filter, const QString& ending)
{
    QFileDialog dialog(&parent, title, {}, filter);
    prepare(dialog, QFileDialog::AnyFile);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(ending);
    dialog.selectFile(name);
    return filesOf(dialog).value(0);
}

} // namespace kelvox
