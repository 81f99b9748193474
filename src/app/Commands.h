#pragma once

#include "base/Settings.h"

#include <QAction>
#include <QKeySequence>
#include <QWidget>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kelvox {

/// Everything a window can be told to do, each with a name, a group and a key that the user may
/// change. Menus, buttons, the list of keys and the search all draw on it.
class Commands {
public:
    struct Command {
        std::string id; ///< e.g. "chart.zoomIn"; its text is the key "NSCommand." + id
        std::string group; ///< a text key
        QKeySequence standard;
        QAction* action = nullptr;
    };

    /// @param window takes the actions, so that the keys work in all of it
    Commands(QWidget& window, Settings& settings);

    QAction* add(const std::string& id, const std::string& group, const QKeySequence& key,
                 std::function<void()> run);
    /// One that is on or off.
    QAction* addSwitch(const std::string& id, const std::string& group, const QKeySequence& key,
                       std::function<void(bool)> run);
    [[nodiscard]] QAction* action(const std::string& id) const;
    [[nodiscard]] const std::vector<Command>& all() const { return m_commands; }

    /// The command that has the key already, if any; nothing is changed then.
    [[nodiscard]] const Command* setKey(const std::string& id, const QKeySequence& key);
    void resetKeys();

private:
    QAction* make(const std::string& id, const std::string& group, const QKeySequence& key);

    QWidget& m_window;
    Settings& m_settings;
    std::vector<Command> m_commands;
};

} // namespace kelvox
