#include "positioning/InstrumentsController.h"

#include "navigation/NavMath.h"
#include "positioning/GPSSettingsController.h"
#include "positioning/NMEA.h"

namespace kelvox {
namespace {

constexpr float feetPerMetre = 3.28084F;
constexpr float knotsPerMetreASecond = 1.9438F;

float inKnots(float speed, std::string_view unit)
{
    if (unit == "K")
        return speed * 0.5396F;
    if (unit == "M")
        return speed * knotsPerMetreASecond;
    if (unit == "S")
        return speed * 0.8684F;
    return speed;
}

} // namespace

InstrumentsController::InstrumentsController(Executor& main, const Clock& clock,
                                             const Settings& settings, const Strings& strings,
                                             Compass& compass)
    : NmeaConsumer(main, MissingChecksum::Allowed)
    , m_clock(clock)
    , m_settings(settings)
    , m_strings(strings)
    , m_compass(compass)
{
    loadSettings();
}

void InstrumentsController::loadSettings()
{
    m_useGPSPort = GPSSettingsController(m_settings, ConsumerRole::Instruments).useGPSPort();
}

const SentenceTable<InstrumentsController::Handler>& InstrumentsController::table()
{
    using This = InstrumentsController;
    static const SentenceTable<Handler> handlers = {
        {"MWV", &This::updateMWV}, {"HDG", &This::updateHDG}, {"VHW", &This::updateVHW},
        {"DBT", &This::updateDBT}, {"HDT", &This::updateHDT}, {"HDM", &This::updateHDM},
        {"DPT", &This::updateDPT}, {"MTW", &This::updateMTW}, {"VWR", &This::updateVWR},
        {"VWT", &This::updateVWT},
    };
    return handlers;
}

bool InstrumentsController::knowsCommand(std::string_view command) const
{
    return table().find(command) != nullptr;
}

bool InstrumentsController::takesFromGPS(std::string_view /*sentence*/) const
{
    return m_useGPSPort;
}

void InstrumentsController::forward(std::string_view sentence, Origin origin, HandlerQueue& queue)
{
    if (origin != Origin::OwnConnection)
        return;
    if (m_repeat)
        m_repeat(sentence);
    if (m_gps)
        m_gps->setRawSentenceFromInstruments(sentence, queue);
    if (m_ais)
        m_ais->setRawSentenceFromInstruments(sentence, queue);
}

void InstrumentsController::handle(std::string_view sentence)
{
    if (const auto* handler = NMEA::nmeaWithData(sentence, table()))
        (this->*(*handler))(NmeaFields(sentence));
}

void InstrumentsController::set(Instrument instrument, float value)
{
    m_readings[static_cast<std::size_t>(instrument)] = {value, m_clock.monotonicSeconds()};
    if (m_changed)
        m_changed(instrument);
}

std::optional<double> InstrumentsController::age(Instrument instrument) const
{
    if (!isKnown(reading(instrument).value))
        return std::nullopt;
    return m_clock.monotonicSeconds() - reading(instrument).date;
}

bool InstrumentsController::isStale(Instrument instrument) const
{
    const auto seconds = age(instrument);
    return !seconds || *seconds > staleAfter;
}

std::string InstrumentsController::windSpeedLabel() const
{
    return m_strings.text(m_shownWindApparent ? "NSAWS" : "NSTWS");
}

std::string InstrumentsController::windAngleLabel() const
{
    return m_strings.text(m_shownWindApparent ? "NSAWA" : "NSTWA");
}

void InstrumentsController::addTo(TrackSample& sample) const
{
    sample.headingDegrees = value(Instrument::Heading);
    sample.throughWaterKnots = value(Instrument::Speed);
    sample.depthFeet = value(Instrument::Depth);
    sample.temperatureF = value(Instrument::Temperature);
    sample.windAngleDegrees = value(Instrument::WindAngle);
    sample.windSpeedKnots = value(Instrument::WindSpeed);
}

bool InstrumentsController::showsApparentWind() const
{
    return m_settings.boolean("windApparent");
}

void InstrumentsController::setMagneticHeading(float degrees)
{
    m_compass.headingMagnetic = degrees;
    m_compass.headingTrue = NavMath::trueBearing(degrees, m_compass.variation);
    setHeading(m_compass.headingTrue);
}

void InstrumentsController::updateHDG(const NmeaFields& fields)
{
    if (const auto variation = NMEA::number(fields[4]))
        m_compass.variation = fields[5] == "W" ? -*variation : *variation;
    if (const auto degrees = NMEA::number(fields[1]))
        setMagneticHeading(*degrees);
}

void InstrumentsController::updateHDT(const NmeaFields& fields)
{
    if (const auto degrees = NMEA::number(fields[1])) {
        m_compass.headingTrue = *degrees;
        setHeading(*degrees);
    }
}

void InstrumentsController::updateHDM(const NmeaFields& fields)
{
    if (const auto degrees = NMEA::number(fields[1]))
        setMagneticHeading(*degrees);
}

void InstrumentsController::updateDBT(const NmeaFields& fields)
{
    if (const auto feet = NMEA::number(fields[1]))
        setDepth(*feet);
}

void InstrumentsController::updateDPT(const NmeaFields& fields)
{
    constexpr float leastDepth = 0.1F; // metres; what a sounder without an echo reports
    const auto metres = NMEA::number(fields[1]);
    if (metres && *metres > leastDepth)
        setDepth((*metres + NMEA::number(fields[2]).value_or(0)) * feetPerMetre);
}

void InstrumentsController::updateMTW(const NmeaFields& fields)
{
    const auto temperature = NMEA::number(fields[1]);
    if (!temperature)
        return;
    if (fields[2] == "F")
        setTemperature(*temperature);
    else if (fields[2] == "C")
        setTemperature(*temperature * 1.8F + 32);
}

void InstrumentsController::updateMWV(const NmeaFields& fields)
{
    const bool apparent = showsApparentWind();
    if (fields[2] != (apparent ? "R" : "T"))
        return;
    m_shownWindApparent = apparent;
    if (const auto angle = NMEA::number(fields[1]))
        setWindAngle(*angle > 180 ? *angle - 360 : *angle);
    if (const auto speed = NMEA::number(fields[3]))
        setWindSpeed(inKnots(*speed, fields[4]));
}

void InstrumentsController::updateVHW(const NmeaFields& fields)
{
    // The true heading where there is one; the magnetic one needs a variation to become true.
    if (const auto degrees = NMEA::number(fields[1])) {
        m_compass.headingTrue = *degrees;
        setHeading(*degrees);
    } else if (const auto magnetic = NMEA::number(fields[3])) {
        setMagneticHeading(*magnetic);
    }
    if (const auto knots = NMEA::number(fields[5]))
        setSpeed(*knots);
}

void InstrumentsController::updateVWR(const NmeaFields& fields)
{
    updateSidedWind(fields, Wind::Apparent);
}

void InstrumentsController::updateVWT(const NmeaFields& fields)
{
    updateSidedWind(fields, Wind::True);
}

void InstrumentsController::updateSidedWind(const NmeaFields& fields, Wind wind)
{
    // The wind the user chose goes first; the other one stands in while there is none of it, so
    // that a vane that sends only one of them is not left out, and its label says which it is.
    const bool apparent = wind == Wind::Apparent;
    const bool chosen = apparent == showsApparentWind();
    const bool chosenIsFresh =
        m_shownWindApparent == showsApparentWind() && !isStale(Instrument::WindAngle);
    if (!chosen && chosenIsFresh)
        return;
    m_shownWindApparent = apparent;
    if (const auto angle = NMEA::number(fields[1]))
        setWindAngle(fields[2] == "L" ? -*angle : *angle);
    if (const auto knots = NMEA::number(fields[3]))
        setWindSpeed(*knots);
    else if (const auto metresASecond = NMEA::number(fields[5]))
        setWindSpeed(*metresASecond * knotsPerMetreASecond);
}

} // namespace kelvox
