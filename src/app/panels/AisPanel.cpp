#include "app/panels/AisPanel.h"

#include "app/AisTargetDetails.h"
#include "app/ClearAction.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"
#include "app/panels/AisTableModel.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QTableView>
#include <QVBoxLayout>

#include <utility>

namespace kelvox {

AisPanel::AisPanel(ChartHost& host)
    : SidePanel(QStringLiteral("ais"), "NSAis", QStringLiteral("ais"))
    , m_host(host)
    , m_model(new AisTableModel(host.program().live(), this))
    , m_search(new QLineEdit(this))
    , m_table(new QTableView(this))
    , m_empty(makeHint(text("NSNoTargets"), this))
    , m_count(makeHint({}, this))
    , m_alarm(new QCheckBox(text("NSProximityAlarm"), this))
    , m_details(new AisTargetDetails(host, this))
{
    Program& program = host.program();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    m_search->setObjectName(QStringLiteral("aisSearch"));
    m_search->setPlaceholderText(text("NSSearchTargets"));
    m_search->setAccessibleName(text("NSSearchTargets"));
    addClearAction(*m_search);
    makeTouchable(program, m_search);
    rows->addWidget(m_search);

    m_table->setObjectName(QStringLiteral("aisTable"));
    m_table->setAccessibleName(text("NSAis"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setShowGrid(false);
    m_table->setWordWrap(false);
    m_table->setMouseTracking(true);
    m_table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->horizontalHeader()->setSortIndicator(1, Qt::AscendingOrder);
    m_table->setSortingEnabled(true);
    m_table->viewport()->installEventFilter(this);
    rows->addWidget(m_table, 3);
    rows->addWidget(m_empty);
    rows->addWidget(m_count);
    rows->addWidget(m_details);
    m_details->hide();

    auto* switches = new FlowLayout;
    switches->setSpacing(Theme::theme().px(8));
    for (const char* key : {"showUnderway", "showStationary", "showVesselNames", "showAISClassB"})
        switches->add(makeSwitch(program, key, std::string("NSSetting.") + key, this, true),
                      FlowLayout::Grow::Yes);
    rows->addLayout(switches);
    auto* numbers = new QGridLayout;
    numbers->setColumnStretch(0, 1);
    auto* vectors = new QLabel(text("NSSetting.aisVectorMinutes"), this);
    vectors->setWordWrap(true);
    numbers->addWidget(vectors, 0, 0);
    numbers->addWidget(makeNumber(program, "aisVectorMinutes", "NSSetting.aisVectorMinutes",
                                  {.highest = 60,
                                   .fallback = 6,
                                   .unit = [] { return std::pair(1.0, text("NSMinutesUnit")); }},
                                  this),
                       0, 1);
    m_alarm->setObjectName(QStringLiteral("proximityAlarm"));
    makeTouchable(program, m_alarm);
    numbers->addWidget(m_alarm, 1, 0);
    numbers->addWidget(makeNumber(program, "aisProximityDistance", "NSSetting.aisProximityDistance",
                                  {.highest = 100,
                                   .step = 0.1,
                                   .decimals = 2,
                                   .fallback = AISController::defaultProximityDistance,
                                   .unit = [] { return std::pair(1.0, QStringLiteral("NM")); }},
                                  this),
                       1, 1);
    rows->addLayout(numbers);

    constexpr auto listPace = std::chrono::milliseconds(400); // figures are read, not watched
    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(listPace);
    LiveData& live = program.live();
    const auto soon = [this] {
        if (isVisible() && !m_reloadTimer.isActive())
            m_reloadTimer.start();
    };
    connect(&m_reloadTimer, &QTimer::timeout, this, &AisPanel::reload);
    connect(&live, &LiveData::targetsChanged, this, soon);
    connect(&program, &Program::unitsChanged, this, soon);
    connect(&live, &LiveData::selectionChanged, this, &AisPanel::showSelection);
    connect(&live, &LiveData::proximityAlarmChanged, this, &AisPanel::reload);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& words) {
        m_model->search(words);
        reload();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { select(current); });
    connect(m_table, &QTableView::doubleClicked, this, [this](const QModelIndex& index) {
        const auto* target = m_model->target(index);
        if (target && target->isPositionKnown())
            m_host.showPosition(target->positionOnGPS());
    });
    connect(m_table, &QTableView::entered, this, [this](const QModelIndex& index) {
        const auto* target = m_model->target(index);
        m_host.program().live().pointAtTarget(target ? std::optional(target->mmsi())
                                                     : std::nullopt);
    });
    connect(m_alarm, &QCheckBox::clicked, this,
            [&live](bool on) { live.ais().setProximityAlarm(on); });
    restyle();
    reload();
}

void AisPanel::restyle()
{
    const Theme& theme = Theme::theme();
    m_table->verticalHeader()->setDefaultSectionSize(theme.px(36));
    const int widths[] = {150, 100, 84, 82, 72, 66, 110, 52, 80, 72, 130, 80, 100};
    for (int i = 0; i < m_model->columnCount(); ++i)
        m_table->setColumnWidth(i, theme.px(widths[i]));
}

void AisPanel::showEvent(QShowEvent* event)
{
    SidePanel::showEvent(event);
    m_model->search(m_search->text());
    reload();
}

bool AisPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Leave)
        m_host.program().live().pointAtTarget(std::nullopt);
    return SidePanel::eventFilter(watched, event);
}

void AisPanel::reload()
{
    m_model->sync();
    LiveData& live = m_host.program().live();
    const auto total = live.ais().model().count();
    m_empty->setVisible(total == 0);
    m_table->setVisible(total > 0);
    m_count->setVisible(total > 0);
    const auto rows = static_cast<std::size_t>(m_model->rowCount());
    m_count->setText(rows == total
                         ? countedText("NSTargetCount", total)
                         : text("NSTargetsFound", {QString::number(rows), QString::number(total)}));
    const QSignalBlocker quiet(m_alarm);
    m_alarm->setChecked(live.ais().proximityAlarm());
    showSelection();
}

void AisPanel::showSelection()
{
    const QModelIndex selected = m_model->selectedIndex();
    auto* selection = m_table->selectionModel();
    if (selection->currentIndex().row() != selected.row()) {
        const QSignalBlocker quiet(selection);
        // The row follows its target without scrolling away what the user reads.
        selection->setCurrentIndex(selected,
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_table->viewport()->update();
    }
    const auto mmsi = m_host.program().live().selectedTarget();
    if (std::exchange(m_shown, mmsi) != mmsi && selected.isValid())
        m_table->scrollTo(selected);
    m_details->setVisible(mmsi.has_value());
}

void AisPanel::select(const QModelIndex& index)
{
    const auto* target = m_model->target(index);
    if (!target)
        return;
    m_host.program().live().selectTarget(target->mmsi());
}

} // namespace kelvox
