#pragma once

#include "app/nav/NavActions.h"
#include "exchange/ExchangeFile.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <filesystem>
#include <stop_token>
#include <string>

namespace kelvox {

/// What of the user's waypoints, routes and tracks one export writes.
struct ExportChoice {
    enum class What { Waypoints, Group, Route, Tracks, Everything };
    What what = What::Everything;
    std::string group = {}; ///< of Group
    RoutePointer route = {}; ///< of Route
};

/// What one export writes, copied at one moment: write() may run on any thread.
struct ExportWork {
    ExchangeKinds kinds;
    ExchangeRecords records;
    ExchangeStyle style;

    [[nodiscard]] static ExportWork of(Program& program, const ExportChoice& choice);
    /// In the format of the file's ending: GPX, KML or CSV.
    [[nodiscard]] Result<void> write(const std::filesystem::path& file,
                                     const std::stop_token& stop = {}) const
    {
        return writeExchangeFile(file, kinds, records, style, stop);
    }
};

/// Writes an exchange file on a worker, since a slow disk may take its time, and says how that
/// went. Cancelled it leaves what stood there. Deletes itself.
class ExportJob final : public QObject {
    Q_OBJECT
public:
    static ExportJob* start(NavActions& actions, const ExportChoice& choice,
                            std::filesystem::path file);
    ~ExportJob() override;

    void cancel();

signals:
    void finished(bool written);

private:
    ExportJob(NavActions& actions, const ExportChoice& choice, std::filesystem::path file);
    void showProgress();
    void finish(const Result<void>& written);

    NavActions& m_actions;
    std::filesystem::path m_file;
    std::stop_source m_stop;
    QTimer m_progressDelay;
    QPointer<QWidget> m_card;
};

} // namespace kelvox
