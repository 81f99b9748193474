#include "app/panels/AlarmsPanel.h"

#include "app/Program.h"
#include "app/Text.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kelvox {

AlarmsPanel::AlarmsPanel(ChartHost& host)
    : SidePanel(QStringLiteral("alarms"), "NSAlarms", QStringLiteral("alarm"))
    , m_host(host)
    , m_list(new QTreeWidget(this))
    , m_acknowledge(new QPushButton(text("NSAcknowledgeAll"), this))
    , m_clear(new QPushButton(text("NSClearHistory"), this))
{
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(false);
    m_list->setWordWrap(true);
    m_list->setHeaderLabels({text("NSTime"), text("NSAlarm")});
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_list->setAccessibleName(text("NSAlarms"));
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_list, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_acknowledge);
    buttons->addWidget(m_clear);
    rows->addLayout(buttons);
    AlarmCenter& alarms = host.program().alarms();
    connect(m_acknowledge, &QPushButton::clicked, &alarms, &AlarmCenter::acknowledgeAll);
    connect(m_clear, &QPushButton::clicked, &alarms, &AlarmCenter::clearHistory);
    connect(&alarms, &AlarmCenter::changed, this, &AlarmsPanel::reload);
    reload();
}

void AlarmsPanel::reload()
{
    const AlarmCenter& alarms = m_host.program().alarms();
    m_list->clear();
    for (const AlarmEntry& entry : alarms.history()) {
        const auto raised = QDateTime::fromSecsSinceEpoch(
            std::chrono::duration_cast<std::chrono::seconds>(entry.raised.time_since_epoch())
                .count());
        QString words = QString::fromStdString(entry.message);
        if (!entry.informativeText.empty())
            words += QLatin1Char('\n') + QString::fromStdString(entry.informativeText);
        auto* row =
            new QTreeWidgetItem(m_list, {QLocale().toString(raised, QLocale::ShortFormat), words});
        if (!entry.acknowledged) {
            QFont font = row->font(1);
            font.setBold(true);
            row->setFont(1, font);
        }
    }
    if (alarms.history().empty()) {
        auto* row = new QTreeWidgetItem(m_list, {QString(), text("NSNoAlarms")});
        row->setFlags(Qt::NoItemFlags);
    }
    m_acknowledge->setEnabled(!alarms.active().empty());
    m_clear->setEnabled(!alarms.history().empty());
}

} // namespace kelvox
