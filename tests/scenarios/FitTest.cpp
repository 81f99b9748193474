#include "app/GribRequestDialog.h"
#include "app/MonitorDialog.h"
#include "app/SettingsDialog.h"
#include "app/Text.h"
#include "scenarios/Scenario.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QSlider>

#include <array>

namespace kelvox {
namespace {

/// In every language and at every interface scale: no words cut off, nothing out of reach, nothing
/// too small for a finger.
class FitTest : public Scenario, public testing::WithParamInterface<const char*> {
protected:
    FitTest() { EXPECT_TRUE(setTextLanguage(QLatin1String(GetParam())).has_value()); }
    ~FitTest() override { EXPECT_TRUE(setTextLanguage(QStringLiteral("en")).has_value()); }

    void check(QWidget& in, const QString& where)
    {
        QApplication::processEvents();
        QApplication::sendPostedEvents();
        for (QWidget* widget : in.findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->size().isEmpty())
                continue;
            const QString fault = faultOf(*widget);
            EXPECT_TRUE(fault.isEmpty())
                << where.toStdString() << ": " << widget->metaObject()->className() << ' '
                << widget->objectName().toStdString() << ": " << fault.toStdString();
        }
        if (&in != &window()) { // the window itself is sized by the case
            const QSize room = in.screen()->availableSize();
            EXPECT_TRUE(in.width() <= room.width() && in.height() <= room.height())
                << where.toStdString() << " is larger than the screen: " << in.width() << 'x'
                << in.height();
        }
    }

private:
    static QString faultOf(QWidget& widget)
    {
        if (const auto* label = qobject_cast<QLabel*>(&widget)) {
            const bool rich = label->textFormat() == Qt::RichText;
            if (label->text().isEmpty() || rich)
                return {};
            const int room = label->contentsRect().width() - 2 * label->margin();
            QString words = label->text();
            if (label->buddy())
                words.remove(QLatin1Char('&')); // marks a key
            const bool cut = label->wordWrap()
                ? label->heightForWidth(label->width()) > label->height() + 2
                : widest(label->fontMetrics(), words) > room + 1;
            if (cut)
                return QStringLiteral("cut off: ") + label->text();
        }
        if (const auto* button = qobject_cast<QAbstractButton*>(&widget); button
            && !button->text().isEmpty()
            && (qobject_cast<const QPushButton*>(button) || qobject_cast<const QCheckBox*>(button)
                || qobject_cast<const QRadioButton*>(button))
            && button->minimumSizeHint().width() > button->width() + 1
            && button->objectName() != QLatin1String("mobButton"))
            return QStringLiteral("cut off: ") + button->text();
        // Those of the toolkit's file dialog are elided, and whole in their lists.
        const bool isOfToolkit = qobject_cast<QFileDialog*>(widget.window());
        if (const auto* box = qobject_cast<QComboBox*>(&widget);
            box && !box->isEditable() && !isOfToolkit) {
            const int arrow = Theme::theme().px(28 + 6);
            if (box->fontMetrics().horizontalAdvance(box->currentText()) > box->width() - arrow + 2)
                return QStringLiteral("cut off: ") + box->currentText();
        }
        return outOfReach(widget);
    }
    static int widest(const QFontMetrics& metrics, const QString& text)
    {
        int widest = 0;
        for (const QString& line : text.split(QLatin1Char('\n')))
            widest = std::max(widest, metrics.horizontalAdvance(line));
        return widest;
    }
    /// A control that its parents hide in part and that cannot be scrolled to.
    static QString outOfReach(QWidget& widget)
    {
        const bool control = qobject_cast<QAbstractButton*>(&widget)
            || qobject_cast<QComboBox*>(&widget) || qobject_cast<QLineEdit*>(&widget)
            || qobject_cast<QAbstractSpinBox*>(&widget) || qobject_cast<QSlider*>(&widget);
        if (!control)
            return {};
        for (QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
            auto* const area = qobject_cast<QAbstractScrollArea*>(parent->parentWidget());
            if (area && area->viewport() == parent)
                return {}; // scrolled to
            const QRect there(widget.mapTo(parent, QPoint()), widget.size());
            if (!parent->rect().adjusted(-2, -2, 2, 2).contains(there))
                return QStringLiteral("reaches out of ")
                    + QLatin1String(parent->metaObject()->className()) + QLatin1Char(' ')
                    + parent->objectName();
            if (parent->isWindow())
                break;
        }
        return {};
    }
};

constexpr std::array panels{"gps",     "instruments", "ais",     "waypoints",
                            "routes",  "tracks",      "weather", "charts",
                            "display", "connections", "devices", "alarms"};

TEST_P(FitTest, EverythingFitsAtEveryScale)
{
    start();
    window().showCard({}, nullptr);
    const auto sizes = {QSize(1280, 800), QSize(1920, 1080)};
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        program().settings().set("interfaceScale", scale);
        for (const QSize& size : sizes) {
            window().resize(size);
            const auto named = [&](const char* what) {
                return QStringLiteral("fit-%1-%2-%3-%4")
                    .arg(QLatin1String(GetParam()))
                    .arg(scale)
                    .arg(size.width())
                    .arg(QLatin1String(what));
            };
            for (const char* panel : panels) {
                window().openPanel(QLatin1String(panel));
                check(window(), named(panel));
                shot(named(panel));
            }
        }
    }
}

TEST_P(FitTest, DialogsFitAtEveryScale)
{
    start();
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        program().settings().set("interfaceScale", scale);
        const auto named = [&](const QString& what) {
            return QStringLiteral("fit-%1-%2-%3")
                .arg(QLatin1String(GetParam()))
                .arg(scale)
                .arg(what);
        };
        const auto look = [&](QWidget& dialog, const QString& what) {
            check(dialog, named(what));
            shot(named(what), dialog);
        };
        QApplication::processEvents();
        run("program.settings");
        if (auto* settings = openDialog<SettingsDialog>()) {
            auto* groups = settings->findChild<QListWidget*>();
            for (int row = 0; groups && row < groups->count(); ++row) {
                groups->setCurrentRow(row);
                look(*settings,
                     QStringLiteral("settings-")
                         + groups->item(row)
                               ->data(Qt::UserRole)
                               .toString()
                               .section(QLatin1Char('.'), 1));
            }
            settings->close();
        }
        GribRequestDialog request(window(), &window());
        request.show();
        look(request, QStringLiteral("dialog-weather-request"));
        request.close();
        MonitorDialog monitor(program(), program().live().connection(ConsumerRole::GPS).monitor(),
                              QStringLiteral("GPS"), &window());
        monitor.show();
        look(monitor, QStringLiteral("dialog-monitor"));
        monitor.close();
        for (const auto& [command, name] :
             {std::pair("file.open", "dialog-open"), std::pair("file.export", "dialog-export"),
              std::pair("file.print", "dialog-print")})
            inDialog([&] { run(command); },
                     [&](QWidget& dialog) { look(dialog, QLatin1String(name)); });
    }
}

INSTANTIATE_TEST_SUITE_P(Language, FitTest, testing::Values("en", "de", "fr", "es"),
                         [](const auto& language) { return std::string(language.param); });

} // namespace
} // namespace kelvox
