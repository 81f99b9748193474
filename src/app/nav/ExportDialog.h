#pragma once

#include "app/nav/ExportJob.h"

#include <QDialog>

class QComboBox;

namespace kelvox {

/// Without ending; "TRACK_" and the day for the track.
[[nodiscard]] QString defaultExportName(Program& program, const ExportChoice& choice);

/// Asks what to export in which format and where to, and has it written.
class ExportDialog final : public QDialog {
    Q_OBJECT
public:
    explicit ExportDialog(NavActions& actions);

private:
    [[nodiscard]] ExportChoice choice() const;
    void save();

    NavActions& m_actions;
    QComboBox* m_what;
    QComboBox* m_format;
    std::vector<ExportChoice> m_choices;
};

} // namespace kelvox
