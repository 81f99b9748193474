#include "weather/GribRequest.h"

#include "base/Settings.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvox {

namespace {
std::string wholeDegrees(double degrees, char positive, char negative)
{
    return fmt::format("{}{}", static_cast<unsigned>(std::abs(degrees)),
                       degrees > 0 ? positive : negative);
}

bool isUsable(Position corner)
{
    return corner.isKnown() && std::abs(corner.latitude) <= 90 && std::abs(corner.longitude) <= 360;
}
} // namespace

GribRequest::GribRequest(const GribModel& model, const Settings& settings, MailSender& mailProgram,
                         MailSender& direct)
    : m_model(model)
    , m_settings(settings)
    , m_mailProgram(mailProgram)
    , m_direct(direct)
{
}

std::optional<Mail> GribRequest::compose(const std::string& modelName,
                                         const std::string& parameters, Position first,
                                         Position second) const
{
    if (!isUsable(first) || !isUsable(second))
        return std::nullopt;
    const std::string area = fmt::format(
        "{}:{},{},{},{}", modelName, wholeDegrees(first.latitude, 'N', 'S'),
        wholeDegrees(second.latitude, 'N', 'S'), wholeDegrees(first.longitude, 'E', 'W'),
        wholeDegrees(second.longitude, 'E', 'W'));
    std::string request;
    if (modelName == "COAMPS")
        request = fmt::format("{}|0.2,0.2|0,6..48|{}", area, parameters);
    else if (modelName == "RTOFS")
        request = fmt::format("{}|0.25,0.25|0,12..120|{}", area, parameters);
    else
        request = fmt::format("{0}|{1:.1f},{1:.1f}|0,{2}..{3}|{4}", area, m_model.resolution,
                              m_model.interval, m_model.days * 24, parameters);
    return Mail{.to = m_settings.text("gribRequestAddress"),
                .subject = "GRIB Request",
                .body = m_settings.text("gribRequestPrefix") + request,
                .attachment = {}};
}

bool GribRequest::requestGrib(const std::string& modelName, const std::string& parameters,
                              const std::filesystem::path& attachment, Way way, Position first,
                              Position second)
{
    m_lastError.clear();
    auto mail = compose(modelName, parameters, first, second);
    if (!mail)
        return false;
    mail->attachment = attachment;
    const auto sent = (way == Way::MailProgram ? m_mailProgram : m_direct).send(*mail);
    if (!sent)
        m_lastError = sent.error().message;
    return sent.has_value();
}

bool GribRequest::requestGribWindSurface(const std::filesystem::path& attachment, Way way,
                                         Position first, Position second)
{
    return requestGrib("GFS", "WIND,PRMSL", attachment, way, first, second);
}

bool GribRequest::requestGribWindSurfaceCoamps(const std::filesystem::path& attachment, Way way,
                                               Position first, Position second)
{
    return requestGrib("COAMPS", "WIND,PRMSL", attachment, way, first, second);
}

bool GribRequest::requestGribCurrents(const std::filesystem::path& attachment, Way way,
                                      Position first, Position second)
{
    return requestGrib("RTOFS", "CUR,WTMP", attachment, way, first, second);
}

bool GribRequest::requestGribHeight500mb(const std::filesystem::path& attachment, Way way,
                                         Position first, Position second)
{
    return requestGrib("GFS", "WIND500,H500", attachment, way, first, second);
}

bool GribRequest::requestGribWave(const std::filesystem::path& attachment, Way way, Position first,
                                  Position second)
{
    return requestGrib("WW3", "HTSGW,WVDIR", attachment, way, first, second);
}

bool GribRequest::requestGribAirTemperature(const std::filesystem::path& attachment, Way way,
                                            Position first, Position second)
{
    return requestGrib("GFS", "AIRTEMP", attachment, way, first, second);
}

bool GribRequest::requestGribSeaTemperature(const std::filesystem::path& attachment, Way way,
                                            Position first, Position second)
{
    return requestGrib("GFS", "SEATMP", attachment, way, first, second);
}

bool GribRequest::requestGribPrecipitationRate(const std::filesystem::path& attachment, Way way,
                                               Position first, Position second)
{
    return requestGrib("GFS", "RAIN", attachment, way, first, second);
}

} // namespace kelvox
