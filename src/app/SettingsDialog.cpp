#include "app/SettingsDialog.h"

#include "app/ClearAction.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Text.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace kelvox {

namespace {
constexpr const char* keysGroup = "NSSettings.Keys";

bool hasAll(const QString& place, const QStringList& words)
{
    return std::ranges::all_of(
        words, [&](const QString& word) { return place.contains(word, Qt::CaseInsensitive); });
}

QLabel* makeHeading(const QString& words, QWidget* parent)
{
    auto* label = new QLabel(words, parent);
    label->setProperty("role", QStringLiteral("heading"));
    return label;
}
} // namespace

SettingsDialog::SettingsDialog(Program& program, Commands& commands, QWidget* parent)
    : QDialog(parent)
    , m_program(program)
    , m_commands(commands)
    , m_search(new QLineEdit(this))
    , m_groups(new QListWidget(this))
    , m_groupBox(new QComboBox(this))
    , m_area(new QScrollArea(this))
    , m_message(new QLabel(this))
{
    const Theme& theme = Theme::theme();
    setWindowTitle(text("NSSettings"));
    setObjectName(QStringLiteral("settingsDialog"));

    m_search->setObjectName(QStringLiteral("settingsSearch"));
    m_search->setPlaceholderText(text("NSSearchSettings"));
    m_search->setAccessibleName(text("NSSearchSettings"));
    addClearAction(*m_search);
    m_groups->setAccessibleName(text("NSSettings"));
    auto groups = SettingsCatalog::catalog().groups();
    groups.emplace_back(keysGroup);
    for (const std::string& group : groups) {
        auto* item = new QListWidgetItem(text(group), m_groups);
        item->setData(Qt::UserRole, QString::fromStdString(group));
        m_groupBox->addItem(text(group));
    }
    m_groupBox->setAccessibleName(m_groups->accessibleName());
    connect(m_groupBox, &QComboBox::activated, m_groups,
            qOverload<int>(&QListWidget::setCurrentRow));
    connect(m_groups, &QListWidget::currentRowChanged, m_groupBox, &QComboBox::setCurrentIndex);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_message->setWordWrap(true);
    m_message->setProperty("role", QStringLiteral("warn"));
    m_message->hide();

    auto* rows = new QVBoxLayout(this);
    rows->addWidget(m_search);
    rows->addWidget(m_groupBox);
    auto* columns = new QHBoxLayout;
    columns->setSpacing(theme.px(16));
    columns->addWidget(m_groups);
    columns->addWidget(m_area, 1);
    rows->addLayout(columns, 1);
    rows->addWidget(m_message);
    auto* buttons = new FlowLayout;
    const auto addButton = [&](const char* key, void (SettingsDialog::*run)()) {
        auto* button = new QPushButton(text(key), this);
        button->setObjectName(QLatin1String(key));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, run);
        buttons->add(button, FlowLayout::Grow::Yes);
    };
    addButton("NSExportSettings", &SettingsDialog::exportSettings);
    addButton("NSImportSettings", &SettingsDialog::importSettings);
    addButton("NSClose", &QDialog::accept);
    rows->addLayout(buttons);

    connect(m_search, &QLineEdit::textChanged, this, &SettingsDialog::rebuild);
    connect(m_groups, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0)
            return;
        m_program.settings().set("settings.group",
                                 m_groups->item(row)->data(Qt::UserRole).toString().toStdString());
        if (m_search->text().isEmpty())
            rebuild();
        else
            m_search->clear();
    });
    auto* help = new QShortcut(QKeySequence::HelpContents, this);
    connect(help, &QShortcut::activated, this, [this] { showGroup(keysGroup); });
    auto* find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, m_search, qOverload<>(&QWidget::setFocus));
    showGroup(program.settings().text("settings.group", groups.front()));
    m_search->setFocus();
    fitToScale();
    // Later, because the control that changed it lies in the page that is made anew.
    connect(&program, &Program::schemeChanged, this, &SettingsDialog::fitToScale,
            Qt::QueuedConnection);
}

void SettingsDialog::fitToScale()
{
    const Theme& theme = Theme::theme();
    if (m_scale == theme.scale())
        return;
    m_scale = theme.scale();
    resizeDialog(*this, 820, 600);
    m_groups->setFixedWidth(theme.px(190));
    for (int row = 0; row < m_groups->count(); ++row)
        m_groups->item(row)->setSizeHint(QSize(0, theme.px(40)));
    rebuild();
}

void SettingsDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    // A narrow one gives all its width to the settings.
    const bool narrow = width() < Theme::theme().px(620);
    m_groups->setVisible(!narrow);
    m_groupBox->setVisible(narrow);
}

void SettingsDialog::showGroup(const std::string& group)
{
    m_search->clear();
    for (int row = 0; row < m_groups->count(); ++row)
        if (m_groups->item(row)->data(Qt::UserRole).toString().toStdString() == group)
            m_groups->setCurrentRow(row);
    if (m_groups->currentRow() < 0)
        m_groups->setCurrentRow(0);
}

void SettingsDialog::rebuild()
{
    m_message->hide();
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    const QStringList words = m_search->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    addSettings(*rows, words);
    addKeys(*rows, words);
    if (rows->count() == 0)
        rows->addWidget(new QLabel(text("NSNoSettingFound"), page));
    rows->addStretch(1);
    m_area->setWidget(page);
}

void SettingsDialog::addSettings(QVBoxLayout& rows, const QStringList& words)
{
    const auto* current = m_groups->currentItem();
    const std::string shown =
        current ? current->data(Qt::UserRole).toString().toStdString() : std::string();
    std::string heading;
    for (const auto& item : SettingsCatalog::catalog().items()) {
        if (item.kind == SettingsCatalog::Kind::State)
            continue;
        const QString place = text(item.group) + QLatin1Char(' ') + text(item.labelKey())
            + QLatin1Char(' ') + text(item.helpKey()) + QLatin1Char(' ')
            + QString::fromStdString(item.key);
        if (words.isEmpty() ? item.group != shown : !hasAll(place, words))
            continue;
        if (heading != item.group)
            rows.addWidget(makeHeading(text(heading = item.group), rows.parentWidget()));
        rows.addWidget(
            new SettingRow(m_program, item, SettingRow::Detail::Full, rows.parentWidget()));
    }
}

void SettingsDialog::addKeys(QVBoxLayout& rows, const QStringList& words)
{
    const auto* current = m_groups->currentItem();
    if (words.isEmpty()
        && (!current || current->data(Qt::UserRole).toString() != QLatin1String(keysGroup)))
        return;
    std::string heading;
    for (const Commands::Command& command : m_commands.all()) {
        const QString place = text(command.group) + QLatin1Char(' ') + command.action->text()
            + QLatin1Char(' ') + command.action->shortcut().toString(QKeySequence::NativeText);
        if (!hasAll(place, words))
            continue;
        if (heading != command.group)
            rows.addWidget(makeHeading(text(heading = command.group), rows.parentWidget()));
        addKey(rows, command);
    }
    if (words.isEmpty()) {
        auto* reset = new QPushButton(text("NSResetKeys"), rows.parentWidget());
        reset->setAutoDefault(false);
        connect(reset, &QPushButton::clicked, this, [this] {
            m_commands.resetKeys();
            rebuild();
        });
        rows.addWidget(reset, 0, Qt::AlignLeft);
    }
}

void SettingsDialog::addKey(QVBoxLayout& rows, const Commands::Command& command)
{
    const Theme& theme = Theme::theme();
    auto* row = new QHBoxLayout;
    auto* name = new QLabel(command.action->text(), rows.parentWidget());
    auto* edit = new QKeySequenceEdit(command.action->shortcut(), rows.parentWidget());
    edit->setAccessibleName(text("NSKeyOf", {command.action->text()}));
    if (auto* field = edit->findChild<QLineEdit*>())
        addClearAction(*field, [edit] {
            edit->clear();
            emit edit->editingFinished();
        });
    edit->setFixedWidth(theme.px(220));
    edit->setMinimumHeight(theme.px(40));
    name->setBuddy(edit);
    row->addWidget(name, 1);
    row->addWidget(edit);
    rows.addLayout(row);
    connect(edit, &QKeySequenceEdit::editingFinished, this, [this, edit, id = command.id] {
        const QAction* const action = m_commands.action(id);
        if (edit->keySequence() == action->shortcut())
            return;
        if (const auto* other = m_commands.setKey(id, edit->keySequence())) {
            m_message->setText(text(
                "NSKeyTaken",
                {edit->keySequence().toString(QKeySequence::NativeText), other->action->text()}));
            m_message->show();
            edit->setKeySequence(action->shortcut());
        } else {
            m_message->hide();
        }
    });
}

void SettingsDialog::exportSettings()
{
    const QString name =
        askForNewFile(*this, text("NSExportSettings"), QStringLiteral("kelvox-settings.json"),
                      text("NSSettingsFilter"), QStringLiteral("json"));
    if (name.isEmpty())
        return;
    const auto written = m_program.settings().exportTo(name.toStdString());
    m_message->setText(written ? text("NSSettingsExported", {name})
                               : QString::fromStdString(written.error().message));
    m_message->show();
}

void SettingsDialog::importSettings()
{
    const QString name = askForFile(*this, text("NSImportSettings"), text("NSSettingsFilter"));
    if (name.isEmpty())
        return;
    const auto taken = m_program.settings().importFrom(name.toStdString());
    rebuild();
    m_message->setText(taken ? countedText("NSSettingsImported", *taken)
                             : QString::fromStdString(taken.error().message));
    m_message->show();
}

} // namespace kelvox
