#include "ais/AISController.h"

#include "positioning/NMEA.h"

namespace kelvox {
namespace {

constexpr float unknown = static_cast<float>(noValue);

AISSentence encapsulated(const NmeaFields& fields)
{
    return {.fragmentCount = fields[1],
            .fragmentNumber = fields[2],
            .sequentialId = fields[3],
            .channel = fields[4],
            .payload = fields[5],
            .fillBits = fields[6]};
}

} // namespace

AISController::AISController(const Services& services)
    : NmeaConsumer(services.main, MissingChecksum::Refused)
    , m_services(services)
    , m_list(services.model)
    , m_self(std::make_shared<AISController*>(this))
{
    loadSettings();
}

void AISController::loadSettings()
{
    m_useGPSPort = m_services.settings.boolean("ais.useGPSPort");
    m_useInstrumentsPort = m_services.settings.boolean("ais.useInstrumentsPort");
}

bool AISController::isSourceActive() const
{
    return m_connectionOpen || m_useGPSPort || m_useInstrumentsPort;
}

const SentenceTable<AISController::Handler>& AISController::table()
{
    using This = AISController;
    static const SentenceTable<Handler> handlers = {
        {"VDM", &This::updateBinaryVDM}, {"VDO", &This::updateBinaryVDO},
        {"TTM", &This::updateTargetTTM}, {"TLL", &This::updateTargetTLL},
        {"RSD", &This::updateRadarRSD},  {"RMC", &This::updatePositionRMC},
        {"MLS", &This::updateNasaMLS},
    };
    return handlers;
}

bool AISController::knowsCommand(std::string_view command) const
{
    return table().find(command) != nullptr;
}

bool AISController::takesFromGPS(std::string_view sentence) const
{
    const auto command = NMEA::command(sentence);
    if (m_useGPSPort)
        return command != "RMC";
    return command == "TTM" || command == "TLL" || command == "RSD";
}

bool AISController::takesFromInstruments(std::string_view sentence) const
{
    return m_useInstrumentsPort && NMEA::command(sentence) != "RMC";
}

void AISController::handle(std::string_view sentence)
{
    if (const auto* handler = NMEA::nmeaWithData(sentence, table()))
        (this->*(*handler))(NmeaFields(sentence));
}

void AISController::updateBinaryVDM(const NmeaFields& fields)
{
    processVD(encapsulated(fields));
}

void AISController::updateBinaryVDO(const NmeaFields& fields)
{
    auto* target = processVD(encapsulated(fields));
    if (!target)
        return;
    if (!target->own()) {
        // Hidden once: the chart draws the own vessel itself. The user may show it again.
        model().setNeedsDisplayForAISPosition(*target);
        target->setOwn(true);
        target->setShow(false);
    }
    if (m_notification && isKnown(target->cog()) && isKnown(target->sog()))
        m_notification->postGPSPosition(target->positionOnGPS(), target->sog(), target->cog(),
                                        target->hdg());
}

AISPosition* AISController::processVD(const AISSentence& sentence)
{
    if (m_assembly.add(sentence) != AISAssembly::Outcome::Complete)
        return nullptr;
    auto* target = processITU();
    if (target && (sentence.channel == "A" || sentence.channel == "B"))
        target->setChannel(sentence.channel == "A" ? 1 : 2);
    m_assembly.clear();
    if (target && m_reportHandler)
        m_reportHandler(m_report, sentence.channel);
    return target;
}

AISPosition* AISController::processITU()
{
    m_report = decodeAISReport(m_assembly.bits());
    if (const auto* position = std::get_if<AISPositionReport>(&m_report))
        return store(*position);
    if (const auto* statics = std::get_if<AISStaticReport>(&m_report))
        return store(*statics);
    return nullptr;
}

AISPosition* AISController::store(const AISPositionReport& report)
{
    auto* target = model().aisPositionWithMMSI(report.mmsi);
    if (!target)
        return nullptr;
    target->setEquipmentClass(report.equipmentClass);
    store(*target,
          {.position = report.position,
           .sog = report.speedKnots,
           .cog = report.courseDegrees,
           .hdg = report.equipmentClass == AISClass::A ? report.headingDegrees : target->hdg()});
    return target;
}

void AISController::store(AISPosition& target, const Movement& movement)
{
    const bool redraw = target.show()
        && (target.positionOnGPS() != movement.position || target.sog() != movement.sog
            || target.cog() != movement.cog || target.hdg() != movement.hdg);
    if (redraw)
        model().setNeedsDisplayForAISPosition(target);
    target.setPositionOnGPS(movement.position);
    target.setSog(movement.sog);
    target.setCog(movement.cog);
    target.setHdg(movement.hdg);
    target.markDate(m_services.clock.now());
    listChanged();
    if (redraw)
        model().setNeedsDisplayForAISPosition(target);
}

AISPosition* AISController::store(const AISStaticReport& report)
{
    auto* target = model().aisPositionWithMMSI(report.mmsi);
    if (!target)
        return nullptr;
    if (report.name && !report.name->empty()) // a blank one is no reason to forget the name
        target->setName(*report.name);
    if (report.callSign)
        target->setCallSign(*report.callSign);
    if (report.destination)
        target->setDestination(*report.destination);
    if (report.shipType)
        target->setType(*report.shipType);
    if (report.dimensions) {
        target->setLength(report.dimensions->lengthFeet());
        target->setBeam(report.dimensions->beamFeet());
        target->setReferencePoint(report.dimensions->referencePoint());
    }
    model().setNeedsDisplayForAISPosition(*target);
    listChanged();
    return target;
}

AISPosition* AISController::radarTarget(int number, RadarStatus status, std::string_view name)
{
    const auto key = AISPosition::radarKey(number);
    if (status == RadarStatus::Lost) {
        remove(key);
        return nullptr;
    }
    auto* target = model().aisPositionWithMMSI(key);
    if (!target)
        return nullptr;
    if (!target->radarTarget()) {
        target->setRadarTarget(true);
        target->setName(m_services.strings.text("NSRadarTarget") + " " + std::to_string(number));
    }
    if (!name.empty())
        target->setName(std::string(name));
    return target;
}

float AISController::trueBearing(float bearing, RadarReference reference) const
{
    // Without a compass the bow is taken to point along the course.
    const float heading =
        isKnown(m_services.compass.headingTrue) ? m_services.compass.headingTrue : m_ownCourse;
    switch (reference) {
    case RadarReference::True:
        return isKnown(bearing) ? NavMath::fixBearing(bearing) : unknown;
    case RadarReference::Heading:
        return isKnown(bearing) && isKnown(heading) ? NavMath::fixBearing(bearing + heading)
                                                    : unknown;
    case RadarReference::Course:
        return isKnown(bearing) && isKnown(m_ownCourse) ? NavMath::fixBearing(bearing + m_ownCourse)
                                                        : unknown;
    }
    return unknown;
}

Position AISController::fromOwnPosition(float distance, float bearing) const
{
    if (!m_ownPosition.isKnown() || !isKnown(distance) || !isKnown(bearing))
        return {};
    auto position = NavMath::positionAtDistance(m_ownPosition, bearing, distance);
    position.longitude = NavMath::fixPosition(position.longitude);
    return position;
}

void AISController::updateTargetTTM(const NmeaFields& fields)
{
    const auto tracked = parseTTM(fields);
    if (!tracked)
        return;
    const auto position = fromOwnPosition(tracked->distance,
                                          trueBearing(tracked->bearing, tracked->bearingReference));
    if (!position.isKnown() && tracked->status != RadarStatus::Lost)
        return;
    if (auto* target = radarTarget(tracked->number, tracked->status, tracked->name))
        store(*target,
              {.position = position,
               .sog = tracked->speed,
               .cog = trueBearing(tracked->course, tracked->courseReference),
               .hdg = unknown});
}

void AISController::updateTargetTLL(const NmeaFields& fields)
{
    const auto located = parseTLL(fields);
    if (!located)
        return;
    const bool isPlaced =
        located->position.longitude != noCoordinate && located->position.latitude != noCoordinate;
    if (!isPlaced && located->status != RadarStatus::Lost)
        return;
    if (auto* target = radarTarget(located->number, located->status, located->name))
        store(*target,
              {.position = located->position,
               .sog = target->sog(),
               .cog = target->cog(),
               .hdg = unknown});
}

void AISController::updateRadarRSD(const NmeaFields& fields)
{
    const auto cursor = parseRSD(fields);
    if (!cursor)
        return;
    const auto position =
        fromOwnPosition(cursor->distance, trueBearing(cursor->bearing, cursor->reference));
    if (!position.isKnown())
        return;
    auto* target = model().aisPositionWithMMSI(AISPosition::cursorKey);
    if (!target)
        return;
    if (!target->cursor()) {
        target->setCursor(true);
        target->setName(m_services.strings.text("NSRadarCursor"));
    }
    store(*target, {.position = position, .sog = unknown, .cog = unknown, .hdg = unknown});
}

void AISController::updatePositionRMC(const NmeaFields& fields)
{
    const Position position{.longitude = NMEA::position(fields[5], fields[6]),
                            .latitude = NMEA::position(fields[3], fields[4])};
    if (fields[2] != "A" || position.longitude == noCoordinate || position.latitude == noCoordinate)
        return;
    auto* target = model().aisPositionWithMMSI(AISPosition::gpsKey);
    if (!target)
        return;
    if (!target->gps()) {
        target->setGps(true);
        target->setName(m_services.strings.text("NSReceiverPosition"));
    }
    store(*target,
          {.position = position,
           .sog = NMEA::number(fields[7]).value_or(unknown),
           .cog = NMEA::number(fields[8]).value_or(unknown),
           .hdg = unknown});
}

void AISController::remove(std::int32_t mmsi)
{
    const auto* target = model().find(mmsi);
    if (!target)
        return;
    model().setNeedsDisplayForAISPosition(*target);
    model().removePosition(mmsi);
    reloadData();
}

void AISController::aisPositionTimer()
{
    if (!isSourceActive())
        return;
    const auto now = m_services.clock.now();
    bool changed = false;
    for (std::size_t index = 0; index < model().count();) {
        auto& target = model().aisPosition(index);
        if (target.date() > now) // the clock was set back: its age is not known, so it starts anew
            target.markDate(now);
        const bool timedOut = target.timedOut(now);
        changed = changed || timedOut;
        if (timedOut)
            model().setNeedsDisplayForAISPosition(target);
        if (timedOut && (target.expired(now) || !target.isVessel()))
            model().removePosition(target.mmsi());
        else
            ++index;
    }
    if (changed)
        listChanged();
}

void AISController::plotPosition(Position position)
{
    m_ownPosition = position;
    if (!isSourceActive() || !position.isKnown())
        return;
    const auto threshold = static_cast<float>(
        m_services.settings.number("aisProximityDistance", defaultProximityDistance));
    AISPosition* nearest = nullptr;
    for (auto* target : model().positionEnumerator()) {
        if (!target->isPositionKnown())
            continue;
        const float distance = NavMath::distanceFromPoint(position, target->positionOnGPS());
        target->setDistanceFromPosition(distance);
        target->setBearingFromPosition(
            NavMath::bearingFromPoint(position, target->positionOnGPS()));
        if (target->cursor() || target->gps() || target->own() || !(distance <= threshold))
            continue;
        if (!nearest || distance < nearest->distanceFromPosition())
            nearest = target;
    }
    if (m_proximityAlarm && nearest)
        showAISProximityAlarm(*nearest);
    listChanged();
}

void AISController::setProximityAlarm(bool on)
{
    if (on)
        m_alarmTarget.reset();
    if (m_proximityAlarm == on)
        return;
    m_proximityAlarm = on;
    if (m_alarmHandler)
        m_alarmHandler(on);
}

void AISController::showAISProximityAlarm(const AISPosition& target)
{
    constexpr const char* key = "NSAISProximityAlarm";
    m_alarmTarget = target.mmsi();
    setProximityAlarm(false);
    auto& alarms = m_services.alarms;
    const auto message = m_services.strings.text(key);
    if (m_services.settings.boolean("audio")) {
        alarms.beep();
        alarms.speak(message);
    }
    if (m_services.settings.boolean("visual"))
        alarms.show({.key = key,
                     .message = message,
                     .informativeText = target.name(),
                     .button = m_services.strings.text("NSOK")});
}

void AISController::listChanged()
{
    model().reloadData();
    reloadData();
}

void AISController::reloadData()
{
    if (!model().dataReloaded())
        return;
    model().resetDataReloaded();
    if (m_idleQueued)
        return;
    m_idleQueued = true;
    m_services.idle.post([self = std::weak_ptr(m_self)] {
        if (const auto controller = self.lock())
            (*controller)->goneIdle();
    });
}

void AISController::goneIdle()
{
    m_idleQueued = false;
    m_list.reload();
    if (m_listHandler)
        m_listHandler();
}

std::optional<AISInfo> AISController::updateAISInfo() const
{
    const auto selected = m_list.selected();
    const auto* target = selected ? model().find(*selected) : nullptr;
    if (!target)
        return std::nullopt;
    AISInfo info{.target = target};
    if (!m_ownPosition.isKnown() || !target->isPositionKnown())
        return info;
    const auto place = target->positionOnGPS();
    info.distance = NavMath::distanceFromPoint(m_ownPosition, place);
    info.bearing = NavMath::bearingFromPoint(m_ownPosition, place);
    if (!isKnown(m_ownSpeed) || !isKnown(m_ownCourse) || !isKnown(target->sog())
        || !isKnown(target->cog()))
        return info;
    const auto approach = NavMath::closestPointOfApproach(
        m_ownPosition, place, m_ownSpeed, target->sog(), m_ownCourse, target->cog());
    if (approach.time > 0) // not closing gives zero throughout
        info.closestApproach = approach;
    return info;
}

} // namespace kelvox
