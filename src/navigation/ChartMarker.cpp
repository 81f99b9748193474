#include "navigation/ChartMarker.h"

#include <utility>

namespace kelvox {

void ChartMarker::write(PropertyWriter& writer) const
{
    writer.text("name", name);
    writer.real("latitude", latitude);
    writer.real("longitude", longitude);
}

void ChartMarker::read(const PropertyFields& fields)
{
    name = fields.text("name").value_or("");
    latitude = fields.real("latitude").value_or(static_cast<float>(noCoordinate));
    longitude = fields.real("longitude").value_or(static_cast<float>(noCoordinate));
}

void Waypoint::write(PropertyWriter& writer) const
{
    ChartMarker::write(writer);
    writer.integer("icon", iconIndex);
    writer.text("description", description);
    writer.boolean("show", show);
    writer.key("groups");
    writer.beginDictionary();
    for (const auto& group : groups)
        writer.boolean(group, true);
    writer.endDictionary();
}

void Waypoint::read(const PropertyFields& fields)
{
    ChartMarker::read(fields);
    const double icon = fields.number("icon").value_or(0);
    iconIndex = icon >= 0 && icon < 1e6 ? static_cast<int>(icon) : 0;
    description = fields.text("description").value_or("");
    show = fields.boolean("show").value_or(true);
    for (auto& group : fields.keysOf("groups"))
        groups.insert(std::move(group));
}

void Track::set(Position position, std::optional<Date> newDate, float newCog, float newSog,
                float newHeading, float newSpeed, float newDepth, float newTemperature,
                float newWindAngle, float newWindSpeed, std::string newDescription,
                TrackColor newColor)
{
    setPositionOnGPS(position);
    date = newDate;
    cog = newCog;
    sog = newSog;
    heading = newHeading;
    speed = newSpeed;
    depth = newDepth;
    temperature = newTemperature;
    windAngle = newWindAngle;
    windSpeed = newWindSpeed;
    description = std::move(newDescription);
    color = newColor;
}

void Track::write(PropertyWriter& writer) const
{
    ChartMarker::write(writer);
    if (date)
        writer.date("date", *date);
    writer.real("cog", cog);
    writer.real("sog", sog);
    writer.text("description", description);
    writer.real("heading", heading);
    writer.real("speed", speed);
    writer.real("depth", depth);
    writer.real("temperature", temperature);
    writer.real("windAngle", windAngle);
    writer.real("windSpeed", windSpeed);
    writer.real("red", color.red);
    writer.real("green", color.green);
    writer.real("blue", color.blue);
}

void Track::read(const PropertyFields& fields)
{
    ChartMarker::read(fields);
    constexpr auto unknown = static_cast<float>(noValue);
    date = fields.date("date");
    cog = fields.real("cog").value_or(unknown);
    sog = fields.real("sog").value_or(unknown);
    description = fields.text("description").value_or("");
    heading = fields.real("heading").value_or(unknown);
    speed = fields.real("speed").value_or(unknown);
    depth = fields.real("depth").value_or(unknown);
    temperature = fields.real("temperature").value_or(unknown);
    windAngle = fields.real("windAngle").value_or(unknown);
    windSpeed = fields.real("windSpeed").value_or(unknown);
    color = {.red = fields.real("red").value_or(0),
             .green = fields.real("green").value_or(0),
             .blue = fields.real("blue").value_or(0)};
}

} // namespace kelvox
