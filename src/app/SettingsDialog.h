#pragma once

#include "app/Commands.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QScrollArea;
class QVBoxLayout;

namespace kelvox {

class Program;

/// Every setting in one place: headings at the left, found by their words as they are typed, and
/// the keys of all commands.
class SettingsDialog final : public QDialog {
    Q_OBJECT
public:
    /// @param commands of the window that the dialog belongs to; outlives it
    SettingsDialog(Program& program, Commands& commands, QWidget* parent);

    /// Opens at a group, by its text key, e.g. "NSSettings.Units" or "NSSettings.Keys".
    void showGroup(const std::string& group);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitToScale(); ///< of the interface, which may be changed in here
    void rebuild();
    void addSettings(QVBoxLayout& rows, const QStringList& words);
    void addKeys(QVBoxLayout& rows, const QStringList& words);
    void addKey(QVBoxLayout& rows, const Commands::Command& command);
    void exportSettings();
    void importSettings();

    Program& m_program;
    Commands& m_commands;
    QLineEdit* m_search;
    QListWidget* m_groups;
    QComboBox* m_groupBox; ///< in their place where there is little room
    double m_scale = 0; ///< that the dialog is laid out for
    QScrollArea* m_area;
    QLabel* m_message;
};

} // namespace kelvox
