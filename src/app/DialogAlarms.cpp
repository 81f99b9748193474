#include "app/DialogAlarms.h"

#include "app/AlarmBanner.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QLayout>

namespace kelvox {

namespace {
/// The banner of one dialog, which moves what stands in the dialog down while it is shown.
class Keeper final : public QObject {
public:
    Keeper(AlarmCenter& alarms, QDialog& dialog)
        : QObject(&dialog)
        , m_dialog(dialog)
        , m_banner(new AlarmBanner(alarms, dialog))
        , m_margins(dialog.layout()->contentsMargins())
    {
        dialog.installEventFilter(this);
        connect(&alarms, &AlarmCenter::changed, this, &Keeper::fit);
        fit();
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Resize)
            fit();
        else if (event->type() == QEvent::ApplicationPaletteChange)
            m_banner->restyle();
        return QObject::eventFilter(object, event);
    }

private:
    void fit()
    {
        QMargins margins = m_margins;
        if (!m_banner->isHidden()) {
            m_banner->place();
            m_banner->raise();
            margins.setTop(margins.top() + m_banner->height());
        }
        m_dialog.layout()->setContentsMargins(margins);
    }

    QDialog& m_dialog;
    AlarmBanner* m_banner;
    QMargins m_margins;
};
} // namespace

DialogAlarms::DialogAlarms(AlarmCenter& alarms, QObject* parent)
    : QObject(parent)
    , m_alarms(alarms)
{
    qApp->installEventFilter(this);
}

bool DialogAlarms::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Show)
        if (auto* dialog = qobject_cast<QDialog*>(object); dialog && dialog->layout()
            && !dialog->findChild<AlarmBanner*>({}, Qt::FindDirectChildrenOnly))
            new Keeper(m_alarms, *dialog);
    return QObject::eventFilter(object, event);
}

} // namespace kelvox
