#include "app/nav/ExportJob.h"

#include "app/Text.h"
#include "app/nav/ProgressCard.h"
#include "exchange/KMLExport.h"

namespace kelvox {

ExportWork ExportWork::of(Program& program, const ExportChoice& choice)
{
    using What = ExportChoice::What;
    const bool all = choice.what == What::Everything;
    ExportWork work{
        .kinds = {.waypoints = all || choice.what == What::Waypoints || choice.what == What::Group,
                  .routes = all || choice.what == What::Route,
                  .tracks = all || choice.what == What::Tracks},
        .records = {},
        .style = {.positionFormatUnits = UnitsModel::units().positionFormatUnits,
                  .iconBase = program.settings().text(KMLExport::iconBaseKey)}};
    if (work.kinds.waypoints)
        for (const auto& waypoint : program.waypoints().objectEnumerator())
            if (waypoint->hasPosition()
                && (choice.group.empty() || waypoint->groups.contains(choice.group)))
                work.records.waypoints.push_back(*waypoint);
    const auto addRoute = [&](const Route& route) {
        ExchangeRecords::NamedRoute copy{route.name, {}};
        for (const auto& reference : route.waypointReferences())
            if (reference->waypoint && reference->waypoint->hasPosition())
                copy.points.push_back(*reference->waypoint);
        work.records.routes.push_back(std::move(copy));
    };
    if (choice.what == What::Route)
        addRoute(*choice.route);
    else if (work.kinds.routes)
        for (const auto& route : program.routes().objectEnumerator())
            addRoute(*route);
    if (work.kinds.tracks) {
        work.records.startTrackInterval = program.tracks().startTrackInterval();
        for (const auto& point : program.tracks().objectEnumerator())
            if (point->hasPosition())
                work.records.tracks.push_back(*point);
    }
    return work;
}

ExportJob* ExportJob::start(NavActions& actions, const ExportChoice& choice,
                            std::filesystem::path file)
{
    return new ExportJob(actions, choice, std::move(file));
}

ExportJob::ExportJob(NavActions& actions, const ExportChoice& choice, std::filesystem::path file)
    : QObject(&actions)
    , m_actions(actions)
    , m_file(std::move(file))
{
    m_progressDelay.setSingleShot(true);
    connect(&m_progressDelay, &QTimer::timeout, this, &ExportJob::showProgress);
    m_progressDelay.start(progressDelay);
    Program& program = actions.program();
    program.pool().post([job = QPointer(this), file = m_file, stop = m_stop.get_token(),
                         work = std::make_shared<const ExportWork>(ExportWork::of(program, choice)),
                         &main = program.executor()] {
        auto written = std::make_shared<const Result<void>>(work->write(file, stop));
        main.post([job, written] {
            if (job)
                job->finish(*written);
        });
    });
}

ExportJob::~ExportJob()
{
    m_stop.request_stop();
}

void ExportJob::cancel()
{
    m_stop.request_stop(); // the worker says when it has ended
}

void ExportJob::showProgress()
{
    const QString name = QString::fromStdString(m_file.filename().string());
    m_card = makeProgressCard(text("NSExportingTo", {name}), this, [this] { cancel(); });
    m_actions.host().showCard(text("NSExport"), m_card);
}

void ExportJob::finish(const Result<void>& written)
{
    m_progressDelay.stop();
    if (m_card && m_card->isVisible()) // the card may be another's by now
        m_actions.host().showCard({}, nullptr);
    const auto say = [&](const char* key, const std::string& detail) {
        m_actions.host().showNote(text(key) + QStringLiteral(": ")
                                  + QString::fromStdString(detail));
    };
    if (written)
        say("NSExportComplete", m_file.string());
    else if (written.error().code == Error::Code::Cancelled)
        m_actions.host().showNote(text("NSExportCancelled"));
    else
        say("NSExportIncomplete", written.error().message);
    deleteLater();
    emit finished(written.has_value());
}

} // namespace kelvox
