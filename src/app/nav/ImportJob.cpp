#include "app/nav/ImportJob.h"

#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/ProgressCard.h"
#include "base/File.h"
#include "devices/DeviceTransfer.h"
#include "exchange/CSVExport.h"
#include "exchange/CSVImport.h"
#include "exchange/FileKind.h"
#include "exchange/GPXExport.h"
#include "exchange/GPXImport.h"
#include "exchange/KMLExport.h"
#include "exchange/KMLImport.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <variant>

namespace kelvox {

namespace {
constexpr qint64 turnTime = 25; ///< milliseconds of the main thread at once
constexpr int checkEvery = 32; ///< records between looks at the clock

struct RoutePoint {
    Waypoint waypoint;
};
struct RouteEnd {
    std::string name;
};
struct PassedOver { };
} // namespace

/// What a file holds, in its order: routes refer to waypoints before them.
struct ReadRecords final : ExchangeTarget {
    std::vector<std::variant<Waypoint, RoutePoint, RouteEnd, Track, PassedOver>> records;
    QString fault; ///< what was wrong with the file, if anything

    std::string waypoint(Waypoint waypoint) override
    {
        auto name = waypoint.name;
        keep(std::move(waypoint));
        return name;
    }
    std::string routePoint(Waypoint waypoint) override
    {
        auto name = waypoint.name;
        keep(RoutePoint{std::move(waypoint)});
        return name;
    }
    void endRoute(std::string name) override { keep(RouteEnd{std::move(name)}); }
    void trackPoint(Track point) override { keep(std::move(point)); }
    void passedOver() override { keep(PassedOver{}); }

private:
    template <typename Record> void keep(Record&& record)
    {
        records.emplace_back(std::forward<Record>(record));
    }
};

namespace {
/// On a worker. The texts of what was wrong; nothing where all was well.
std::string readFileInto(ReadRecords& records, const std::filesystem::path& file, ImportJob::As as,
                         const ImportOptions& options, const Strings& strings,
                         const UnitsModel& units)
{
    const auto faultOf = [](const auto& result) {
        return result ? std::string() : result.error().message;
    };
    if (KMLExport::isKML(file)) {
        const auto lines =
            as == ImportJob::As::Tracks ? KMLImport::Lines::AsTracks : KMLImport::Lines::AsRoutes;
        return faultOf(KMLImport(options, lines).import(file, records));
    }
    if (!CSVExport::isCSV(file))
        return faultOf(GPXImport(options).import(file, records));
    const auto text = readFile(file);
    if (!text)
        return text.error().message;
    const CSVImport reader(options, strings, units);
    if (as == ImportJob::As::Tracks || (as == ImportJob::As::Found && CSVImport::isTrack(*text)))
        return reader.readTracks(*text, records);
    if (as == ImportJob::As::Routes)
        return reader.readRoute(*text, file.stem().string(), records);
    return reader.readWaypoints(*text, records);
}
} // namespace

ImportJob* ImportJob::start(NavActions& actions, std::vector<std::filesystem::path> files, As as)
{
    return new ImportJob(actions, std::move(files), as);
}

ImportJob* ImportJob::start(NavActions& actions, const QString& from,
                            const ExchangeRecords& records)
{
    return new ImportJob(actions, from, records);
}

bool ImportJob::canRead(const std::filesystem::path& file)
{
    return KMLExport::isKML(file) || CSVExport::isCSV(file) || GPXExport::isGPX(file)
        || GPXImport::isGPX(file);
}

ImportJob::ImportJob(NavActions& actions, std::vector<std::filesystem::path> files, As as)
    : QObject(&actions)
    , m_actions(actions)
    , m_files(std::move(files))
    , m_as(as)
{
    connect(&m_turn, &QTimer::timeout, this, &ImportJob::takeOver);
    m_progressDelay.setSingleShot(true);
    connect(&m_progressDelay, &QTimer::timeout, this, &ImportJob::showProgress);
    m_progressDelay.start(progressDelay);
    if (!m_files.empty())
        readNext();
}

ImportJob::ImportJob(NavActions& actions, QString from, const ExchangeRecords& records)
    : ImportJob(actions, {}, As::Found)
{
    m_from = std::move(from);
    auto read = std::make_shared<ReadRecords>();
    handOver(records, *read);
    // Not before the caller has connected what it wants to hear.
    QTimer::singleShot(0, this, [this, read] { fileRead(read); });
}

ImportJob::~ImportJob()
{
    m_cancelled.request_stop();
}

void ImportJob::readNext()
{
    if (m_next >= m_files.size()) {
        finish();
        return;
    }
    auto records = std::make_shared<ReadRecords>();
    Program& program = m_actions.program();
    auto options = ImportOptions::now(program.clock());
    options.stop = m_cancelled.get_token();
    // Copies: the user may change units and language while the worker reads.
    program.pool().post([job = QPointer(this), records, file = m_files[m_next], as = m_as,
                         options = std::move(options), strings = textCatalog().strings(),
                         units = UnitsModel::units(), &executor = program.executor()] {
        records->fault =
            QString::fromStdString(readFileInto(*records, file, as, options, strings, units));
        executor.post([job, records] {
            if (job)
                job->fileRead(records);
        });
    });
}

void ImportJob::fileRead(std::shared_ptr<ReadRecords> records)
{
    if (m_cancelled.stop_requested())
        return;
    m_records = std::move(records);
    m_taken = 0;
    if (!m_records->fault.isEmpty())
        m_faults << QString::fromStdString(m_files[m_next].filename().string())
                + QStringLiteral(": ") + m_records->fault.trimmed();
    if (!m_import) {
        Program& program = m_actions.program();
        m_import =
            std::make_unique<ModelImport>(program.waypoints(), program.routes(), program.tracks());
    }
    m_turn.start(0);
}

void ImportJob::takeOver()
{
    QElapsedTimer clock;
    clock.start();
    auto& records = m_records->records;
    while (m_taken < records.size()) {
        auto& record = records[m_taken++];
        if (auto* waypoint = std::get_if<Waypoint>(&record)) {
            m_extent.push_back(waypoint->positionOnGPS());
            m_import->waypoint(std::move(*waypoint));
        } else if (auto* point = std::get_if<RoutePoint>(&record)) {
            m_extent.push_back(point->waypoint.positionOnGPS());
            m_import->routePoint(std::move(point->waypoint));
        } else if (auto* end = std::get_if<RouteEnd>(&record)) {
            m_import->endRoute(std::move(end->name));
        } else if (auto* track = std::get_if<Track>(&record)) {
            m_extent.push_back(track->positionOnGPS());
            m_import->trackPoint(std::move(*track));
        } else {
            m_import->passedOver();
        }
        if (m_taken % checkEvery == 0 && clock.elapsed() >= turnTime)
            return;
    }
    while (!m_import->handOver(checkEvery))
        if (clock.elapsed() >= turnTime)
            return;
    m_turn.stop();
    m_records.reset();
    ++m_next;
    readNext();
}

void ImportJob::finish()
{
    m_progressDelay.stop();
    ImportSummary summary;
    if (m_import) {
        summary = m_import->finish();
        m_import.reset(); // closes the step
    }
    m_cancelled.request_stop(); // too late for it from here on
    showSummary(summary);
    emit finished();
    deleteLater();
}

void ImportJob::cancel()
{
    if (!m_cancelled.request_stop())
        return;
    m_turn.stop();
    m_progressDelay.stop();
    if (m_import) {
        Program& program = m_actions.program();
        const auto before = program.waypoints().history().revision();
        m_import.reset();
        if (program.waypoints().history().revision() != before)
            program.undo();
    }
    if (m_card)
        m_actions.host().showCard({}, nullptr);
    m_actions.host().showNote(text("NSImportCancelled"));
    emit finished();
    deleteLater();
}

void ImportJob::showProgress()
{
    const QString name = m_files.empty()
        ? m_from
        : QString::fromStdString(m_files[std::min(m_next, m_files.size() - 1)].filename().string());
    m_card = makeProgressCard(text("NSImporting", {name}), this, [this] { cancel(); });
    m_actions.host().showCard(text("NSImport"), m_card);
}

void ImportJob::showSummary(const ImportSummary& summary)
{
    QStringList lines;
    const auto addKind = [&](const char* key, const ImportSummary::Kind& kind) {
        if (const auto all = kind.created + kind.same; all > 0)
            lines << countedText(key, all,
                                 {QString::number(kind.created), QString::number(kind.same)});
        for (const auto& [before, now] : kind.renamed)
            if (lines.size() < 12)
                lines << text("NSImportedAs",
                              {QString::fromStdString(before), QString::fromStdString(now)});
    };
    addKind("NSImportedWaypoints", summary.waypoints);
    addKind("NSImportedRoutes", summary.routes);
    if (summary.trackPoints > 0)
        lines << countedText("NSImportedTrackPoints", summary.trackPoints);
    if (summary.passedOver > 0)
        lines << countedText("NSImportPassedOver", summary.passedOver);
    const bool something = !lines.isEmpty();
    if (!something)
        lines << text("NSImportedNothing");
    lines << m_faults.mid(0, 8);

    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    auto* label = new QLabel(lines.join(QLatin1Char('\n')), content);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    rows->addWidget(label);
    // The buttons outlive this job.
    NavActions* actions = &m_actions;
    auto* buttons = new FlowLayout;
    const auto add = [&](const char* key, auto run) {
        auto* button = new QPushButton(text(key), content);
        button->setMinimumHeight(Theme::theme().px(40));
        QObject::connect(button, &QPushButton::clicked, actions, run);
        buttons->add(button, FlowLayout::Grow::Yes);
    };
    const EditHistory& history = m_actions.program().waypoints().history();
    const bool haveLines = summary.routes.created > 0 && m_as == As::Found
        && std::ranges::any_of(m_files, [](const auto& file) { return KMLExport::isKML(file); });
    if (something) {
        if (haveLines)
            add("NSImportAsTracks",
                [actions, &history, files = m_files, revision = history.revision()] {
                    if (history.revision() != revision) {
                        actions->host().showNote(text("NSUndoTooLate"));
                        return;
                    }
                    actions->program().undo();
                    ImportJob::start(*actions, files, As::Tracks);
                });
        add("NSShowOnChart", [actions, extent = m_extent] { actions->showOnChart(extent); });
        if (summary.waypoints.created + summary.routes.created + summary.trackPoints > 0)
            add("NSUndo", [actions, &history, revision = history.revision()] {
                // Only while the import is still the last step: else another would be taken back.
                if (history.revision() == revision)
                    actions->program().undo();
                else
                    actions->host().showNote(text("NSUndoTooLate"));
                actions->host().showCard({}, nullptr);
            });
    }
    rows->addLayout(buttons);
    m_actions.host().showCard(
        m_files.empty() ? text("NSReceivedFrom", {m_from})
            : m_files.size() == 1
            ? text("NSImported", {QString::fromStdString(m_files.front().filename().string())})
            : countedText("NSImportedFiles", m_files.size()),
        content);
}

} // namespace kelvox
