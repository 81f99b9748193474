#include "weather/Mail.h"

#include "base/Settings.h"

#include <curl/curl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cctype>
#include <chrono>
#include <memory>
#include <mutex>

namespace kelvox {

namespace {
struct Free {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    void operator()(curl_mime* mime) const { curl_mime_free(mime); }
};
template <typename T> using Owned = std::unique_ptr<T, Free>;

std::string percentEncoded(const std::string& text)
{
    std::string encoded;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        if (std::isalnum(octet) || std::string_view("-._~@,:").find(c) != std::string_view::npos)
            encoded += c;
        else
            encoded += fmt::format("%{:02X}", octet);
    }
    return encoded;
}

/// A line break in an address or subject would begin a header of its own.
bool isOneLine(const std::string& text)
{
    return text.find_first_of("\r\n") == std::string::npos && text.find('\0') == std::string::npos;
}

Owned<curl_slist> list(std::initializer_list<std::string> lines)
{
    Owned<curl_slist> head;
    for (const auto& line : lines)
        if (curl_slist* longer = curl_slist_append(head.get(), line.c_str())) {
            (void)head.release();
            head.reset(longer);
        }
    return head;
}

/// Like curl_easy_perform(), but a stop wakes it at once.
CURLcode perform(CURL* curl, const std::stop_token& stop)
{
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(),
                                                                      &curl_multi_cleanup);
    if (!multi || curl_multi_add_handle(multi.get(), curl) != CURLM_OK)
        return CURLE_FAILED_INIT;
    CURLcode code = CURLE_ABORTED_BY_CALLBACK;
    {
        const std::stop_callback wake(stop, [&multi] { curl_multi_wakeup(multi.get()); });
        int running = 1;
        while (running > 0 && !stop.stop_requested()) {
            constexpr int longestWait = 1000; // milliseconds
            if (curl_multi_perform(multi.get(), &running) != CURLM_OK)
                break;
            if (running > 0
                && curl_multi_poll(multi.get(), nullptr, 0, longestWait, nullptr) != CURLM_OK)
                break;
        }
    }
    int left = 0;
    if (const CURLMsg* message = curl_multi_info_read(multi.get(), &left))
        code = message->data.result;
    // Neither a name that is still being looked up nor a server that does not answer the farewell
    // may hold up the end of the program.
    curl_easy_setopt(curl, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(curl, CURLOPT_SERVER_RESPONSE_TIMEOUT, 1L);
    curl_multi_remove_handle(multi.get(), curl);
    return code;
}
} // namespace

std::string mailtoAddress(const Mail& mail)
{
    return "mailto:" + percentEncoded(mail.to) + "?subject=" + percentEncoded(mail.subject)
        + "&body=" + percentEncoded(mail.body);
}

SmtpAccount SmtpAccount::load(const Settings& settings)
{
    return {.server = settings.text("smtpServer"),
            .port = static_cast<int>(settings.integer("smtpPort")),
            .tls = settings.boolean("smtpTLS", true),
            .user = settings.text("smtpUser"),
            .password = {},
            .from = settings.text("smtpFrom")};
}

Result<void> SmtpSender::send(const Mail& mail)
{
    if (m_account.server.empty() || m_account.from.empty() || mail.to.empty())
        return failure(Error::Code::BadSyntax, "mail: server, sender or receiver is not set");
    for (const auto& text : {mail.to, mail.subject, m_account.from, m_account.server})
        if (!isOneLine(text))
            return failure(Error::Code::BadSyntax, "mail: line break in an address or subject");

    static std::once_flag prepared;
    std::call_once(prepared, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    const Owned<CURL> curl(curl_easy_init());
    if (!curl)
        return failure(Error::Code::CannotOpen, "mail: cannot begin");

    const int port = m_account.port > 0 ? m_account.port : m_account.tls ? 465 : 587;
    const std::string address =
        fmt::format("{}://{}:{}", m_account.tls ? "smtps" : "smtp", m_account.server, port);
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const auto headers =
        list({"To: " + mail.to, "From: " + m_account.from, "Subject: " + mail.subject,
              fmt::format("Date: {:%a, %d %b %Y %H:%M:%S} +0000", now)});
    const auto receivers = list({"<" + mail.to + ">"});
    const std::string sender = "<" + m_account.from + ">";

    const Owned<curl_mime> mime(curl_mime_init(curl.get()));
    curl_mimepart* part = curl_mime_addpart(mime.get());
    curl_mime_data(part, (mail.body + "\r\n").c_str(), CURL_ZERO_TERMINATED);
    curl_mime_type(part, "text/plain; charset=utf-8");
    if (!mail.attachment.empty()) {
        curl_mimepart* file = curl_mime_addpart(mime.get());
        if (curl_mime_filedata(file, mail.attachment.c_str()) != CURLE_OK)
            return failure(Error::Code::CannotOpen,
                           mail.attachment.string() + ": cannot be attached");
        curl_mime_encoder(file, "base64");
    }

    const auto set = [&curl](CURLoption option, auto value) {
        curl_easy_setopt(curl.get(), option, value);
    };
    std::string reason(CURL_ERROR_SIZE, '\0');
    set(CURLOPT_ERRORBUFFER, reason.data());
    set(CURLOPT_URL, address.c_str());
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_CONNECTTIMEOUT, 20L);
    set(CURLOPT_TIMEOUT, 60L);
    set(CURLOPT_SERVER_RESPONSE_TIMEOUT, 20L);
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_PROXY, "");
    // A password never travels in the clear.
    set(CURLOPT_USE_SSL,
        static_cast<long>(m_account.user.empty() ? CURLUSESSL_TRY : CURLUSESSL_ALL));
    if (!m_account.user.empty()) {
        set(CURLOPT_USERNAME, m_account.user.c_str());
        set(CURLOPT_PASSWORD, m_account.password.c_str());
    }
    set(CURLOPT_MAIL_FROM, sender.c_str());
    set(CURLOPT_MAIL_RCPT, receivers.get());
    set(CURLOPT_HTTPHEADER, headers.get());
    set(CURLOPT_MIMEPOST, mime.get());
    const CURLcode code = perform(curl.get(), m_stop);
    if (m_stop.stop_requested() && code != CURLE_OK)
        return failure(Error::Code::Cancelled, m_account.server + ": cancelled");
    if (code == CURLE_OK)
        return {};
    reason.resize(reason.find('\0'));
    return failure(Error::Code::CannotOpen,
                   fmt::format("{}: {}", m_account.server,
                               reason.empty() ? curl_easy_strerror(code) : reason));
}

} // namespace kelvox
