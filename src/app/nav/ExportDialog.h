#pragma once

#include "app/nav/NavActions.h"
#include "base/Result.h"

#include <QDialog>

#include <filesystem>

class QComboBox;

namespace kelvox {

/// What of the user's waypoints, routes and tracks one export writes.
struct ExportChoice {
    enum class What { Waypoints, Group, Route, Tracks, Everything };
    What what = What::Everything;
    std::string group = {}; ///< of Group
    RoutePointer route = {}; ///< of Route
};

/// Writes the choice, in the format of the file's ending: GPX, KML or CSV.
[[nodiscard]] Result<void> exportTo(Program& program, const ExportChoice& choice,
                                    const std::filesystem::path& file);
/// Without ending; "TRACK_" and the day for the track.
[[nodiscard]] QString defaultExportName(Program& program, const ExportChoice& choice);

/// Asks what to export in which format and where to, writes it and says how that went.
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
