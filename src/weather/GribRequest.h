#pragma once

#include "weather/GribModel.h"
#include "weather/Mail.h"

#include <optional>

namespace kelvox {

/// Asks a GRIB-by-mail service for forecasts of an area between two corners.
///
/// Corners are truncated to whole degrees towards zero; latitude 0 is south and longitude 0 west,
/// on purpose. The interval, days and resolution are those of the model. Settings: the service's
/// address "gribRequestAddress", and "gribRequestPrefix" for a word that it wants before the
/// request, such as "send " (none by default).
class GribRequest {
public:
    enum class Way { MailProgram, Direct };

    /// The senders must outlive the request.
    GribRequest(const GribModel& model, const Settings& settings, MailSender& mailProgram,
                MailSender& direct);

    /// Sends a request, or nothing while a corner is unknown. False when nothing was sent.
    bool requestGrib(const std::string& modelName, const std::string& parameters,
                     const std::filesystem::path& attachment, Way way, Position first,
                     Position second);

    bool requestGribWindSurface(const std::filesystem::path& attachment, Way way, Position first,
                                Position second);
    bool requestGribWindSurfaceCoamps(const std::filesystem::path& attachment, Way way,
                                      Position first, Position second);
    bool requestGribCurrents(const std::filesystem::path& attachment, Way way, Position first,
                             Position second);
    bool requestGribHeight500mb(const std::filesystem::path& attachment, Way way, Position first,
                                Position second);
    bool requestGribWave(const std::filesystem::path& attachment, Way way, Position first,
                         Position second);
    bool requestGribAirTemperature(const std::filesystem::path& attachment, Way way, Position first,
                                   Position second);
    bool requestGribSeaTemperature(const std::filesystem::path& attachment, Way way, Position first,
                                   Position second);
    bool requestGribPrecipitationRate(const std::filesystem::path& attachment, Way way,
                                      Position first, Position second);

    /// The mail that requestGrib() would send; nothing while a corner is unknown.
    [[nodiscard]] std::optional<Mail> compose(const std::string& modelName,
                                              const std::string& parameters, Position first,
                                              Position second) const;
    /// Why the last request was not sent; empty when it was.
    [[nodiscard]] const std::string& lastError() const { return m_lastError; }

private:
    const GribModel& m_model;
    const Settings& m_settings;
    MailSender& m_mailProgram;
    MailSender& m_direct;
    std::string m_lastError;
};

} // namespace kelvox
