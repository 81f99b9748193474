#include "app/PickLayer.h"

#include "app/ChartView.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "navigation/PositionFormatter.h"
#include "presentation/ViewPathBuilder.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace kelvox {

namespace {
QLabel* makeLabel(const QString& words, const char* role, QWidget* parent)
{
    auto* label = new QLabel(words, parent);
    label->setTextFormat(Qt::PlainText); // charts are strangers' files
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (role)
        label->setProperty("role", QLatin1String(role));
    return label;
}

QString toQString(const std::string& words)
{
    return QString::fromStdString(words);
}

/// Degrees to add to a cell's longitudes so that it lies where the view is.
double shiftFor(const CellGeometry& geometry, const ViewFrame& frame)
{
    const Rect view = frame.coveredBox(0);
    return 360 * std::round((view.center().x - geometry.bounds().center().x) / 360);
}
} // namespace

PickLayer::PickLayer(ChartHost& host)
    : QObject(&host.window())
    , m_host(host)
{
    connect(&host.chart(), &ChartView::clicked, this, &PickLayer::pick);
}

void PickLayer::pick(const ChartPointer& pointer)
{
    clear();
    const auto& scene = m_host.chart().scene();
    if (!scene)
        return;
    const ViewFrame frame = m_host.chart().frame();
    m_hits = ChartPick::at(
        scene->cells, *scene->portrayal, scene->settings, frame,
        {pointer.at.x() * frame.pixelsPerPoint, pointer.at.y() * frame.pixelsPerPoint});
    if (m_hits.empty())
        m_host.showCard({}, nullptr);
    else
        show(0);
    m_host.chart().update();
}

void PickLayer::mark(Position position)
{
    clear();
    m_mark = position;
    m_host.chart().update();
}

void PickLayer::clear()
{
    m_hits.clear();
    m_mark.reset();
    m_card.clear();
}

void PickLayer::show(std::size_t index)
{
    m_current = index;
    const auto description = ChartPick::describe(m_hits[index], m_host.chart().scene()->settings);
    auto* card = new QWidget;
    auto* rows = new QVBoxLayout(card);
    rows->setContentsMargins(0, 0, 0, 0);
    addHeading(*rows, description);
    addFacts(*rows, description);
    m_card = card;
    // Closed by hand: the outline goes, too.
    connect(card, &QObject::destroyed, this, [this, card] {
        if (m_card == card || m_card.isNull()) {
            clear();
            m_host.chart().update();
        }
    });
    m_host.showCard(toQString(description.title), card);
    m_host.chart().update();
}

void PickLayer::addHeading(QVBoxLayout& rows, const ChartPick::Description& description)
{
    const Theme& theme = Theme::theme();
    QWidget* const parent = rows.parentWidget();
    auto* heading = new QHBoxLayout;
    QString kind = toQString(description.className);
    if (!description.carrier.empty())
        kind += QStringLiteral(" · ") + toQString(description.carrier);
    heading->addWidget(makeLabel(kind, "dim", parent), 1);
    if (m_hits.size() > 1) {
        const auto addStep = [&](const char* icon, const char* key, std::size_t to) {
            auto* button = new QToolButton(parent);
            button->setIcon(theme.icon(QLatin1String(icon)));
            button->setFixedSize(theme.px(40), theme.px(40));
            button->setToolTip(text(key));
            button->setAccessibleName(text(key));
            connect(button, &QToolButton::clicked, this, [this, to] { show(to); });
            heading->addWidget(button);
        };
        addStep("previous", "NSPrevious", (m_current + m_hits.size() - 1) % m_hits.size());
        heading->addWidget(new QLabel(
            text("NSOneOf", {QString::number(m_current + 1), QString::number(m_hits.size())}),
            parent));
        addStep("next", "NSNext", (m_current + 1) % m_hits.size());
    }
    rows.addLayout(heading);
}

void PickLayer::addFacts(QVBoxLayout& rows, const ChartPick::Description& description)
{
    const Theme& theme = Theme::theme();
    auto* area = new QScrollArea(rows.parentWidget());
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget(area);
    auto* lines = new QVBoxLayout(page);
    lines->setContentsMargins(0, 0, theme.px(8), 0);
    auto* grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    grid->setHorizontalSpacing(theme.px(12));
    int row = 0;
    const auto add = [&](const QString& name, const QString& words, bool dim) {
        grid->addWidget(makeLabel(name, "dim", page), row, 0, Qt::AlignTop);
        grid->addWidget(makeLabel(words, dim ? "dim" : nullptr, page), row++, 1);
    };
    for (const auto& attribute : description.attributes)
        if (!attribute.ofRecord)
            add(toQString(attribute.name), toQString(attribute.words), false);
    if (description.position) {
        const auto& strings = textCatalog().strings();
        add(text("NSPosition"),
            toQString(NSPositionFormatter(NSPositionFormatter::Latitude, strings)
                          .stringForObjectValue(description.position->latitude)
                      + "  "
                      + NSPositionFormatter(NSPositionFormatter::Longitude, strings)
                            .stringForObjectValue(description.position->longitude)),
            false);
    }
    for (const auto& attribute : description.attributes)
        if (attribute.ofRecord)
            add(toQString(attribute.name), toQString(attribute.words), true);
    lines->addLayout(grid);
    addTexts(*lines, description);
    QString source = text("NSChartEdition",
                          {toQString(description.cell), toQString(description.edition),
                           toQString(description.update)});
    if (description.compiledScale > 0)
        source +=
            QStringLiteral(" · 1:") + QLocale(QLocale::English).toString(description.compiledScale);
    lines->addWidget(makeLabel(source, "dim", page));
    lines->addStretch(1);
    area->setWidget(page);
    page->ensurePolished();
    const int wanted = page->sizeHint().height() + theme.px(16);
    area->setMinimumHeight(std::min(wanted, theme.px(320)));
    rows.addWidget(area, 1);
}

void PickLayer::addTexts(QVBoxLayout& rows, const ChartPick::Description& description)
{
    QWidget* const parent = rows.parentWidget();
    for (const std::string& words : description.information)
        rows.addWidget(makeLabel(toQString(words), nullptr, parent));
    for (const ChartPick::TextFile& file : description.textFiles) {
        if (file.path.empty()) {
            rows.addWidget(
                makeLabel(text("NSTextFileMissing", {toQString(file.name)}), "dim", parent));
            continue;
        }
        auto* button = new QPushButton(toQString(file.name), parent);
        connect(button, &QPushButton::clicked, this, [this, file] {
            const auto words = ChartPick::read(file);
            auto* reader = new QPlainTextEdit(toQString(words ? *words : words.error().message));
            reader->setReadOnly(true);
            reader->setAccessibleName(toQString(file.name));
            reader->setMinimumHeight(Theme::theme().px(360));
            m_host.showCard(toQString(file.name), reader);
        });
        rows.addWidget(button);
    }
}

void PickLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const QColor ink = look.color("CHMGD");
    const QColor halo = look.color("DEPDW");
    const auto ring = [&](QPointF at) {
        for (const auto& [color, width] :
             {std::pair(halo, 5 * look.scale), std::pair(ink, 2.5 * look.scale)}) {
            painter.setPen(QPen(color, width));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(at, 18 * look.scale, 18 * look.scale);
        }
    };
    if (m_mark)
        ring(pointOf(*m_mark, frame));
    if (m_hits.empty())
        return;
    const ChartPick::Hit& hit = m_hits[m_current];
    const double shift = shiftFor(*hit.cell, frame);
    const auto at = [&](double longitude, double ordinate) {
        const Point p = frame.toPixels().map({longitude + shift, ordinate});
        return QPointF(p.x / frame.pixelsPerPoint, p.y / frame.pixelsPerPoint);
    };
    if (hit.sounding)
        return ring(at(hit.sounding->longitude, hit.sounding->ordinate));
    if (hit.kind == ChartPick::Kind::Mark) {
        if (const auto anchor = hit.cell->anchor(hit.feature))
            ring(at(anchor->x, anchor->y));
        return;
    }
    ViewPathBuilder paths(frame, shift);
    const Path& outline = paths.linePath(*hit.cell, hit.feature);
    QPainterPath line;
    for (std::size_t i = 0; i < outline.subPathCount(); ++i) {
        QPolygonF part;
        for (const Point p : outline.subPath(i))
            part << QPointF(p.x / frame.pixelsPerPoint, p.y / frame.pixelsPerPoint);
        line.addPolygon(part);
    }
    painter.strokePath(line, QPen(halo, 5 * look.scale));
    painter.strokePath(line, QPen(ink, 2.5 * look.scale));
}

void PickLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    menu.addAction(text("NSWhatIsHere"), this, [this, pointer] { pick(pointer); });
    if (m_measure)
        menu.addAction(text("NSMeasureFromHere"), this,
                       [this, pointer] { m_measure(pointer.position); });
}

bool PickLayer::cancel()
{
    if (m_hits.empty() && !m_mark)
        return false;
    m_host.showCard({}, nullptr);
    clear();
    m_host.chart().update();
    return true;
}

} // namespace kelvox
