#include "app/panels/InstrumentsPanel.h"

#include "app/Gauges.h"
#include "app/SettingControls.h"
#include "app/Text.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace kelvox {

InstrumentsPanel::InstrumentsPanel(ChartHost& host)
    : SidePanel(QStringLiteral("instruments"), "NSInstruments", QStringLiteral("instruments"))
    , m_host(host)
    , m_chooser(new QWidget(this))
    , m_choice(new QListWidget(m_chooser))
    , m_chooseButton(new QPushButton(text("NSChooseInstruments"), this))
    , m_upButton(new QPushButton(text("NSGaugeUp"), m_chooser))
    , m_downButton(new QPushButton(text("NSGaugeDown"), m_chooser))
{
    Program& program = host.program();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* content = new QWidget(scroll);
    auto* gauges = new QVBoxLayout(content);
    gauges->setContentsMargins(0, 0, 0, 0);
    gauges->addWidget(new GaugeStack(program, 2, content));
    gauges->addStretch(1);
    scroll->setWidget(content);
    rows->addWidget(scroll, 1);

    m_choice->setAccessibleName(text("NSChooseInstruments"));
    m_choice->setDragDropMode(QAbstractItemView::InternalMove);
    auto* chooser = new QVBoxLayout(m_chooser);
    chooser->setContentsMargins(0, 0, 0, 0);
    chooser->addWidget(makeHint(text("NSChooseInstrumentsHint"), m_chooser));
    chooser->addWidget(m_choice, 1);
    chooser->addWidget(makeSwitch(program, "windApparent", "NSWindApparent", m_chooser));
    auto* moves = new QHBoxLayout;
    moves->addWidget(m_upButton);
    moves->addWidget(m_downButton);
    chooser->addLayout(moves);
    m_chooser->hide();
    rows->addWidget(m_chooser, 2);
    m_chooseButton->setCheckable(true);
    rows->addWidget(m_chooseButton);
    for (QPushButton* button : {m_chooseButton, m_upButton, m_downButton})
        makeTouchable(program, button);

    connect(m_chooseButton, &QPushButton::toggled, m_chooser, &QWidget::setVisible);
    connect(m_upButton, &QPushButton::clicked, this, [this] { moveChoice(-1); });
    connect(m_downButton, &QPushButton::clicked, this, [this] { moveChoice(1); });
    connect(m_choice, &QListWidget::itemChanged, this, &InstrumentsPanel::takeChoice);
    connect(m_choice->model(), &QAbstractItemModel::rowsMoved, this, &InstrumentsPanel::takeChoice);
    connect(&program, &Program::settingChanged, this, [this](const QString& key) {
        if (key == QLatin1String("instruments.shown"))
            fillChoice();
    });
    fillChoice();
    restyle();
}

void InstrumentsPanel::restyle()
{
    for (int i = 0; i < m_choice->count(); ++i)
        m_choice->item(i)->setSizeHint(QSize(0, Theme::theme().px(40)));
}

void InstrumentsPanel::fillChoice()
{
    const auto chosen = chosenGauges(m_host.program().settings());
    // A row that the user just moved or ticked is where it belongs already.
    std::vector<GaugeKind> shown;
    for (int i = 0; i < m_choice->count(); ++i)
        if (m_choice->item(i)->checkState() == Qt::Checked)
            shown.push_back(static_cast<GaugeKind>(m_choice->item(i)->data(Qt::UserRole).toInt()));
    if (m_choice->count() > 0 && shown == chosen)
        return;
    auto order = chosen;
    for (const GaugeKind kind : allGauges())
        if (std::ranges::find(chosen, kind) == chosen.end())
            order.push_back(kind);
    const QSignalBlocker quiet(m_choice);
    m_choice->clear();
    for (const GaugeKind kind : order) {
        auto* item = new QListWidgetItem(gaugeName(kind), m_choice);
        item->setData(Qt::UserRole, static_cast<int>(kind));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable
                       | Qt::ItemIsDragEnabled);
        const bool isChosen = std::ranges::find(chosen, kind) != chosen.end();
        item->setCheckState(isChosen ? Qt::Checked : Qt::Unchecked);
    }
    restyle();
}

void InstrumentsPanel::takeChoice()
{
    std::vector<GaugeKind> chosen;
    for (int i = 0; i < m_choice->count(); ++i)
        if (m_choice->item(i)->checkState() == Qt::Checked)
            chosen.push_back(static_cast<GaugeKind>(m_choice->item(i)->data(Qt::UserRole).toInt()));
    chooseGauges(m_host.program().settings(), chosen);
}

void InstrumentsPanel::moveChoice(int by)
{
    const int row = m_choice->currentRow();
    const int target = row + by;
    if (row < 0 || target < 0 || target >= m_choice->count())
        return;
    {
        const QSignalBlocker quiet(m_choice);
        m_choice->insertItem(target, m_choice->takeItem(row));
        m_choice->setCurrentRow(target);
    }
    takeChoice();
}

} // namespace kelvox
