#pragma once

#include "base/Settings.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvox {

/// Every setting of the program: what it may be, what it is before the user chooses, and under
/// which heading the dialog shows it. Immutable; any thread.
class SettingsCatalog {
public:
    enum class Kind {
        Switch, ///< bool
        Number, ///< double, or long long when it has no decimals
        Text,
        Choice, ///< one of `choices`, written as the kind of value these are
        Color, ///< long long, 0xRRGGBB
        File, ///< a path
        State ///< remembered by the program itself, never shown
    };
    struct Choice {
        Settings::Value value;
        std::string label; ///< a text key, or the words themselves, such as "4800"
    };
    struct Item {
        std::string key; ///< a State key may end in "*" and stands for all that begin so
        Kind kind = Kind::State;
        std::string group = {}; ///< a text key
        Settings::Value standard = {}; ///< of State: not used
        double minimum = 0;
        double maximum = 0;
        int decimals = 0;
        std::string unit = {}; ///< e.g. "NM"; empty for a bare number
        std::vector<Choice> choices = {};

        /// Of the setting's name, and of a sentence about it, which not every setting has.
        [[nodiscard]] std::string labelKey() const { return "NSSetting." + key; }
        [[nodiscard]] std::string helpKey() const { return "NSSettingHelp." + key; }
    };

    [[nodiscard]] static const SettingsCatalog& catalog();

    [[nodiscard]] const std::vector<Item>& items() const { return m_items; }
    /// Null for a key that no part of the program has.
    [[nodiscard]] const Item* find(std::string_view key) const;
    /// In the order of the dialog, without that of State.
    [[nodiscard]] std::vector<std::string> groups() const;
    /// What settings are before the user chooses, those of State left out.
    [[nodiscard]] std::vector<std::pair<std::string, Settings::Value>> standards() const;

private:
    SettingsCatalog();
    std::vector<Item> m_items;
};

} // namespace kelvox
