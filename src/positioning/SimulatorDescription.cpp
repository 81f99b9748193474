#include "positioning/SimulatorDescription.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace kelvox {
namespace {

using Json = nlohmann::json;

std::optional<double> number(const Json& object, const char* key)
{
    const auto it = object.find(key);
    if (it == object.end() || !it->is_number() || !std::isfinite(it->get<double>()))
        return std::nullopt;
    return it->get<double>();
}

std::optional<float> single(const Json& object, const char* key)
{
    const auto value = number(object, key);
    return value ? std::optional(static_cast<float>(*value)) : std::nullopt;
}

int whole(const Json& object, const char* key)
{
    return static_cast<int>(std::lround(std::clamp(number(object, key).value_or(0), 0.0, 1e6)));
}

std::string text(const Json& object, const char* key)
{
    const auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

std::optional<Position> position(const Json& object)
{
    if (!object.is_object())
        return std::nullopt;
    const auto latitude = number(object, "latitude");
    const auto longitude = number(object, "longitude");
    if (!latitude || !longitude || std::abs(*latitude) >= 90 || std::abs(*longitude) > 180)
        return std::nullopt;
    return Position{.longitude = *longitude, .latitude = *latitude};
}

std::optional<TrafficVessel> vessel(const Json& object)
{
    const auto start = position(object);
    const auto mmsi = start ? number(object, "mmsi") : std::nullopt;
    if (!mmsi || *mmsi < 1 || *mmsi > 999'999'999)
        return std::nullopt;
    return TrafficVessel{.mmsi = static_cast<std::uint32_t>(*mmsi),
                         .classB = text(object, "class") == "B",
                         .name = text(object, "name"),
                         .callSign = text(object, "callSign"),
                         .destination = text(object, "destination"),
                         .shipType = std::min(whole(object, "type"), 255),
                         .lengthMetres = std::min(whole(object, "length"), 1022),
                         .beamMetres = std::min(whole(object, "beam"), 126),
                         .start = *start,
                         .speedKnots = single(object, "speed").value_or(0),
                         .courseDegrees = single(object, "course").value_or(0)};
}

/// The first of the keys under which there is something else than a number; null without one.
const char* wrongNumber(const Json& object, std::initializer_list<const char*> keys)
{
    for (const char* key : keys)
        if (object.contains(key) && !number(object, key))
            return key;
    return nullptr;
}

} // namespace

Result<SimulatorDescription> parseSimulatorDescription(std::string_view json)
{
    using Code = Error::Code;
    const auto root = Json::parse(json, nullptr, false, true);
    if (!root.is_object())
        return failure(Code::BadSyntax, "not a JSON object");

    SimulatorDescription description;
    if (root.contains("start")) {
        description.start = position(root["start"]);
        if (!description.start)
            return failure(Code::OutOfRange, "\"start\" is not a position");
    }
    if (const char* key = wrongNumber(root, {"speed", "heading", "variation"}))
        return failure(Code::BadSyntax, '"' + std::string(key) + "\" is not a number");
    description.speedKnots = single(root, "speed");
    description.headingDegrees = single(root, "heading");
    description.variationDegrees = single(root, "variation");
    description.loop = root.contains("loop") && root["loop"] == true;
    for (const auto& point : root.value("route", Json::array())) {
        const auto place = position(point);
        if (!place)
            return failure(Code::OutOfRange, "\"route\" holds something that is not a position");
        description.route.push_back(*place);
    }
    for (const auto& object : root.value("traffic", Json::array())) {
        auto target = vessel(object);
        if (!target)
            return failure(Code::OutOfRange, "\"traffic\" holds a vessel without mmsi or position");
        if (const char* key = wrongNumber(object, {"type", "length", "beam", "speed", "course"}))
            return failure(Code::BadSyntax,
                           '"' + std::string(key) + "\" of \"traffic\" is not a number");
        description.traffic.push_back(std::move(*target));
    }
    return description;
}

} // namespace kelvox
