#include "app/OpenCharts.h"

#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/Program.h"

#include <utility>

namespace kelvox {

OpenCharts::OpenCharts(ChartHost& host)
    : m_host(host)
{
    connect(&host.chart(), &ChartView::panned, this, [this] { m_fitWhenLoaded = false; });
    connect(&host.charts(), &ChartSet::chartsChanged, this, &OpenCharts::chartsFound);
    connect(&host.charts(), &ChartSet::scanned, this, &OpenCharts::scanFinished);
    connect(&host.program(), &Program::settingChanged, this, [this](const QString& key) {
        if (key == QLatin1String("chartChoice"))
            choose();
    });
    choose();
}

void OpenCharts::open(const std::vector<std::filesystem::path>& paths)
{
    m_fitWhenLoaded = true;
    m_fittedView.reset();
    // The user's own charts take the place of the demo's.
    if (!std::exchange(m_remembers, true))
        m_host.charts().setPlaces({});
    m_host.charts().open(paths);
    remember();
}

void OpenCharts::openDemo()
{
    m_host.charts().open({m_host.program().places().resources / "demo"});
}

bool OpenCharts::openRemembered()
{
    const Settings& settings = m_host.program().settings();
    const auto lines = QString::fromStdString(settings.text("charts.places"))
                           .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (lines.isEmpty())
        return false;
    std::vector<std::filesystem::path> places;
    for (const QString& line : lines)
        places.emplace_back(line.toStdString());
    m_remembers = true;
    m_host.charts().setPlaces(places);
    if (settings.find("chart.scale")) {
        ChartView& chart = m_host.chart();
        chart.setScale(static_cast<int>(settings.integer("chart.scale")));
        chart.setRotation(settings.number("chart.rotation"));
        chart.centerOn({.longitude = settings.number("chart.longitude"),
                        .latitude = settings.number("chart.latitude")});
    } else {
        m_fitWhenLoaded = true;
    }
    return true;
}

void OpenCharts::setPlaces(const std::vector<std::filesystem::path>& places)
{
    m_host.charts().setPlaces(places);
    m_remembers = true;
    remember();
}

void OpenCharts::takeOver(const OpenCharts& other)
{
    m_host.charts().setPlaces(other.m_host.charts().places());
    m_remembers = other.m_remembers;
}

void OpenCharts::close()
{
    m_host.charts().setPlaces({});
    if (m_remembers)
        remember();
}

void OpenCharts::fitAll()
{
    if (const Rect bounds = m_host.charts().bounds(); !bounds.isEmpty())
        m_host.chart().showBounds(bounds);
}

void OpenCharts::chartsFound()
{
    // Something to see at once; the whole is fitted when all is known.
    const auto& scene = m_host.chart().scene();
    if (m_fitWhenLoaded && scene->cells.empty() && scene->rasters.empty()
        && (!m_fittedView || m_fittedView == shownView())) {
        fitAll();
        m_fittedView = shownView();
    }
    emit found();
}

void OpenCharts::scanFinished(int charts)
{
    // Not from under the hand of a user who has gone elsewhere meanwhile.
    const bool isMoved = m_fittedView && m_fittedView != shownView();
    if (std::exchange(m_fitWhenLoaded, false) && charts > 0 && !isMoved)
        fitAll();
    m_fittedView.reset();
    emit found();
}

void OpenCharts::remember()
{
    std::string places;
    for (const auto& place : m_host.charts().places())
        places += place.string() + '\n';
    m_host.program().settings().set("charts.places", places);
}

void OpenCharts::choose()
{
    const auto choice = m_host.program().settings().integer("chartChoice");
    m_host.charts().setChoice(choice == 1       ? ChartChoice::Cells
                                  : choice == 2 ? ChartChoice::Rasters
                                                : ChartChoice::Both);
}

OpenCharts::View OpenCharts::shownView() const
{
    const ChartView& chart = m_host.chart();
    const Position center = chart.center();
    return {center.latitude, center.longitude, chart.scale()};
}

} // namespace kelvox
