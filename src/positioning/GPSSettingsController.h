#pragma once

#include "base/Settings.h"
#include "connections/ReaderThread.h"

#include <string>

namespace kelvox {

/// The three consumers of lines, each with its connection and its group of settings.
enum class ConsumerRole { GPS, Instruments, AIS };

/// The settings of one consumer's connection. The GPS ones bear their plain names ("serialPort"),
/// those of instruments and AIS the prefix "instruments." and "ais.". Main thread.
class GPSSettingsController {
public:
    /// "type": what the receiver is; other numbers are plain NMEA.
    static constexpr long long garmin = 0;
    static constexpr long long sirf = 2;
    static constexpr long long noPortOfItsOwn = 5;
    static constexpr long long plainNMEA = 1; ///< what counts when nothing was set

    GPSSettingsController(const Settings& settings, ConsumerRole role)
        : m_settings(settings)
        , m_role(role)
    {
    }
    [[nodiscard]] long long type() const;
    [[nodiscard]] std::string serialPort() const { return text("serialPort"); }
    [[nodiscard]] std::string rate() const { return text("rate", "4800"); }
    [[nodiscard]] bool repeat() const { return flag("repeat"); }
    [[nodiscard]] std::string repeatSerialPort() const { return text("repeatSerialPort"); }
    [[nodiscard]] std::string repeatRate() const { return text("repeatRate", "4800"); }
    [[nodiscard]] bool useGPSPort() const { return flag("useGPSPort"); }
    [[nodiscard]] bool useInstrumentsPort() const { return flag("useInstrumentsPort"); }
    /// "connectGPSAtStartup" and its siblings.
    [[nodiscard]] bool connectAtStartup() const;
    [[nodiscard]] bool repeatSame() const { return repeatSerialPort() == serialPort(); }
    /// Whether repeated sentences go out on the port of the instruments.
    [[nodiscard]] bool repeatToInstruments() const;

    /// Ports and rates; Garmin receivers need the initialisation that the caller puts in.
    [[nodiscard]] PortPlan portPlan() const;

private:
    [[nodiscard]] std::string key(std::string_view name) const;
    [[nodiscard]] std::string text(std::string_view name, std::string fallback = {}) const
    {
        return m_settings.text(key(name), std::move(fallback));
    }
    [[nodiscard]] bool flag(std::string_view name) const { return m_settings.boolean(key(name)); }

    const Settings& m_settings;
    ConsumerRole m_role;
};

} // namespace kelvox
