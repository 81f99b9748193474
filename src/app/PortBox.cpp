#include "app/PortBox.h"

#include "app/Program.h"
#include "app/SettingControls.h"
#include "app/Text.h"
#include "connections/Serial.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

namespace kelvox {

QComboBox* makePortBox(Program& program, const std::string& key, QWidget* parent)
{
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("setting.") + QString::fromStdString(key));
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setAccessibleName(text("NSSetting.serialPort"));
    box->lineEdit()->setPlaceholderText(text("NSPortPlaceholder"));
    makeTouchable(program, box);
    const auto store = [&program, key](const QString& path) {
        program.settings().set(key, path.trimmed().toStdString());
    };
    QObject::connect(box, &QComboBox::activated, box,
                     [box, store](int index) { store(box->itemData(index).toString()); });
    QObject::connect(box->lineEdit(), &QLineEdit::editingFinished, box, [box, store] {
        const int index = box->findText(box->currentText());
        store(index >= 0 ? box->itemData(index).toString() : box->currentText());
    });
    return box;
}

void fillPorts(QComboBox* box, const std::string& chosen)
{
    const QSignalBlocker quiet(box);
    if (box->lineEdit()->hasFocus() && box->lineEdit()->isModified())
        return; // being typed
    box->clear();
    for (const SerialPortInfo& port : Serial::listPorts())
        box->addItem(QString::fromStdString(port.name), QString::fromStdString(port.path));
    const QString path = QString::fromStdString(chosen);
    const int index = box->findData(path);
    if (index >= 0) {
        box->setCurrentIndex(index);
    } else {
        box->setCurrentIndex(-1);
        box->setEditText(path);
    }
}

} // namespace kelvox
