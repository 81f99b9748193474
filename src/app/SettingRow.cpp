#include "app/SettingRow.h"

#include "app/Program.h"
#include "app/Text.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>

#include <cmath>

namespace kelvox {

namespace {
using Kind = SettingsCatalog::Kind;

QString wordsOf(const std::string& label)
{
    return label.starts_with("NS") ? text(label) : QString::fromStdString(label);
}

/// The wheel belongs to the list that the control lies in, not to a value passed over.
class NoWheel final : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() != QEvent::Wheel || static_cast<QWidget*>(object)->hasFocus())
            return QObject::eventFilter(object, event);
        event->ignore();
        return true;
    }
};

template <typename Control> Control* withoutWheel(Control* control)
{
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(new NoWheel(control));
    return control;
}
} // namespace

SettingRow::SettingRow(Program& program, const SettingsCatalog::Item& item, Detail detail,
                       QWidget* parent)
    : QWidget(parent)
    , m_program(program)
    , m_item(item)
{
    const Theme& theme = Theme::theme();
    const QString name = text(item.labelKey());
    setObjectName(QStringLiteral("setting.") + QString::fromStdString(item.key));
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, theme.px(2), 0, theme.px(2));
    grid->setColumnStretch(0, 1);
    grid->setVerticalSpacing(0);
    auto* control = makeControl();
    control->setAccessibleName(name);
    const QString help =
        textCatalog().strings().contains(item.helpKey()) ? text(item.helpKey()) : QString();
    control->setAccessibleDescription(help);
    if (item.kind == Kind::Switch) {
        static_cast<QCheckBox*>(control)->setText(name);
        grid->addWidget(control, 0, 0, 1, 2);
    } else {
        auto* label = new QLabel(name, this);
        label->setBuddy(control);
        label->setWordWrap(true);
        grid->addWidget(label, 0, 0);
        grid->addWidget(control, 0, 1);
        control->setMinimumWidth(theme.px(detail == Detail::Full ? 220 : 150));
    }
    control->setMinimumHeight(theme.px(40));
    setMinimumHeight(theme.px(40)); // the style makes switches lower than a finger needs
    if (detail == Detail::Full) {
        m_reset = new QToolButton(this);
        m_reset->setIcon(theme.icon(QStringLiteral("undo")));
        m_reset->setFixedSize(theme.px(40), theme.px(40));
        m_reset->setToolTip(text("NSReset"));
        m_reset->setAccessibleName(text("NSReset") + QStringLiteral(": ") + name);
        // Its place is kept while it is hidden, so that nothing moves under the hand.
        QSizePolicy policy = m_reset->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        m_reset->setSizePolicy(policy);
        connect(m_reset, &QToolButton::clicked, this,
                [this] { m_program.settings().remove(m_item.key); });
        grid->addWidget(m_reset, 0, 2);
        if (!help.isEmpty()) {
            auto* words = new QLabel(help, this);
            words->setProperty("role", QStringLiteral("dim"));
            words->setWordWrap(true);
            grid->addWidget(words, 1, 0, 1, 3);
        }
    } else {
        setToolTip(help);
    }
    connect(&program, &Program::settingChanged, this, [this](const QString& key) {
        if (key == QLatin1String(m_item.key))
            refresh();
    });
    connect(&program, &Program::schemeChanged, this, [this] {
        if (m_reset)
            m_reset->setIcon(Theme::theme().icon(QStringLiteral("undo")));
    });
    refresh();
}

QWidget* SettingRow::makeControl()
{
    switch (m_item.kind) {
    case Kind::Switch: {
        auto* box = new QCheckBox(this);
        connect(box, &QCheckBox::toggled, this, [this](bool on) { choose(on); });
        m_show = [this, box] {
            const QSignalBlocker quiet(box);
            box->setChecked(m_program.settings().boolean(m_item.key));
        };
        return box;
    }
    case Kind::Number:
        return makeNumber();
    case Kind::Choice:
        return makeChoice();
    case Kind::Color:
        return makeColor();
    case Kind::Text:
    case Kind::File:
    case Kind::State:
        break;
    }
    return makeText();
}

QWidget* SettingRow::makeNumber()
{
    auto* box = withoutWheel(new QDoubleSpinBox(this));
    box->setDecimals(m_item.decimals);
    box->setRange(m_item.minimum, m_item.maximum);
    box->setSingleStep(m_item.decimals == 0 ? 1 : std::pow(10, -std::min(m_item.decimals, 1)));
    box->setKeyboardTracking(false);
    if (!m_item.unit.empty())
        box->setSuffix(QLatin1Char(' ') + QString::fromStdString(m_item.unit));
    connect(box, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (m_item.decimals == 0)
            choose(std::llround(value));
        else
            choose(value);
    });
    m_show = [this, box] {
        const QSignalBlocker quiet(box);
        box->setValue(m_program.settings().number(m_item.key));
    };
    return box;
}

QWidget* SettingRow::makeChoice()
{
    auto* box = withoutWheel(new QComboBox(this));
    for (const auto& choice : m_item.choices)
        box->addItem(wordsOf(choice.label));
    connect(box, &QComboBox::activated, this,
            [this](int index) { choose(m_item.choices[static_cast<std::size_t>(index)].value); });
    m_show = [this, box] {
        // Compared as text or as a number, whatever kind the file has it in.
        const Settings& settings = m_program.settings();
        int found = -1;
        for (std::size_t i = 0; i < m_item.choices.size(); ++i) {
            const auto& value = m_item.choices[i].value;
            MemorySettings choice;
            choice.set("value", value);
            const bool same = std::holds_alternative<std::string>(value)
                ? settings.text(m_item.key) == choice.text("value")
                : settings.number(m_item.key, -1) == choice.number("value");
            if (same)
                found = static_cast<int>(i);
        }
        box->setCurrentIndex(found);
    };
    return box;
}

QWidget* SettingRow::makeColor()
{
    auto* button = new QPushButton(this);
    connect(button, &QPushButton::clicked, this, [this] {
        const auto now = static_cast<QRgb>(m_program.settings().integer(m_item.key));
        const QColor color = QColorDialog::getColor(QColor(now), this, text(m_item.labelKey()),
                                                    QColorDialog::DontUseNativeDialog);
        if (color.isValid())
            choose(static_cast<long long>(color.rgb() & 0xFFFFFFU));
    });
    m_show = [this, button] {
        const QColor color(static_cast<QRgb>(m_program.settings().integer(m_item.key)));
        QPixmap patch(Theme::theme().px(20), Theme::theme().px(20));
        patch.fill(color);
        button->setIcon(patch);
        button->setText(color.name());
    };
    return button;
}

QWidget* SettingRow::makeText()
{
    auto* line = new QLineEdit(this);
    connect(line, &QLineEdit::editingFinished, this,
            [this, line] { choose(line->text().toStdString()); });
    m_show = [this, line] {
        const QString value = QString::fromStdString(m_program.settings().text(m_item.key));
        if (line->text() != value)
            line->setText(value);
    };
    return line;
}

void SettingRow::choose(Settings::Value value)
{
    FileSettings& settings = m_program.settings();
    // What already counts is not written: leaving a field is no choice.
    const Settings::Value* const now = settings.find(m_item.key);
    if (!now || *now != value)
        settings.set(m_item.key, std::move(value));
}

void SettingRow::refresh()
{
    m_show();
    if (m_reset)
        m_reset->setVisible(m_program.settings().isSet(m_item.key)
                            && *m_program.settings().find(m_item.key) != m_item.standard);
}

} // namespace kelvox
