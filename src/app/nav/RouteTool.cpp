#include "app/nav/RouteTool.h"

#include "app/ChartView.h"
#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/HaloText.h"
#include "app/nav/NavText.h"
#include "app/nav/SheetLine.h"
#include "navigation/NavMath.h"

#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <cmath>

namespace kelvox {

RouteTool::RouteTool(ChartHost& host, std::function<WaypointPointer(QPointF)> waypointAt)
    : m_host(host)
    , m_waypointAt(std::move(waypointAt))
{
    const std::pair<Qt::Key, void (RouteTool::*)()> keys[] = {
        {Qt::Key_Return, &RouteTool::finish},
        {Qt::Key_Enter, &RouteTool::finish},
        {Qt::Key_Backspace, &RouteTool::takeBack}};
    for (const auto& [key, run] : keys) {
        auto* shortcut = new QShortcut(key, &host.chart());
        shortcut->setContext(Qt::WidgetShortcut);
        shortcut->setEnabled(false);
        connect(shortcut, &QShortcut::activated, this, run);
        m_keys.push_back(shortcut);
    }
}

RouteTool::~RouteTool() = default;

void RouteTool::begin(std::vector<RoutePlace> start, std::size_t fixed,
                      std::function<void(const std::vector<RoutePlace>&)> done)
{
    m_places = std::move(start);
    m_fixed = fixed;
    m_done = std::move(done);
    m_pointer.reset();
    m_host.setTool(this);
    for (QShortcut* key : m_keys)
        key->setEnabled(true);
    showCard();
    m_host.chart().setFocus();
    m_host.chart().update();
}

void RouteTool::end()
{
    for (QShortcut* key : m_keys)
        key->setEnabled(false);
    m_text = nullptr;
    m_host.showCard({}, nullptr);
    if (isActive())
        m_host.setTool(nullptr);
    m_places.clear();
    m_pointer.reset();
}

void RouteTool::finish()
{
    if (!isActive())
        return;
    const auto places = std::exchange(m_places, {});
    const bool enough = places.size() >= std::max<std::size_t>(2, m_fixed + 1);
    const auto done = std::exchange(m_done, {});
    end();
    if (enough && done)
        done(places);
}

void RouteTool::takeBack()
{
    if (m_places.size() > m_fixed)
        m_places.pop_back();
    updateCard();
    m_host.chart().update();
}

void RouteTool::abandon()
{
    m_done = {};
    end();
}

bool RouteTool::cancel()
{
    abandon();
    return true;
}

Position RouteTool::positionOf(const RoutePlace& place)
{
    return place.waypoint ? place.waypoint->positionOnGPS() : place.position;
}

RoutePlace RouteTool::placeAt(const ChartPointer& pointer) const
{
    auto waypoint = m_waypointAt(pointer.at);
    if (waypoint)
        return {waypoint->positionOnGPS(), waypoint};
    return {pointer.position, nullptr};
}

bool RouteTool::click(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    m_places.push_back(placeAt(pointer));
    updateCard();
    return true;
}

bool RouteTool::doubleClick(const ChartPointer& /*pointer*/, const ViewFrame& /*frame*/)
{
    finish(); // the first of the two clicks has made the point
    return true;
}

void RouteTool::hover(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    m_pointer = placeAt(pointer);
}

void RouteTool::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const SheetToPoints toPoints(frame);
    const QColor color = look.color("PLRTE");
    const QColor halo = look.color("DEPDW");
    const auto drawLine = [&](const SheetLine& line, Qt::PenStyle style) {
        painter.setPen(QPen(color, 2, style, Qt::RoundCap, Qt::RoundJoin));
        line.project(toPoints, 8, [&](const QPolygonF& part) { painter.drawPolyline(part); });
    };
    SheetLine made;
    for (std::size_t i = 1; i < m_places.size(); ++i)
        made.addLeg(positionOf(m_places[i - 1]), positionOf(m_places[i]));
    drawLine(made, Qt::SolidLine);
    if (m_pointer && !m_places.empty()) {
        SheetLine next;
        next.addLeg(positionOf(m_places.back()), positionOf(*m_pointer));
        drawLine(next, Qt::DashLine);
    }
    for (const RoutePlace& place : m_places) {
        painter.setPen(QPen(color, 2));
        painter.setBrush(halo);
        painter.drawEllipse(toPoints.nearest(sheetPlaceOf(positionOf(place))), 5 * look.scale,
                            5 * look.scale);
    }
    if (!m_pointer || m_places.empty())
        return;
    const Position from = positionOf(m_places.back());
    const Position to = positionOf(*m_pointer);
    float total = NavMath::distanceFromPoint(from, to);
    const QString leg = navtext::bearing(m_host.program(), NavMath::bearingFromPoint(from, to))
        + QStringLiteral("   ") + navtext::distance(total);
    for (std::size_t i = 1; i < m_places.size(); ++i)
        total += NavMath::distanceFromPoint(positionOf(m_places[i - 1]), positionOf(m_places[i]));
    QFont font = painter.font();
    font.setPixelSize(qRound(14 * look.scale));
    font.setBold(true);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    const QStringList lines{leg, QStringLiteral("Σ ") + navtext::distance(total)};
    const QPointF at = toPoints.nearest(sheetPlaceOf(to));
    const double width =
        std::max(metrics.horizontalAdvance(lines[0]), metrics.horizontalAdvance(lines[1]));
    // Away from the edges, so that it can always be read.
    double x = at.x() + 16 * look.scale;
    if (x + width > frame.width / frame.pixelsPerPoint - 8)
        x = at.x() - 16 * look.scale - width;
    double y = at.y() + 22 * look.scale;
    if (y + metrics.height() * 2 > frame.height / frame.pixelsPerPoint)
        y = at.y() - 10 * look.scale - metrics.height();
    for (const QString& line : lines) {
        drawHaloText(painter, {x, y}, line, look.color("UINFD"), halo);
        y += metrics.height();
    }
}

void RouteTool::showCard()
{
    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    m_text = new QLabel(content);
    m_text->setWordWrap(true);
    auto* hint = new QLabel(text("NSRouteToolHint"), content);
    hint->setProperty("role", QStringLiteral("dim"));
    hint->setWordWrap(true);
    auto* buttons = new FlowLayout;
    m_backButton = new QPushButton(text("NSTakeBack"), content);
    m_doneButton = new QPushButton(text("NSDone"), content);
    for (QPushButton* button : {m_backButton, m_doneButton}) {
        button->setMinimumHeight(Theme::theme().px(40));
        button->setFocusPolicy(Qt::TabFocus);
        buttons->add(button, FlowLayout::Grow::Yes);
    }
    m_doneButton->setObjectName(QStringLiteral("routeDone"));
    connect(m_backButton, &QPushButton::clicked, this, &RouteTool::takeBack);
    connect(m_doneButton, &QPushButton::clicked, this, &RouteTool::finish);
    // The card's cross abandons; a card of another's may also take the place.
    connect(content, &QObject::destroyed, this, [this, label = m_text] {
        if (m_text != label)
            return; // that of a route made before
        m_text = nullptr;
        if (isActive())
            abandon();
    });
    rows->addWidget(m_text);
    rows->addWidget(hint);
    rows->addLayout(buttons);
    m_host.showCard(text("NSNewRoute"), content);
    updateCard();
}

void RouteTool::updateCard()
{
    if (!m_text)
        return;
    float total = 0;
    for (std::size_t i = 1; i < m_places.size(); ++i)
        total += NavMath::distanceFromPoint(positionOf(m_places[i - 1]), positionOf(m_places[i]));
    m_text->setText(countedText("NSRoutePoints", m_places.size(), {navtext::distance(total)}));
    m_backButton->setEnabled(m_places.size() > m_fixed);
    m_doneButton->setEnabled(m_places.size() >= std::max<std::size_t>(2, m_fixed + 1));
}

} // namespace kelvox
