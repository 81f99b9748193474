#include "app/Commands.h"

#include "app/Text.h"

#include <algorithm>

namespace kelvox {

namespace {
std::string settingOf(const std::string& id)
{
    return "shortcut." + id;
}
} // namespace

Commands::Commands(QWidget& window, Settings& settings)
    : m_window(window)
    , m_settings(settings)
{
}

QAction* Commands::make(const std::string& id, const std::string& group, const QKeySequence& key)
{
    auto* action = new QAction(text("NSCommand." + id), &m_window);
    const QString chosen = QString::fromStdString(
        m_settings.text(settingOf(id), key.toString(QKeySequence::PortableText).toStdString()));
    action->setShortcut(QKeySequence(chosen, QKeySequence::PortableText));
    action->setShortcutContext(Qt::WindowShortcut);
    m_window.addAction(action);
    m_commands.push_back({id, group, key, action});
    return action;
}

QAction* Commands::add(const std::string& id, const std::string& group, const QKeySequence& key,
                       std::function<void()> run)
{
    auto* action = make(id, group, key);
    QObject::connect(action, &QAction::triggered, &m_window, [run = std::move(run)] { run(); });
    return action;
}

QAction* Commands::addSwitch(const std::string& id, const std::string& group,
                             const QKeySequence& key, std::function<void(bool)> run)
{
    auto* action = make(id, group, key);
    action->setCheckable(true);
    QObject::connect(action, &QAction::triggered, &m_window,
                     [run = std::move(run)](bool on) { run(on); });
    return action;
}

QAction* Commands::action(const std::string& id) const
{
    const auto it = std::ranges::find(m_commands, id, &Command::id);
    return it == m_commands.end() ? nullptr : it->action;
}

const Commands::Command* Commands::setKey(const std::string& id, const QKeySequence& key)
{
    const auto it = std::ranges::find(m_commands, id, &Command::id);
    if (it == m_commands.end())
        return nullptr;
    if (!key.isEmpty())
        for (const Command& other : m_commands)
            if (other.id != id && other.action->shortcut() == key)
                return &other;
    it->action->setShortcut(key);
    m_settings.set(settingOf(id), key.toString(QKeySequence::PortableText).toStdString());
    return nullptr;
}

void Commands::resetKeys()
{
    for (const Command& command : m_commands) {
        command.action->setShortcut(command.standard);
        m_settings.set(settingOf(command.id),
                       command.standard.toString(QKeySequence::PortableText).toStdString());
    }
}

} // namespace kelvox
