#include "app/ViewKeeper.h"

#include "app/ChartView.h"
#include "app/Commands.h"
#include "app/Program.h"

namespace kelvox {

namespace {
constexpr auto restTime = std::chrono::milliseconds(700);
constexpr qint64 rememberEvery = 60'000; // milliseconds, while the chart follows the vessel
} // namespace

ViewKeeper::ViewKeeper(ChartHost& host)
    : QObject(&host.window())
    , m_host(host)
{
    m_rest.setSingleShot(true);
    m_rest.setInterval(restTime);
    connect(&m_rest, &QTimer::timeout, this, &ViewKeeper::visit);
    connect(&host.chart(), &ChartView::viewChanged, &m_rest, qOverload<>(&QTimer::start));
}

bool ViewKeeper::isFollowing() const
{
    const QAction* const follow = m_host.commands().action("chart.follow");
    return follow && follow->isChecked();
}

void ViewKeeper::visit()
{
    const ChartView& chart = m_host.chart();
    const ViewFrame frame = chart.frame();
    if (frame.width < 2)
        return;
    // A chart that follows the vessel is one view, wherever the vessel is.
    if (!isFollowing())
        m_history.visit({.center = chart.center(),
                         .scale = chart.scale(),
                         .rotation = chart.rotation(),
                         .span = frame.coveredBox(0).width()});
    if (!isFollowing() || !m_sinceRemembered.isValid()
        || m_sinceRemembered.elapsed() > rememberEvery)
        remember();
}

void ViewKeeper::remember()
{
    m_sinceRemembered.start();
    const ChartView& chart = m_host.chart();
    const Position center = chart.center();
    Settings& settings = m_host.program().settings();
    settings.set("chart.scale", static_cast<long long>(chart.scale()));
    settings.set("chart.latitude", center.latitude);
    settings.set("chart.longitude", center.longitude);
    settings.set("chart.rotation", static_cast<double>(chart.rotation()));
    settings.set("chart.follow", isFollowing());
}

void ViewKeeper::back()
{
    if (const auto view = m_history.back())
        show(*view);
}

void ViewKeeper::forward()
{
    if (const auto view = m_history.forward())
        show(*view);
}

void ViewKeeper::show(const ViewHistory::View& view)
{
    m_host.showPosition(view.center); // stops following, too
    m_host.chart().setScale(view.scale);
    m_host.chart().setRotation(view.rotation);
    m_host.chart().centerOn(view.center);
}

} // namespace kelvox
