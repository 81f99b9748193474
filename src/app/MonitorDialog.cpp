#include "app/MonitorDialog.h"

#include "app/ClearAction.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"

#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace kelvox {

MonitorModel::MonitorModel(MonitorLog& log, QObject* parent)
    : QAbstractListModel(parent)
    , m_log(log)
{
}

int MonitorModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

QVariant MonitorModel::data(const QModelIndex& index, int role) const
{
    const auto row = static_cast<std::size_t>(index.row());
    if (role != Qt::DisplayRole || row >= m_lines.size())
        return {};
    return QString::fromStdString(m_lines[row]);
}

void MonitorModel::setFilter(const QString& words)
{
    m_filter = words.toStdString();
    m_revision = ~0ULL;
    refresh();
}

bool MonitorModel::refresh()
{
    const auto revision = m_log.revision();
    if (revision == m_revision)
        return false;
    m_revision = revision;
    beginResetModel();
    m_lines = m_log.lines(m_filter);
    endResetModel();
    return true;
}

MonitorDialog::MonitorDialog(Program& program, MonitorLog& log, const QString& title,
                             QWidget* parent)
    : QDialog(parent)
    , m_log(log)
    , m_model(new MonitorModel(log, this))
    , m_list(new QListView(this))
    , m_filter(new QLineEdit(this))
    , m_pause(new QPushButton(text("NSPause"), this))
    , m_state(makeHint({}, this))
{
    setWindowTitle(title);
    resizeDialog(*this, 640, 460);
    auto* rows = new QVBoxLayout(this);
    m_filter->setPlaceholderText(text("NSMonitorFilter"));
    m_filter->setAccessibleName(text("NSMonitorFilter"));
    addClearAction(*m_filter);
    rows->addWidget(m_filter);
    m_list->setModel(m_model);
    m_list->setUniformItemSizes(true);
    m_list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setAccessibleName(title);
    rows->addWidget(m_list, 1);
    rows->addWidget(m_state);
    auto* buttons = new FlowLayout;
    auto* clear = new QPushButton(text("NSClear"), this);
    auto* save = new QPushButton(text("NSSaveAs"), this);
    auto* close = new QPushButton(text("NSClose"), this);
    m_pause->setCheckable(true);
    m_pause->setChecked(log.isPaused());
    for (QPushButton* button : {m_pause, clear, save, close})
        buttons->add(button, FlowLayout::Grow::Yes);
    rows->addLayout(buttons);
    for (QWidget* control : std::initializer_list<QWidget*>{m_filter, m_pause, clear, save, close})
        makeTouchable(program, control);

    connect(m_filter, &QLineEdit::textChanged, m_model, &MonitorModel::setFilter);
    connect(m_pause, &QPushButton::toggled, this, [this](bool on) {
        m_log.setPaused(on);
        refresh();
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        m_log.clear();
        refresh();
    });
    connect(save, &QPushButton::clicked, this, &MonitorDialog::save);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(&m_timer, &QTimer::timeout, this, &MonitorDialog::refresh);
    m_timer.setInterval(std::chrono::milliseconds(250));
}

void MonitorDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_timer.start();
    refresh();
}

void MonitorDialog::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    m_timer.stop();
}

void MonitorDialog::refresh()
{
    // The newest line stays in sight unless the user has scrolled up to read.
    QScrollBar* const bar = m_list->verticalScrollBar();
    const bool follows = bar->value() >= bar->maximum() - 1;
    const int place = bar->value();
    if (m_model->refresh()) {
        if (follows)
            m_list->scrollToBottom();
        else
            bar->setValue(place);
    }
    const QString words = m_log.isPaused()
        ? countedText("NSMonitorPaused", static_cast<std::size_t>(m_log.missed()))
        : m_model->rowCount() == 0
        ? text("NSMonitorEmpty")
        : countedText("NSLineCount", static_cast<std::size_t>(m_model->rowCount()));
    if (m_state->text() != words)
        m_state->setText(words);
}

void MonitorDialog::save()
{
    const QString file =
        askForNewFile(*this, text("NSSaveAs"), QStringLiteral("monitor.log"), text("NSLogFilter"));
    if (file.isEmpty())
        return;
    const auto saved = m_log.save(file.toStdString(), m_model->filter());
    m_state->setText(saved ? text("NSSaved") : QString::fromStdString(saved.error().message));
}

} // namespace kelvox
