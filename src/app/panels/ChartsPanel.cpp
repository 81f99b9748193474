#include "app/panels/ChartsPanel.h"

#include "app/ChartOutlineLayer.h"
#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/ClearAction.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Text.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <array>

namespace kelvox {

ChartsPanel::ChartsPanel(ChartHost& host, ChartOutlineLayer& outlines)
    : SidePanel(QStringLiteral("charts"), "NSCharts", QStringLiteral("charts"))
    , m_host(host)
    , m_outlines(outlines)
    , m_places(new QListWidget(this))
    , m_search(new QLineEdit(this))
    , m_model(new ChartsModel(this))
    , m_list(new QTableView(this))
    , m_status(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_cancel(new QPushButton(text("NSCancel"), this))
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    buildFolders();
    if (const auto* choice = SettingsCatalog::catalog().find("chartChoice"))
        rows->addWidget(new SettingRow(host.program(), *choice, SettingRow::Detail::Compact, this));
    buildList();
    m_status->setProperty("role", QStringLiteral("dim"));
    m_status->setWordWrap(true);
    m_progress->hide();
    m_cancel->hide();
    m_cancel->setAccessibleName(text("NSCancel"));
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_host.charts().cancelScan(); });
    auto* reading = new QHBoxLayout;
    reading->addWidget(m_progress, 1);
    reading->addWidget(m_cancel);
    rows->addLayout(reading);
    rows->addWidget(m_status);

    ChartSet& charts = host.charts();
    connect(&charts, &ChartSet::chartsChanged, this, &ChartsPanel::reload);
    connect(&charts, &ChartSet::scanned, this, [this] {
        m_progress->hide();
        m_cancel->hide();
        reload();
    });
    connect(&charts, &ChartSet::progress, this, [this](int done, int total) {
        m_progress->setRange(0, total);
        m_progress->setValue(done);
        m_progress->setFormat(
            text("NSReadingCharts", {QStringLiteral("%v"), QStringLiteral("%m")}));
        m_progress->setVisible(done < total);
        m_cancel->setVisible(done < total);
    });
    reload();
}

void ChartsPanel::buildFolders()
{
    const Theme& theme = Theme::theme();
    auto* rows = static_cast<QVBoxLayout*>(layout());
    m_places->setAccessibleName(text("NSChartFolders"));
    m_places->setFixedHeight(theme.px(96));
    m_places->setTextElideMode(Qt::ElideLeft);
    rows->addWidget(m_places);
    auto* buttons = new FlowLayout;
    const auto addButton = [&](const char* key, auto run) {
        auto* button = new QPushButton(text(key), this);
        button->setMinimumHeight(theme.px(40));
        connect(button, &QPushButton::clicked, this, run);
        buttons->add(button, FlowLayout::Grow::Yes);
        return button;
    };
    addButton("NSAddFolder", [this] { addFolder(); });
    m_remove = addButton("NSRemove", [this] { removePlace(); });
    addButton("NSLookAgain", [this] { m_host.charts().rescan(); });
    addButton("NSDemo", [this] { m_host.openDemo(); });
    rows->addLayout(buttons);
    connect(m_places, &QListWidget::currentRowChanged, this,
            [this](int row) { m_remove->setEnabled(row >= 0); });
}

void ChartsPanel::buildList()
{
    const Theme& theme = Theme::theme();
    auto* rows = static_cast<QVBoxLayout*>(layout());
    m_search->setPlaceholderText(text("NSSearchCharts"));
    m_search->setAccessibleName(text("NSSearchCharts"));
    addClearAction(*m_search);
    m_search->setMinimumHeight(theme.px(40));
    rows->addWidget(m_search);
    m_list->setModel(m_model);
    m_list->setAccessibleName(text("NSCharts"));
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(ChartsModel::Name, Qt::AscendingOrder);
    m_list->setShowGrid(false);
    m_list->setMouseTracking(true);
    m_list->setWordWrap(false);
    m_list->verticalHeader()->hide();
    m_list->verticalHeader()->setDefaultSectionSize(theme.px(36));
    auto* header = m_list->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setSectionResizeMode(ChartsModel::Title, QHeaderView::Stretch);
    constexpr std::array<int, ChartsModel::Columns> widths{96, 0, 92, 48, 92, 60};
    for (int column = 0; column < ChartsModel::Columns; ++column)
        if (const int width = widths.at(static_cast<std::size_t>(column)); width > 0)
            header->resizeSection(column, theme.px(width));
    rows->addWidget(m_list, 1);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& words) {
        m_model->setFilter(words);
        updateStatus();
    });
    connect(m_list, &QTableView::entered, this, &ChartsPanel::point);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ChartsPanel::point);
    connect(m_list, &QTableView::activated, this, [this](const QModelIndex& index) {
        if (const auto chart = m_model->record(index.row()); chart && chart->isUsable())
            m_host.chart().showBounds(chart->bounds);
    });
}

void ChartsPanel::reload()
{
    const ChartSet& charts = m_host.charts();
    const auto selected = m_model->record(m_list->currentIndex().row());
    m_model->setRecords(charts.charts());
    if (selected)
        if (const int row = m_model->rowOf(selected->path); row >= 0)
            m_list->setCurrentIndex(m_model->index(row, 0));
    const int row = m_places->currentRow();
    m_places->clear();
    for (const auto& place : charts.places())
        m_places->addItem(QString::fromStdString(place.string()));
    m_places->setCurrentRow(std::min(row, m_places->count() - 1));
    m_remove->setEnabled(m_places->currentRow() >= 0);
    updateStatus();
}

void ChartsPanel::updateStatus()
{
    const ChartSet& charts = m_host.charts();
    m_status->setText(charts.charts().empty()
                          ? text("NSNoChartsYet")
                          : countedText("NSChartCount", charts.charts().size(),
                                        {QString::number(m_model->rowCount())}));
}

void ChartsPanel::addFolder()
{
    const QString name = askForFolder(m_host.window(), text("NSOpenFolderTitle"));
    if (!name.isEmpty())
        m_host.openFiles({std::filesystem::path(name.toStdString())});
    reload();
}

void ChartsPanel::removePlace()
{
    auto places = m_host.charts().places();
    const auto row = static_cast<std::size_t>(m_places->currentRow());
    if (row >= places.size())
        return;
    places.erase(places.begin() + static_cast<std::ptrdiff_t>(row));
    m_host.setChartPlaces(places);
    reload();
}

void ChartsPanel::point(const QModelIndex& index)
{
    m_outlines.setPointed(m_model->record(index.row()));
    m_host.chart().update();
}

void ChartsPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    m_host.chart().update();
}

void ChartsPanel::hideEvent(QHideEvent* event)
{
    SidePanel::hideEvent(event);
    m_outlines.setPointed(nullptr);
    m_host.chart().update();
}

} // namespace kelvox
