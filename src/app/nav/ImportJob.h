#pragma once

#include "app/nav/NavActions.h"
#include "base/Result.h"
#include "exchange/ModelImport.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <filesystem>
#include <memory>
#include <vector>

namespace kelvox {

struct ReadRecords;

/// Brings exchange files into the user's records: read on a worker, taken over in short turns so
/// that the window stays alive, one step of undo for all of them. Ends with a card that says what
/// came, shows it on the chart and takes it back. Deletes itself.
class ImportJob final : public QObject {
    Q_OBJECT
public:
    enum class As { Found, Routes, Tracks }; ///< what lines of KML and tables of CSV become
    static ImportJob* start(NavActions& actions, std::vector<std::filesystem::path> files,
                            As as = As::Found);
    /// The same with what a receiver sent.
    /// @param from words for it in the card
    static ImportJob* start(NavActions& actions, const QString& from,
                            const ExchangeRecords& records);
    /// GPX, KML, KMZ and CSV by their endings, GPX also by what stands in it.
    [[nodiscard]] static bool canRead(const std::filesystem::path& file);
    ~ImportJob() override;

    void cancel(); ///< what was taken over already is taken back

signals:
    void finished(); ///< the records are as they will be

private:
    ImportJob(NavActions& actions, std::vector<std::filesystem::path> files, As as);
    ImportJob(NavActions& actions, QString from, const ExchangeRecords& records);
    void readNext();
    void fileRead(std::shared_ptr<ReadRecords> records);
    void takeOver();
    void finish();
    void showProgress();
    void showSummary(const ImportSummary& summary);

    NavActions& m_actions;
    std::vector<std::filesystem::path> m_files; ///< none: from a receiver
    QString m_from; ///< the receiver
    std::size_t m_next = 0;
    As m_as;
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<ReadRecords> m_records; ///< of the file at work
    std::size_t m_taken = 0;
    std::unique_ptr<ModelImport> m_import;
    std::vector<Position> m_extent;
    QStringList m_faults;
    QTimer m_turn;
    QTimer m_progressDelay;
    QPointer<QWidget> m_card;
};

} // namespace kelvox
