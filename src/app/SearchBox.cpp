#include "app/SearchBox.h"

#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/ClearAction.h"
#include "app/Commands.h"
#include "app/PickLayer.h"
#include "app/Program.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/TypedPosition.h"
#include "navigation/NavMath.h"
#include "navigation/PositionFormatter.h"
#include "navigation/TextSearch.h"
#include "navigation/ValueFormatters.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QPointer>

namespace kelvox {

namespace {
constexpr std::size_t mostOfAKind = 8;

QString awayText(Position from, Position to)
{
    return QString::fromStdString(
        NSDtwFormatter().stringForObjectValue(NavMath::distanceFromPoint(from, to)));
}
} // namespace

SearchBox::SearchBox(ChartHost& host, PickLayer& picks, QWidget* parent)
    : QLineEdit(parent)
    , m_host(host)
    , m_picks(picks)
    , m_list(new QListWidget(&host.window()))
{
    setObjectName(QStringLiteral("searchBox"));
    setPlaceholderText(kelvox::text("NSSearchPlaceholder"));
    setAccessibleName(kelvox::text("NSSearchPlaceholder"));
    addClearAction(*this);
    m_list->setObjectName(QStringLiteral("searchResults"));
    makeCard(*m_list);
    m_list->setAccessibleName(kelvox::text("NSSearchResults"));
    m_list->setFocusPolicy(Qt::NoFocus); // the keys stay with the text
    m_list->setAutoFillBackground(true);
    m_list->hide();
    connect(this, &QLineEdit::textChanged, this, &SearchBox::search);
    connect(m_list, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { choose(m_list->row(item)); });
}

void SearchBox::gatherNames()
{
    for (const auto& cell : m_places.missing(m_host.chart().scene()->cells)) {
        const QPointer<SearchBox> box = this;
        Program& program = m_host.program();
        program.pool().post([cell, box, &main = program.executor()] {
            auto places = PlaceIndex::placesOf(*cell);
            main.post([cell, box, places = std::move(places)] {
                if (!box)
                    return;
                box->m_places.add(cell, places);
                if (box->hasFocus() && !box->text().isEmpty())
                    box->search();
            });
        });
    }
}

void SearchBox::addVessels(std::vector<Result>& results, const QString& words) const
{
    const TextSearch wanted(words.toStdString());
    const Position middle = m_host.chart().center();
    std::size_t count = 0;
    for (const AISPosition* target : m_host.program().live().ais().model().positionEnumerator()) {
        if (count >= mostOfAKind)
            return;
        if (!target->isPositionKnown()
            || !wanted.matches(target->name(), std::to_string(target->mmsi())))
            continue;
        ++count;
        const Position at = target->positionOnGPS();
        results.push_back(
            {.name = QString::fromStdString(target->name()),
             .detail = kelvox::text("NSVessel") + QStringLiteral(" · ") + awayText(middle, at),
             .icon = QStringLiteral("ais"),
             .position = at,
             .open = {}});
    }
}

void SearchBox::addWaypoints(std::vector<Result>& results, const QString& words) const
{
    const TextSearch wanted(words.toStdString());
    const Position middle = m_host.chart().center();
    const WaypointsModel& waypoints = m_host.program().waypoints();
    std::size_t count = 0;
    for (std::size_t i = 0; i < waypoints.count() && count < mostOfAKind; ++i) {
        const auto waypoint = waypoints.waypoint(i);
        if (!wanted.matches(waypoint->name, waypoint->description) || !waypoint->hasPosition())
            continue;
        ++count;
        results.push_back({.name = QString::fromStdString(waypoint->name),
                           .detail = kelvox::text("NSWaypoint") + QStringLiteral(" · ")
                               + awayText(middle, waypoint->positionOnGPS()),
                           .icon = QStringLiteral("waypoint"),
                           .position = waypoint->positionOnGPS(),
                           .open = {}});
    }
}

void SearchBox::addCharts(std::vector<Result>& results, const QString& words) const
{
    const TextSearch wanted(words.toStdString());
    std::size_t count = 0;
    for (const auto& chart : m_host.charts().charts()) {
        if (count >= mostOfAKind)
            return;
        if (!chart->isUsable() || !wanted.matches(chart->name, chart->title))
            continue;
        ++count;
        results.push_back(
            {.name = QString::fromStdString(chart->name),
             .detail = kelvox::text("NSChart") + QStringLiteral(" · ")
                 + QString::fromStdString(chart->title),
             .icon = QStringLiteral("charts"),
             .position = std::nullopt,
             .open = [this, bounds = chart->bounds] { m_host.chart().showBounds(bounds); }});
    }
}

void SearchBox::addCommands(std::vector<Result>& results, const QString& words) const
{
    std::size_t count = 0;
    for (const auto& command : m_host.commands().all()) {
        if (count >= mostOfAKind)
            return;
        if (!command.action->text().contains(words, Qt::CaseInsensitive))
            continue;
        ++count;
        results.push_back({.name = command.action->text(),
                           .detail = command.action->shortcut().toString(QKeySequence::NativeText),
                           .icon = QStringLiteral("menu"),
                           .position = std::nullopt,
                           .open = [action = command.action] { action->trigger(); }});
    }
}

std::vector<SearchBox::Result> SearchBox::find(const QString& words) const
{
    std::vector<Result> results;
    if (words.trimmed().isEmpty())
        return results;
    const std::string typed = words.trimmed().toStdString();
    if (const auto position = parseTypedPosition(typed)) {
        const auto& strings = textCatalog().strings();
        const std::string name = NSPositionFormatter(NSPositionFormatter::Latitude, strings)
                                     .stringForObjectValue(position->latitude)
            + "  "
            + NSPositionFormatter(NSPositionFormatter::Longitude, strings)
                  .stringForObjectValue(position->longitude);
        results.push_back({.name = QString::fromStdString(name),
                           .detail = kelvox::text("NSPosition"),
                           .icon = QStringLiteral("goto"),
                           .position = position,
                           .open = {}});
    }
    addWaypoints(results, words.trimmed());
    addVessels(results, words.trimmed());
    const Position middle = m_host.chart().center();
    for (const auto& place : m_places.find(typed, middle, 2 * mostOfAKind))
        results.push_back({.name = QString::fromStdString(place.name),
                           .detail = QString::fromUtf8(place.className.data(),
                                                       static_cast<int>(place.className.size()))
                               + QStringLiteral(" · ") + awayText(middle, place.position),
                           .icon = QStringLiteral("search"),
                           .position = place.position,
                           .open = {}});
    addCharts(results, words.trimmed());
    addCommands(results, words.trimmed());
    return results;
}

void SearchBox::search()
{
    m_results = find(text());
    m_list->clear();
    const Theme& theme = Theme::theme();
    for (const Result& result : m_results) {
        auto* item = new QListWidgetItem(
            theme.icon(result.icon), result.name + QStringLiteral("    ") + result.detail, m_list);
        item->setSizeHint(QSize(0, theme.px(40)));
    }
    if (text().trimmed().isEmpty()) {
        m_list->hide();
        return;
    }
    if (m_results.empty()) {
        auto* item = new QListWidgetItem(kelvox::text("NSNothingFound"), m_list);
        item->setFlags(Qt::NoItemFlags);
        item->setSizeHint(QSize(0, theme.px(40)));
    }
    m_list->setCurrentRow(0);
    constexpr int mostRows = 10;
    const QPoint below = mapTo(&m_host.window(), QPoint(0, height() + theme.px(4)));
    m_list->setGeometry(below.x(), below.y(), std::max(width(), theme.px(420)),
                        std::min(m_list->count(), mostRows) * theme.px(40) + theme.px(8));
    m_list->show();
    m_list->raise();
}

void SearchBox::choose(int row)
{
    m_list->hide();
    if (row < 0 || row >= static_cast<int>(m_results.size()))
        return;
    const Result result = m_results[static_cast<std::size_t>(row)];
    clear();
    m_host.chart().setFocus();
    if (result.position) {
        m_host.showPosition(*result.position);
        m_picks.mark(*result.position);
    }
    if (result.open)
        result.open();
}

void SearchBox::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Down:
    case Qt::Key_Up: {
        const int by = event->key() == Qt::Key_Down ? 1 : -1;
        m_list->setCurrentRow(std::clamp(m_list->currentRow() + by, 0, m_list->count() - 1));
        return;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return choose(m_list->currentRow());
    case Qt::Key_Escape:
        clear();
        m_list->hide();
        m_host.chart().setFocus();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchBox::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    gatherNames();
    if (!text().isEmpty())
        search();
}

void SearchBox::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    m_list->hide();
}

} // namespace kelvox
