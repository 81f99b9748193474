#include "app/nav/ExportDialog.h"

#include "app/Dialogs.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "exchange/GPXExport.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvox {

QString defaultExportName(Program& program, const ExportChoice& choice)
{
    switch (choice.what) {
    case ExportChoice::What::Route:
        return QString::fromStdString(choice.route->name);
    case ExportChoice::What::Group:
        return QString::fromStdString(choice.group);
    case ExportChoice::What::Tracks:
        return QString::fromStdString(GPXExport::defaultTrackName(program.clock()));
    case ExportChoice::What::Waypoints:
        return text("NSWaypoints");
    case ExportChoice::What::Everything:
        break;
    }
    return QStringLiteral("Kelvox");
}

ExportDialog::ExportDialog(NavActions& actions)
    : QDialog(&actions.host().window())
    , m_actions(actions)
    , m_what(new QComboBox(this))
    , m_format(new QComboBox(this))
{
    using What = ExportChoice::What;
    setWindowTitle(text("NSExport"));
    Program& program = actions.program();
    const auto add = [&](ExportChoice choice, const QString& label) {
        m_choices.push_back(std::move(choice));
        m_what->addItem(label);
    };
    add({.what = What::Everything}, text("NSExportEverything"));
    add({.what = What::Waypoints}, countedText("NSExportWaypoints", program.waypoints().count()));
    for (const auto& group : program.waypoints().createGroupsFromWaypoints())
        add({.what = What::Group, .group = group},
            text("NSExportGroup", {QString::fromStdString(group)}));
    for (const auto& route : program.routes().objectEnumerator()) {
        add({.what = What::Route, .route = route},
            text("NSExportRoute", {QString::fromStdString(route->name)}));
        if (route == actions.selection().route())
            m_what->setCurrentIndex(m_what->count() - 1);
    }
    add({.what = What::Tracks}, countedText("NSExportTracks", program.tracks().count()));
    m_what->setAccessibleName(text("NSExportWhat"));
    m_format->setAccessibleName(text("NSExportFormat"));

    auto* form = new QFormLayout;
    form->addRow(text("NSExportWhat"), m_what);
    form->addRow(text("NSExportFormat"), m_format);
    const auto fillFormats = [this] {
        const QString before = m_format->currentData().toString();
        m_format->clear();
        m_format->addItem(text("NSFormatGPX"), QStringLiteral("gpx"));
        m_format->addItem(text("NSFormatKML"), QStringLiteral("kml"));
        if (choice().what != What::Everything) // a table holds one kind
            m_format->addItem(text("NSFormatCSV"), QStringLiteral("csv"));
        m_format->setCurrentIndex(std::max(0, m_format->findData(before)));
    };
    connect(m_what, &QComboBox::currentIndexChanged, this, fillFormats);
    fillFormats();

    auto* buttons = new QDialogButtonBox(this);
    auto* saveButton = buttons->addButton(text("NSSaveAs"), QDialogButtonBox::AcceptRole);
    saveButton->setDefault(true);
    auto* cancelButton = buttons->addButton(text("NSCancel"), QDialogButtonBox::RejectRole);
    for (auto* button : {saveButton, cancelButton})
        button->setIcon({});
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(form);
    rows->addWidget(buttons);
    resizeDialog(*this, 440, 200);
}

ExportChoice ExportDialog::choice() const
{
    return m_choices[static_cast<std::size_t>(std::max(0, m_what->currentIndex()))];
}

void ExportDialog::save()
{
    const QString ending = m_format->currentData().toString();
    const QString file =
        askForNewFile(*this, text("NSExport"),
                      defaultExportName(m_actions.program(), choice()) + QLatin1Char('.') + ending,
                      QStringLiteral("%1 (*.%2)").arg(m_format->currentText(), ending), ending);
    if (file.isEmpty())
        return;
    ExportJob::start(m_actions, choice(), file.toStdString());
    accept();
}

} // namespace kelvox
