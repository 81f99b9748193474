#include "weather/GribRequest.h"

#include "base/File.h"
#include "base/Settings.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <future>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kelvox {
namespace {
class RecordingSender final : public MailSender {
public:
    Result<void> send(const Mail& mail) override
    {
        mails.push_back(mail);
        return {};
    }
    std::vector<Mail> mails;
};

/// Takes one mail on loopback and keeps all that the client said.
class MailServer {
public:
    explicit MailServer(std::string answerToReceiver)
        : m_answer(std::move(answerToReceiver))
    {
        m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const timeval patience{10, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), size);
        ::listen(m_socket, 1);
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size);
        m_port = ntohs(address.sin_port);
        m_talk = std::async(std::launch::async, [this] { return serve(); });
    }
    ~MailServer() { ::close(m_socket); }
    MailServer(const MailServer&) = delete;
    MailServer& operator=(const MailServer&) = delete;

    [[nodiscard]] int port() const { return m_port; }
    std::string heard() { return m_talk.get(); }

private:
    std::string serve()
    {
        const int client = ::accept(m_socket, nullptr, nullptr);
        std::string all;
        std::string line;
        const auto say = [client](const std::string& text) {
            (void)!::write(client, text.data(), text.size());
        };
        say("220 test\r\n");
        bool inData = false;
        char c = 0;
        while (::read(client, &c, 1) == 1) {
            all += c;
            line += c;
            if (c != '\n')
                continue;
            const std::string command = std::exchange(line, {});
            if (inData) {
                inData = command != ".\r\n";
                if (!inData)
                    say("250 taken\r\n");
            } else if (command.rfind("DATA", 0) == 0) {
                inData = true;
                say("354 go on\r\n");
            } else if (command.rfind("QUIT", 0) == 0) {
                say("221 bye\r\n");
                break;
            } else {
                say(command.rfind("RCPT", 0) == 0 ? m_answer : "250 fine\r\n");
            }
        }
        ::close(client);
        return all;
    }

    std::string m_answer;
    int m_socket = -1;
    int m_port = 0;
    std::future<std::string> m_talk;
};

constexpr Position southWest{-30.9, -10.7};
constexpr Position northEast{5.5, 20.2};
} // namespace

TEST(GribRequest, ComposesEachRequest)
{
    MemorySettings settings;
    settings.set("gribRequestAddress", "service@example.org");
    const UnitsModel units;
    GribModel model(units);
    RecordingSender program;
    RecordingSender direct;
    GribRequest request(model, settings, program, direct);
    const auto way = GribRequest::Way::MailProgram;
    EXPECT_TRUE(request.requestGribWindSurface({}, way, southWest, northEast));
    EXPECT_TRUE(request.requestGribWave({}, way, southWest, northEast));
    EXPECT_TRUE(request.requestGribWindSurfaceCoamps({}, way, southWest, northEast));
    EXPECT_TRUE(request.requestGribCurrents({}, way, southWest, northEast));
    EXPECT_TRUE(request.requestGribHeight500mb({}, way, {-140.9, 40.2}, {-120.1, 60.5}));
    EXPECT_TRUE(request.requestGribAirTemperature({}, way, {0, 0}, {179.9, 0.9}));
    model.interval = 24;
    model.days = 7;
    model.resolution = 0.5;
    EXPECT_TRUE(request.requestGribSeaTemperature({}, way, southWest, northEast));
    EXPECT_TRUE(
        request.requestGribPrecipitationRate({}, GribRequest::Way::Direct, southWest, northEast));
    const char* const bodies[] = {
        "GFS:10S,20N,30W,5E|1.0,1.0|0,6..72|WIND,PRMSL",
        "WW3:10S,20N,30W,5E|1.0,1.0|0,6..72|HTSGW,WVDIR",
        "COAMPS:10S,20N,30W,5E|0.2,0.2|0,6..48|WIND,PRMSL",
        "RTOFS:10S,20N,30W,5E|0.25,0.25|0,12..120|CUR,WTMP",
        "GFS:40N,60N,140W,120W|1.0,1.0|0,6..72|WIND500,H500",
        "GFS:0S,0N,0W,179E|1.0,1.0|0,6..72|AIRTEMP",
        "GFS:10S,20N,30W,5E|0.5,0.5|0,24..168|SEATMP",
    };
    ASSERT_EQ(program.mails.size(), std::size(bodies));
    for (std::size_t i = 0; i < std::size(bodies); ++i)
        EXPECT_EQ(program.mails[i].body, bodies[i]);
    EXPECT_EQ(program.mails[0].to, "service@example.org");
    EXPECT_EQ(program.mails[0].subject, "GRIB Request");
    ASSERT_EQ(direct.mails.size(), 1U);
    EXPECT_EQ(direct.mails[0].body, "GFS:10S,20N,30W,5E|0.5,0.5|0,24..168|RAIN");
    EXPECT_FALSE(request.requestGribWave({}, way, southWest, {}));
    EXPECT_EQ(program.mails.size(), std::size(bodies));

    EXPECT_EQ(mailtoAddress({"a@b.org", "GRIB Request", "GFS:0S,1N|1.0 & x", {}}),
              "mailto:a@b.org?subject=GRIB%20Request&body=GFS:0S,1N%7C1.0%20%26%20x");
}

TEST(SmtpSender, DeliversToAServer)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileAtomically(folder.path() / "note.txt", "attached"));
    MailServer server("250 fine\r\n");
    SmtpSender sender(
        {.server = "127.0.0.1", .port = server.port(), .tls = false, .from = "me@boat.example"});
    const auto sent = sender.send({.to = "service@example.org",
                                   .subject = "GRIB Request",
                                   .body = "GFS:10S,20N,30W,5E|1.0,1.0|0,6..72|WIND,PRMSL",
                                   .attachment = folder.path() / "note.txt"});
    EXPECT_TRUE(sent) << sent.error().message;
    const std::string heard = server.heard();
    for (const char* part : {"MAIL FROM:<me@boat.example>", "RCPT TO:<service@example.org>",
                             "Subject: GRIB Request\r\n", "To: service@example.org\r\n",
                             "GFS:10S,20N,30W,5E|1.0,1.0|0,6..72|WIND,PRMSL\r\n", "YXR0YWNoZWQ="})
        EXPECT_NE(heard.find(part), std::string::npos) << part << "\nin\n" << heard;
}

TEST(SmtpSender, SaysWhyItFailed)
{
    MailServer server("550 no such user\r\n");
    const Mail mail{.to = "nobody@example.org", .subject = "x", .body = "y", .attachment = {}};
    const SmtpAccount account{
        .server = "127.0.0.1", .port = server.port(), .tls = false, .from = "me@boat.example"};
    const auto refused = SmtpSender(account).send(mail);
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().message.find("550"), std::string::npos) << refused.error().message;
    Mail forged = mail;
    forged.subject = "x\r\nBcc: all@example.org";
    EXPECT_FALSE(SmtpSender(account).send(forged));
    (void)server.heard();

    MailServer plain("250 fine\r\n"); // offers no encryption: the password stays here
    SmtpAccount login = account;
    login.port = plain.port();
    login.user = "me";
    login.password = "secret";
    EXPECT_FALSE(SmtpSender(login).send(mail));
    EXPECT_EQ(plain.heard().find("AUTH"), std::string::npos);
}

TEST(SmtpSender, AStopDoesNotWaitForAServerThatIsSilent)
{
    const int silent = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(silent, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(silent, 1), 0);
    ::getsockname(silent, reinterpret_cast<sockaddr*>(&address), &size);
    std::stop_source stop;
    SmtpSender sender({.server = "127.0.0.1",
                       .port = ntohs(address.sin_port),
                       .tls = false,
                       .from = "me@boat.example"},
                      stop.get_token());
    auto sent = std::async(std::launch::async, [&] {
        return sender.send({.to = "a@example.org", .subject = "x", .body = "y", .attachment = {}});
    });
    const int client = ::accept(silent, nullptr, nullptr); // it waits for a greeting now
    stop.request_stop();
    const auto result = sent.get();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, Error::Code::Cancelled) << result.error().message;
    ::close(client);
    ::close(silent);
}

} // namespace kelvox
