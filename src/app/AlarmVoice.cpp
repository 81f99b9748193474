#include "app/AlarmVoice.h"

#include <QApplication>

namespace kelvox {

void AlarmVoice::beep()
{
    QApplication::beep();
}

void AlarmVoice::playSound(const std::string& /*name*/)
{
    QApplication::beep();
}

void AlarmVoice::speak(const std::string& /*text*/)
{
}

} // namespace kelvox
