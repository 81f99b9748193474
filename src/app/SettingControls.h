#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>

#include <functional>
#include <string>
#include <vector>

namespace kelvox {

class Program;

// Controls that show one setting and change it at once, whoever else changes it. Their names for
// screen readers are their labels; they grow with the interface scale.

[[nodiscard]] QCheckBox* makeSwitch(Program& program, const std::string& key,
                                    const std::string& labelKey, QWidget* parent,
                                    bool fallback = false);

/// How a number stands in its field: the setting times the factor.
struct NumberField {
    double lowest = 0;
    double highest = 100;
    double step = 1;
    int decimals = 0;
    double fallback = 0; ///< of the setting
    /// The factor and the unit's name of the moment; asked for again when the units change.
    std::function<std::pair<double, QString>()> unit = {};
};
[[nodiscard]] QDoubleSpinBox* makeNumber(Program& program, const std::string& key,
                                         const std::string& labelKey, const NumberField& field,
                                         QWidget* parent);
/// Taken over when the field is left or with Enter.
[[nodiscard]] QLineEdit* makeText(Program& program, const std::string& key,
                                  const std::string& labelKey, const QString& fallback,
                                  QWidget* parent);

struct Choice {
    std::string value;
    QString label;
};
/// A setting that is one of several texts.
[[nodiscard]] QComboBox* makeChoice(Program& program, const std::string& key,
                                    const std::string& labelKey, const std::vector<Choice>& choices,
                                    const std::string& fallback, QWidget* parent);

// Units of the user for fields whose settings are in nautical miles or feet.
[[nodiscard]] std::pair<double, QString> shortDistanceUnit(); ///< metres or feet, of NM
[[nodiscard]] std::pair<double, QString> lengthUnit(); ///< metres or feet, of feet

/// A dim line of words that wraps.
[[nodiscard]] QLabel* makeHint(const QString& words, QWidget* parent);
/// The heading of a part of a panel.
[[nodiscard]] QLabel* makeHeading(const std::string& labelKey, QWidget* parent);
/// At least as high as a finger needs it, at every interface scale.
void makeTouchable(Program& program, QWidget* control);

} // namespace kelvox
