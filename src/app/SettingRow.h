#pragma once

#include "app/SettingsCatalog.h"

#include <QWidget>

#include <functional>

class QToolButton;

namespace kelvox {

class Program;

/// One setting as the user changes it: its name, a control that fits its kind, its explanation and
/// the way back to the standard. A change counts at once; changes from elsewhere show at once.
class SettingRow final : public QWidget {
    Q_OBJECT
public:
    enum class Detail { Full, Compact }; ///< compact: no explanation and no way back
    SettingRow(Program& program, const SettingsCatalog::Item& item, Detail detail,
               QWidget* parent = nullptr);

    [[nodiscard]] const SettingsCatalog::Item& item() const { return m_item; }

private:
    [[nodiscard]] QWidget* makeControl();
    [[nodiscard]] QWidget* makeNumber();
    [[nodiscard]] QWidget* makeChoice();
    [[nodiscard]] QWidget* makeColor();
    [[nodiscard]] QWidget* makeText();
    void choose(Settings::Value value);
    void refresh();

    Program& m_program;
    const SettingsCatalog::Item& m_item;
    std::function<void()> m_show; ///< puts the setting's value into the control
    QToolButton* m_reset = nullptr;
};

} // namespace kelvox
