#pragma once

#include "base/Result.h"

#include <filesystem>
#include <stop_token>
#include <string>

namespace kelvox {

class Settings;

struct Mail {
    std::string to;
    std::string subject;
    std::string body;
    std::filesystem::path attachment; ///< empty: none
};

/// How a mail leaves the program: through the user's mail program, or over the network.
class MailSender {
public:
    virtual ~MailSender() = default;
    [[nodiscard]] virtual Result<void> send(const Mail& mail) = 0;
};

/// "mailto:" with everything but letters, digits and harmless marks percent-encoded: for the
/// desktop to open in the user's mail program. An attachment cannot be named there.
[[nodiscard]] std::string mailtoAddress(const Mail& mail);

/// The account that mails are sent through.
struct SmtpAccount {
    std::string server; ///< host name
    int port = 0; ///< 0: 465 when `tls`, else 587
    bool tls =
        true; ///< encrypted from the first byte; otherwise upgraded when the server offers it
    std::string user{}; ///< empty: no login. A login is refused on a line that is not encrypted.
    std::string password{};
    std::string from; ///< the user's mail address

    /// Settings smtpServer, smtpPort, smtpTLS, smtpUser, smtpFrom. The password is not among them:
    /// it comes from the desktop's keyring.
    [[nodiscard]] static SmtpAccount load(const Settings& settings);
};

/// Sends through a server with libcurl. Waits for the network for up to a minute, or until a stop
/// is requested: call it from a worker.
class SmtpSender final : public MailSender {
public:
    explicit SmtpSender(SmtpAccount account, std::stop_token stop = {})
        : m_account(std::move(account))
        , m_stop(std::move(stop))
    {
    }
    [[nodiscard]] Result<void> send(const Mail& mail) override;

private:
    SmtpAccount m_account;
    std::stop_token m_stop;
};

} // namespace kelvox
