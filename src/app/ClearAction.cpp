#include "app/ClearAction.h"

#include "app/Text.h"
#include "app/Theme.h"

#include <QAction>
#include <QEvent>
#include <QLineEdit>

namespace kelvox {

namespace {
/// Tints the cross anew when the colours change.
class Tint final : public QObject {
public:
    Tint(QAction& action, QLineEdit& field)
        : QObject(&field)
        , m_action(action)
    {
        field.installEventFilter(this);
        apply();
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange)
            apply();
        return QObject::eventFilter(object, event);
    }

private:
    void apply()
    {
        const Theme& theme = Theme::theme();
        m_action.setIcon(theme.icon(QStringLiteral("close"), theme.colors().dim));
    }
    QAction& m_action;
};
} // namespace

void addClearAction(QLineEdit& field, std::function<void()> clear)
{
    auto* action = field.addAction(QIcon(), QLineEdit::TrailingPosition);
    action->setToolTip(text("NSClear"));
    new Tint(*action, field);
    if (!clear)
        clear = [&field] { field.clear(); };
    QObject::connect(action, &QAction::triggered, &field, [clear = std::move(clear)] { clear(); });
    action->setVisible(!field.text().isEmpty());
    QObject::connect(&field, &QLineEdit::textChanged, action,
                     [action](const QString& words) { action->setVisible(!words.isEmpty()); });
}

} // namespace kelvox
