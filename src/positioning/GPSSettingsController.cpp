#include "positioning/GPSSettingsController.h"

#include "connections/SirfSetup.h"

#include <charconv>

namespace kelvox {
namespace {

int bitsPerSecond(const std::string& rate)
{
    int value = 4800;
    std::from_chars(rate.data(), rate.data() + rate.size(), value);
    return value;
}

} // namespace

std::string GPSSettingsController::key(std::string_view name) const
{
    const char* prefix = m_role == ConsumerRole::GPS ? ""
        : m_role == ConsumerRole::Instruments        ? "instruments."
                                                     : "ais.";
    return prefix + std::string(name);
}

long long GPSSettingsController::type() const
{
    return m_role == ConsumerRole::GPS ? m_settings.integer("type", plainNMEA) : plainNMEA;
}

bool GPSSettingsController::connectAtStartup() const
{
    const char* name = m_role == ConsumerRole::GPS ? "connectGPSAtStartup"
        : m_role == ConsumerRole::Instruments      ? "connectInstrumentsAtStartup"
                                                   : "connectAISAtStartup";
    return m_settings.boolean(name);
}

bool GPSSettingsController::repeatToInstruments() const
{
    const GPSSettingsController instruments(m_settings, ConsumerRole::Instruments);
    return m_role == ConsumerRole::GPS && repeat() && !repeatSerialPort().empty()
        && repeatSerialPort() == instruments.serialPort() && !instruments.useGPSPort();
}

PortPlan GPSSettingsController::portPlan() const
{
    PortPlan plan{.hasPort = type() != noPortOfItsOwn, .port = serialPort(), .rate = rate()};
    if (type() == sirf) {
        // It restarts in its binary protocol, in which alone it hears the switch to NMEA.
        plan.beforeReopening = [bits = bitsPerSecond(rate())](Serial& port, const auto& restart) {
            port.writePort(sirfToBinary(bits));
            restart();
        };
        plan.initialise = [bits = bitsPerSecond(rate()),
                           toBinary = plan.beforeReopening](Serial& port, const auto& restart) {
            toBinary(port, restart);
            port.writePort(sirfToNmea(bits));
        };
    }
    if (repeat() && !repeatSerialPort().empty() && !repeatToInstruments()) {
        plan.repeat =
            repeatSame() && plan.hasPort ? PortPlan::Repeat::SamePort : PortPlan::Repeat::OwnPort;
        plan.repeatPort = repeatSerialPort();
        plan.repeatRate = repeatRate();
    }
    return plan;
}

} // namespace kelvox
