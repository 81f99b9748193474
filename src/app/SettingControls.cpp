#include "app/SettingControls.h"

#include "app/Program.h"
#include "app/Text.h"

#include <QSignalBlocker>

#include <variant>

namespace kelvox {

namespace {
constexpr double touchHeight = 40;

/// Calls `show` now and whenever the setting has another value.
void follow(Program& program, const std::string& key, QWidget* control,
            const std::function<void()>& show)
{
    QObject::connect(&program, &Program::settingChanged, control,
                     [key = QString::fromStdString(key), show](const QString& changed) {
                         if (changed == key)
                             show();
                     });
    show();
}
} // namespace

void makeTouchable(Program& program, QWidget* control)
{
    const auto fit = [control] { control->setMinimumHeight(Theme::theme().px(touchHeight)); };
    QObject::connect(&program, &Program::schemeChanged, control, fit);
    fit();
}

QCheckBox* makeSwitch(Program& program, const std::string& key, const std::string& labelKey,
                      QWidget* parent, bool fallback)
{
    auto* box = new QCheckBox(text(labelKey), parent);
    box->setObjectName(QStringLiteral("setting.") + QString::fromStdString(key));
    makeTouchable(program, box);
    follow(program, key, box, [&program, key, box, fallback] {
        const QSignalBlocker quiet(box);
        box->setChecked(program.settings().boolean(key, fallback));
    });
    QObject::connect(box, &QCheckBox::toggled, box,
                     [&program, key](bool on) { program.settings().set(key, on); });
    return box;
}

QDoubleSpinBox* makeNumber(Program& program, const std::string& key, const std::string& labelKey,
                           const NumberField& field, QWidget* parent)
{
    auto* box = new QDoubleSpinBox(parent);
    box->setObjectName(QStringLiteral("setting.") + QString::fromStdString(key));
    box->setAccessibleName(text(labelKey));
    box->setToolTip(text(labelKey));
    box->setKeyboardTracking(false); // only whole entries become settings
    box->setButtonSymbols(QAbstractSpinBox::NoButtons);
    box->setAlignment(Qt::AlignRight);
    makeTouchable(program, box);
    const auto unitOf = [field] {
        return field.unit ? field.unit() : std::pair<double, QString>(1.0, QString());
    };
    const auto show = [&program, key, box, field, unitOf] {
        const QSignalBlocker quiet(box);
        const auto [factor, name] = unitOf();
        box->setDecimals(field.decimals);
        box->setRange(field.lowest * factor, field.highest * factor);
        box->setSingleStep(field.step);
        box->setSuffix(name.isEmpty() ? QString() : QLatin1Char(' ') + name);
        box->setValue(program.settings().number(key, field.fallback) * factor);
    };
    follow(program, key, box, show);
    QObject::connect(&program, &Program::unitsChanged, box, show);
    QObject::connect(box, &QDoubleSpinBox::valueChanged, box,
                     [&program, key, unitOf](double value) {
                         program.settings().set(key, value / unitOf().first);
                     });
    return box;
}

QLineEdit* makeText(Program& program, const std::string& key, const std::string& labelKey,
                    const QString& fallback, QWidget* parent)
{
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QStringLiteral("setting.") + QString::fromStdString(key));
    edit->setAccessibleName(text(labelKey));
    edit->setPlaceholderText(text(labelKey));
    makeTouchable(program, edit);
    follow(program, key, edit, [&program, key, edit, fallback] {
        const auto value = program.settings().text(key, fallback.toStdString());
        if (edit->text().toStdString() != value)
            edit->setText(QString::fromStdString(value));
    });
    QObject::connect(edit, &QLineEdit::editingFinished, edit, [&program, key, edit] {
        program.settings().set(key, edit->text().trimmed().toStdString());
    });
    return edit;
}

QComboBox* makeChoice(Program& program, const std::string& key, const std::string& labelKey,
                      const std::vector<Choice>& choices, const std::string& fallback,
                      QWidget* parent)
{
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("setting.") + QString::fromStdString(key));
    box->setAccessibleName(text(labelKey));
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(6);
    makeTouchable(program, box);
    for (const Choice& choice : choices)
        box->addItem(choice.label, QString::fromStdString(choice.value));
    follow(program, key, box, [&program, key, box, fallback] {
        const QSignalBlocker quiet(box);
        const Settings::Value* stored = program.settings().find(key);
        const QString value = stored && std::holds_alternative<long long>(*stored)
            ? QString::number(program.settings().integer(key))
            : QString::fromStdString(program.settings().text(key, fallback));
        int index = box->findData(value);
        if (index < 0 && !value.isEmpty()) { // something that is not offered at the moment
            box->addItem(value, value);
            index = box->count() - 1;
        }
        box->setCurrentIndex(index);
    });
    QObject::connect(box, &QComboBox::activated, box, [&program, key, box](int index) {
        program.settings().set(key, box->itemData(index).toString().toStdString());
    });
    return box;
}

std::pair<double, QString> shortDistanceUnit()
{
    constexpr double metresPerMile = 1852;
    constexpr double feetPerMile = 6076.12;
    return UnitsModel::units().heightsInMetres() ? std::pair(metresPerMile, QStringLiteral("m"))
                                                 : std::pair(feetPerMile, QStringLiteral("ft"));
}

std::pair<double, QString> lengthUnit()
{
    constexpr double metresPerFoot = 0.3048;
    return UnitsModel::units().heightsInMetres() ? std::pair(metresPerFoot, QStringLiteral("m"))
                                                 : std::pair(1.0, QStringLiteral("ft"));
}

QLabel* makeHint(const QString& words, QWidget* parent)
{
    auto* label = new QLabel(words, parent);
    label->setWordWrap(true);
    label->setProperty("role", QStringLiteral("dim"));
    return label;
}

QLabel* makeHeading(const std::string& labelKey, QWidget* parent)
{
    auto* label = new QLabel(text(labelKey), parent);
    label->setProperty("role", QStringLiteral("heading"));
    return label;
}

} // namespace kelvox
