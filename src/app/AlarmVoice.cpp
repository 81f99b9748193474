#include "app/AlarmVoice.h"

#include "app/AlarmTones.h"
#include "app/Text.h"
#include "base/File.h"

#include <QApplication>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace kelvox {

namespace {
/// The first player of the desktop's sound systems that is installed; empty without any.
const QString& playerProgram()
{
    static const QString program = [] {
        for (const char* name : {"pw-play", "paplay", "aplay"})
            if (auto found = QStandardPaths::findExecutable(QLatin1String(name)); !found.isEmpty())
                return found;
        return QString();
    }();
    return program;
}

/// The tone as a file, made when it is not there yet; empty when that cannot be.
std::filesystem::path toneFile(const std::filesystem::path& folder, const std::string& name)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const auto known = std::ranges::find(alarmToneNames(), name) != alarmToneNames().end();
    auto file = folder / ((known ? name : alarmToneNames().front()) + ".wav");
    const std::string tone = alarmTone(name);
    if (std::filesystem::file_size(file, error) == tone.size() && !error)
        return file;
    return writeFileAtomically(file, tone) ? file : std::filesystem::path();
}
} // namespace

AlarmVoice::AlarmVoice(std::filesystem::path folder, QObject* parent)
    : QObject(parent)
    , m_folder(std::move(folder))
{
}

AlarmVoice::~AlarmVoice()
{
    if (m_player)
        m_player->disconnect(this);
}

void AlarmVoice::beep()
{
    playSound("Beep");
}

void AlarmVoice::playSound(const std::string& name)
{
    if (m_player)
        return; // one at a time; the alarms that go on come again
    const auto file = m_folder.empty() || playerProgram().isEmpty() ? std::filesystem::path()
                                                                    : toneFile(m_folder, name);
    if (file.empty()) {
        QApplication::beep();
        return;
    }
    m_player = new QProcess(this);
    m_player->setStandardOutputFile(QProcess::nullDevice());
    m_player->setStandardErrorFile(QProcess::nullDevice());
    const auto ended = [this](bool heard) {
        if (!m_player)
            return;
        std::exchange(m_player, nullptr)->deleteLater();
        if (!heard)
            QApplication::beep();
    };
    connect(m_player, &QProcess::finished, this, [ended](int code, QProcess::ExitStatus status) {
        ended(code == 0 && status == QProcess::NormalExit);
    });
    connect(m_player, &QProcess::errorOccurred, this, [ended] { ended(false); });
    m_player->start(playerProgram(), {QString::fromStdString(file.string())});
}

void AlarmVoice::speak(const std::string& text)
{
    m_speech.say(text, textCatalog().language());
}

} // namespace kelvox
