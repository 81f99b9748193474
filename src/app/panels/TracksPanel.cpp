#include "app/panels/TracksPanel.h"

#include "app/FlowLayout.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavRecords.h"
#include "app/panels/ListView.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace kelvox {

namespace {
/// Colours that can be told apart on the chart by day; 0 is the chart's own.
constexpr std::pair<const char*, long long> trackColors[] = {
    {"NSColorChart", 0x000000}, {"NSColorRed", 0xC81E1E},  {"NSColorOrange", 0xD97706},
    {"NSColorGreen", 0x15803D}, {"NSColorBlue", 0x1D4ED8}, {"NSColorMagenta", 0xA21CAF},
    {"NSColorBrown", 0x78350F}};

QIcon swatch(long long color, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(color == 0
                    ? Theme::theme().colors().text
                    : QColor::fromRgb(static_cast<QRgb>(color))
                          .darker(Theme::theme().scheme() == ColorScheme::Night ? 250 : 100));
    return pixmap;
}
} // namespace

TracksPanel::TracksPanel(NavActions& actions)
    : SidePanel(QStringLiteral("tracks"), "NSTracks", QStringLiteral("track"))
    , m_actions(actions)
    , m_table(new TrackTable(actions.program(), this))
    , m_record(new QCheckBox(text("NSRecordTrack"), this))
    , m_interval(new QSpinBox(this))
    , m_color(new QToolButton(this))
    , m_newLine(new QPushButton(text("NSNewTrackLine"), this))
    , m_list(new ListView(this))
    , m_show(new QPushButton(text("NSShow"), this))
    , m_route(new QPushButton(text("NSMakeRoute"), this))
    , m_delete(new QPushButton(text("NSDelete"), this))
    , m_import(new QToolButton(this))
    , m_export(new QToolButton(this))
{
    m_interval->setRange(1, 3600);
    m_interval->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_interval->setSuffix(QStringLiteral(" s"));
    m_interval->setKeyboardTracking(false);
    m_interval->setToolTip(text("NSTrackInterval"));
    m_interval->setAccessibleName(text("NSTrackInterval"));
    m_color->setToolTip(text("NSTrackColor"));
    m_color->setAccessibleName(text("NSTrackColor"));
    m_list->setModel(m_table);
    m_list->setAccessibleName(text("NSTracks"));
    m_list->setEmptyText(text("NSNoTracks"));
    m_list->sortByColumn(TrackTable::Begin, Qt::DescendingOrder);
    m_list->header()->setSectionResizeMode(TrackTable::Begin, QHeaderView::Stretch);
    m_import->setToolTip(text("NSImport"));
    m_import->setAccessibleName(text("NSImport"));
    m_export->setToolTip(text("NSExport"));
    m_export->setAccessibleName(text("NSExport"));

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* recording = new FlowLayout;
    recording->add(m_record, FlowLayout::Grow::Yes);
    recording->add(m_interval);
    recording->add(m_color);
    auto* buttons = new FlowLayout;
    for (QPushButton* button : {m_show, m_route, m_delete})
        buttons->add(button, FlowLayout::Grow::Yes);
    buttons->add(m_import);
    buttons->add(m_export);
    rows->addLayout(recording);
    rows->addWidget(m_newLine);
    rows->addWidget(m_list, 1);
    rows->addLayout(buttons);

    Program& program = actions.program();
    connect(m_record, &QCheckBox::clicked, this,
            [&program](bool on) { program.settings().set("recordTrack", on); });
    connect(m_interval, &QSpinBox::valueChanged, this, [&program](int seconds) {
        program.settings().set("trackInterval", static_cast<long long>(seconds));
    });
    connect(m_color, &QToolButton::clicked, this, &TracksPanel::chooseColor);
    connect(m_newLine, &QPushButton::clicked, &actions, &NavActions::newTrackLine);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &TracksPanel::lineChosen);
    connect(m_list, &ListView::rowHovered, this, [this](int row) {
        const TrackLine* line = m_table->line(row);
        m_actions.selection().hover(nullptr, nullptr, line ? line->first : Route::notFound);
    });
    const auto showOnChart = [this] {
        std::vector<Position> positions;
        const TracksModel& tracks = m_actions.program().tracks();
        for (const int row : m_list->selectedRows())
            if (const TrackLine* line = m_table->line(row))
                for (std::size_t i = 0; i < line->count; ++i)
                    positions.push_back(tracks.track(line->first + i)->positionOnGPS());
        m_actions.showOnChart(positions);
    };
    connect(m_show, &QPushButton::clicked, this, showOnChart);
    connect(m_list, &QTreeView::doubleClicked, this, showOnChart);
    connect(m_route, &QPushButton::clicked, this, [this] {
        const auto chosen = selected();
        m_actions.routeFromTrack(chosen.size() == 1 ? chosen.front() : Route::notFound);
    });
    connect(m_delete, &QPushButton::clicked, this,
            [this] { m_actions.removeTrackLines(selected()); });
    connect(m_import, &QToolButton::clicked, &actions, &NavActions::importTracks);
    connect(m_export, &QToolButton::clicked, &actions, &NavActions::exportRecords);
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* send = new QAction(text("NSSendToReceiver"), m_list);
    connect(send, &QAction::triggered, this, [this] {
        auto records = trackLinesAt(m_actions.program(), selected());
        if (records.tracks.empty())
            return;
        const QString name = countedText("NSExportTracks", records.tracks.size());
        m_actions.sendToReceiver(name, std::move(records));
    });
    m_list->addAction(send);
    auto* erase = new QAction(text("NSDelete"), m_list);
    erase->setShortcut(QKeySequence::Delete);
    erase->setShortcutContext(Qt::WidgetShortcut);
    connect(erase, &QAction::triggered, m_delete, &QPushButton::click);
    m_list->addAction(erase);
    connect(&program, &Program::tracksChanged, this, &TracksPanel::refresh);
    connect(&program, &Program::unitsChanged, this, &TracksPanel::refresh);
    connect(&program, &Program::settingChanged, this, &TracksPanel::refreshSettings);
    connect(&actions.selection(), &NavSelection::changed, this, &TracksPanel::followSelection);
    restyle();
    lineChosen();
}

void TracksPanel::restyle()
{
    const Theme& theme = Theme::theme();
    m_list->restyle();
    const std::pair<int, int> widths[] = {
        {TrackTable::Duration, 64}, {TrackTable::Length, 92}, {TrackTable::Speed, 84}};
    for (const auto& [column, width] : widths) {
        m_list->header()->setSectionResizeMode(column, QHeaderView::Fixed);
        m_list->header()->resizeSection(column, theme.px(width));
    }
    m_import->setIcon(theme.icon(QStringLiteral("import")));
    m_export->setIcon(theme.icon(QStringLiteral("export")));
    for (QToolButton* button : {m_import, m_export, m_color})
        button->setFixedSize(theme.px(40), theme.px(40));
    for (QWidget* widget : std::initializer_list<QWidget*>{m_record, m_interval, m_newLine, m_show,
                                                           m_route, m_delete})
        widget->setMinimumHeight(theme.px(40));
    refreshSettings();
}

void TracksPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    refresh();
}

void TracksPanel::refresh()
{
    if (!isVisible())
        return;
    m_table->refresh();
}

void TracksPanel::refreshSettings()
{
    const Settings& settings = m_actions.program().settings();
    const QSignalBlocker blocked(m_interval);
    m_record->setChecked(settings.boolean("recordTrack", true));
    m_interval->setValue(static_cast<int>(settings.integer("trackInterval", 30)));
    m_color->setIcon(swatch(settings.integer("trackColor"), Theme::theme().px(20)));
}

std::vector<std::size_t> TracksPanel::selected() const
{
    std::vector<std::size_t> lines;
    for (const int row : m_list->selectedRows())
        lines.push_back(m_table->at(row));
    return lines;
}

void TracksPanel::lineChosen()
{
    const auto chosen = selected();
    m_show->setEnabled(!chosen.empty());
    m_route->setEnabled(chosen.size() == 1);
    m_delete->setEnabled(!chosen.empty());
    if (!m_following)
        m_actions.selection().selectTrackLine(chosen.size() == 1 ? chosen.front()
                                                                 : Route::notFound);
}

void TracksPanel::followSelection()
{
    const auto line = m_actions.selection().trackLine();
    if (const auto chosen = selected(); chosen.size() == 1 && chosen.front() == line)
        return;
    m_following = true;
    const int row = line == Route::notFound ? -1 : m_table->rowOf(line);
    if (row >= 0) {
        m_list->setCurrentIndex(m_table->index(row, 0));
        m_list->scrollTo(m_table->index(row, 0));
    } else if (line != Route::notFound || m_list->selectedRows().size() == 1) {
        m_list->selectionModel()->clear();
    }
    lineChosen();
    m_following = false;
}

void TracksPanel::chooseColor()
{
    QMenu menu(this);
    Program& program = m_actions.program();
    for (const auto& [key, color] : trackColors)
        menu.addAction(swatch(color, Theme::theme().px(20)), text(key), this,
                       [&program, color = color] { program.settings().set("trackColor", color); });
    menu.exec(m_color->mapToGlobal(QPoint(0, m_color->height())));
}

void TracksPanel::show(std::size_t firstOfLine)
{
    m_table->refresh();
    m_actions.selection().selectTrackLine(firstOfLine);
    followSelection();
}

} // namespace kelvox
