#include "app/GribRequestDialog.h"

#include "app/ChartView.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Text.h"
#include "weather/GribRequest.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QUrl>
#include <QVBoxLayout>

#include <array>

namespace kelvox {

namespace {
struct Kind {
    const char* label;
    const char* model;
    const char* parameters;
};
constexpr std::array kinds{
    Kind{"NSRequestWind", "GFS", "WIND,PRMSL"},
    Kind{"NSRequestWindCoamps", "COAMPS", "WIND,PRMSL"},
    Kind{"NSRequestCurrents", "RTOFS", "CUR,WTMP"},
    Kind{"NSRequestHeight", "GFS", "WIND500,H500"},
    Kind{"NSRequestWaves", "WW3", "HTSGW,WVDIR"},
    Kind{"NSRequestAir", "GFS", "AIRTEMP"},
    Kind{"NSRequestSea", "GFS", "SEATMP"},
    Kind{"NSRequestRain", "GFS", "RAIN"},
};

/// The request only composes here; the dialog lets go of the mail itself.
class NoSender final : public MailSender {
public:
    Result<void> send(const Mail& /*mail*/) override { return {}; }
};
} // namespace

GribRequestDialog::GribRequestDialog(ChartHost& host, QWidget* parent)
    : QDialog(parent)
    , m_host(host)
    , m_kind(new QComboBox(this))
    , m_password(new QLineEdit(this))
    , m_mail(new QPlainTextEdit(this))
    , m_message(new QLabel(this))
    , m_open(new QPushButton(text("NSOpenMailProgram"), this))
    , m_send(new QPushButton(text("NSSendMail"), this))
{
    const Theme& theme = Theme::theme();
    setWindowTitle(text("NSRequestWeather"));
    resizeDialog(*this, 520, 560);
    auto* whole = new QVBoxLayout(this);
    auto* scroll = new QScrollArea(this); // in a low window
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    auto* page = new QWidget(scroll);
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, theme.px(4), 0);
    scroll->setWidget(page);
    whole->addWidget(scroll, 1);
    auto* area = new QLabel(text("NSRequestArea"), this);
    area->setWordWrap(true);
    rows->addWidget(area);
    for (const Kind& kind : kinds)
        m_kind->addItem(text(kind.label));
    m_kind->setAccessibleName(text("NSWeatherField"));
    m_kind->setMinimumHeight(theme.px(40));
    rows->addWidget(m_kind);
    for (const char* key : {"gribInterval", "gribDays", "gribResolution", "gribRequestAddress"})
        if (const auto* item = SettingsCatalog::catalog().find(key))
            rows->addWidget(
                new SettingRow(host.program(), *item, SettingRow::Detail::Compact, this));
    m_mail->setReadOnly(true);
    m_mail->setMinimumHeight(theme.px(120));
    m_mail->setAccessibleName(text("NSRequestMail"));
    rows->addWidget(m_mail, 1);
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setPlaceholderText(text("NSMailPassword"));
    m_password->setAccessibleName(text("NSMailPassword"));
    const Settings& settings = host.program().settings();
    m_password->setVisible(!settings.text("smtpUser").empty());
    rows->addWidget(m_password);
    m_message->setWordWrap(true);
    m_message->setProperty("role", QStringLiteral("warn"));
    rows->addWidget(m_message);
    auto* buttons = new FlowLayout;
    auto* cancel = new QPushButton(text("NSCancel"), this);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    for (QPushButton* button : {cancel, m_send, m_open})
        buttons->add(button, FlowLayout::Grow::Yes);
    m_send->setVisible(!settings.text("smtpServer").empty());
    whole->addLayout(buttons);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &GribRequestDialog::refresh);
    connect(&host.chart(), &ChartView::viewChanged, this, &GribRequestDialog::refresh);
    connect(&host.program(), &Program::settingChanged, this, &GribRequestDialog::refresh);
    connect(m_open, &QPushButton::clicked, this, &GribRequestDialog::openInMailProgram);
    connect(m_send, &QPushButton::clicked, this, &GribRequestDialog::sendDirectly);
    refresh();
}

GribRequestDialog::~GribRequestDialog()
{
    m_sending.request_stop();
}

std::optional<Mail> GribRequestDialog::compose() const
{
    const ChartView& chart = m_host.chart();
    const Position first = chart.positionAt(QPointF(0, chart.height()));
    const Position second = chart.positionAt(QPointF(chart.width(), 0));
    NoSender nobody;
    Program& program = m_host.program();
    const GribRequest request(program.gribModel(), program.settings(), nobody, nobody);
    const Kind& kind = kinds[static_cast<std::size_t>(std::max(0, m_kind->currentIndex()))];
    return request.compose(kind.model, kind.parameters, first, second);
}

void GribRequestDialog::refresh()
{
    const auto mail = compose();
    const bool hasAddress = !m_host.program().settings().text("gribRequestAddress").empty();
    m_open->setEnabled(mail.has_value() && hasAddress);
    m_send->setEnabled(mail.has_value() && hasAddress);
    m_message->setText(hasAddress ? QString() : text("NSNoRequestAddress"));
    if (mail)
        m_mail->setPlainText(
            text("NSMailText",
                 {QString::fromStdString(mail->to), QString::fromStdString(mail->subject),
                  QString::fromStdString(mail->body)}));
}

void GribRequestDialog::openInMailProgram()
{
    const auto mail = compose();
    if (!mail)
        return;
    if (QDesktopServices::openUrl(
            QUrl::fromEncoded(QByteArray::fromStdString(mailtoAddress(*mail)))))
        accept();
    else
        m_message->setText(text("NSNoMailProgram"));
}

void GribRequestDialog::sendDirectly()
{
    const auto mail = compose();
    if (!mail)
        return;
    Program& program = m_host.program();
    SmtpAccount account = SmtpAccount::load(program.settings());
    account.password = m_password->text().toStdString();
    m_send->setEnabled(false);
    m_message->setText(text("NSSendingMail", {QString::fromStdString(account.server)}));
    const QPointer<GribRequestDialog> dialog = this;
    program.pool().post(
        [account, mail = *mail, dialog, stop = m_sending.get_token(), &main = program.executor()] {
            auto sent = std::make_shared<Result<void>>(SmtpSender(account, stop).send(mail));
            main.post([dialog, sent] {
                if (!dialog)
                    return;
                if (*sent) {
                    dialog->m_host.showNote(text("NSMailSent"));
                    dialog->accept();
                    return;
                }
                dialog->m_send->setEnabled(true);
                dialog->m_message->setText(QString::fromStdString(sent->error().message));
            });
        });
}

} // namespace kelvox
