#include "ais/AISStation.h"
#include "tool/Command.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace kelvox {
namespace {

struct Options {
    std::string file = "-";
    bool table = false;
};

/// One line of JSON, written by hand: a day of traffic has millions of them.
class JsonLine {
public:
    void number(std::string_view key, std::int64_t value)
    {
        name(key);
        fmt::format_to(std::back_inserter(m_text), "{}", value);
    }
    void known(std::string_view key, float value)
    {
        if (!isKnown(value))
            return;
        name(key);
        fmt::format_to(std::back_inserter(m_text), "{}", value);
    }
    void positive(std::string_view key, float value)
    {
        if (value > 0)
            known(key, value);
    }
    void position(Position position)
    {
        coordinate("latitude", position.latitude);
        coordinate("longitude", position.longitude);
    }
    void text(std::string_view key, std::string_view value)
    {
        if (value.empty())
            return;
        name(key);
        m_text.push_back('"');
        for (const char c : value) {
            const auto code = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\')
                m_text.push_back('\\');
            if (code < 0x20 || code >= 0x7f)
                fmt::format_to(std::back_inserter(m_text), "\\u{:04x}", code);
            else
                m_text.push_back(c);
        }
        m_text.push_back('"');
    }
    void mark(std::string_view key, bool on)
    {
        if (!on)
            return;
        name(key);
        m_text.append(std::string_view("true"));
    }
    void print()
    {
        if (m_text.size() == 0)
            return;
        m_text.append(std::string_view("}\n"));
        std::fwrite(m_text.data(), 1, m_text.size(), stdout);
        m_text.clear();
    }

private:
    void coordinate(std::string_view key, double value)
    {
        if (value == noCoordinate)
            return;
        name(key); // single precision holds all that the message said
        fmt::format_to(std::back_inserter(m_text), "{}", static_cast<float>(value));
    }
    void name(std::string_view key)
    {
        m_text.push_back(m_text.size() == 0 ? '{' : ',');
        fmt::format_to(std::back_inserter(m_text), "\"{}\":", key);
    }

    fmt::memory_buffer m_text;
};

void write(JsonLine& line, const AISPositionReport& report)
{
    line.number("type", report.type);
    line.number("mmsi", report.mmsi);
    line.position(report.position);
    line.known("sog", report.speedKnots);
    line.known("cog", report.courseDegrees);
    line.known("heading", report.headingDegrees);
}

void write(JsonLine& line, const AISStaticReport& report)
{
    line.number("type", report.type);
    line.number("mmsi", report.mmsi);
    line.text("name", report.name.value_or(""));
    line.text("callSign", report.callSign.value_or(""));
    line.text("destination", report.destination.value_or(""));
    if (report.shipType.value_or(0) != 0)
        line.number("shipType", *report.shipType);
    if (report.dimensions) {
        line.positive("lengthFeet", report.dimensions->lengthFeet());
        line.positive("beamFeet", report.dimensions->beamFeet());
    }
}

void write(JsonLine& line, const AISPosition& target)
{
    if (target.isVessel())
        line.number("mmsi", target.mmsi());
    line.position(target.positionOnGPS());
    line.known("sog", target.sog());
    line.known("cog", target.cog());
    line.known("heading", target.hdg());
    line.text("name", target.name());
    line.text("callSign", target.callSign());
    line.text("destination", target.destination());
    if (target.type() != 0)
        line.number("shipType", target.type());
    line.positive("lengthFeet", target.length());
    line.positive("beamFeet", target.beam());
    if (target.equipmentClass() != AISClass::Unknown)
        line.text("class", target.equipmentClass() == AISClass::A ? "A" : "B");
    line.mark("own", target.own());
    line.mark("radarTarget", target.radarTarget());
    line.mark("cursor", target.cursor());
    line.mark("gps", target.gps());
}

void writeChannel(JsonLine& line, std::string_view channel)
{
    if (channel == "A" || channel == "B")
        line.text("channel", channel);
}

/// Hands each line of the stream on, line end included; a longer line comes in pieces.
template <typename Take> bool readLines(std::FILE* stream, Take take)
{
    constexpr int longest = 4096;
    char buffer[longest];
    while (std::fgets(buffer, longest, stream))
        take(std::string_view(buffer));
    return std::ferror(stream) == 0;
}

struct FileCloser {
    void operator()(std::FILE* file) const
    {
        if (file != stdin)
            std::fclose(file);
    }
};

void run(Tool& tool, const Options& options)
{
    const std::unique_ptr<std::FILE, FileCloser> stream(
        options.file == "-" ? stdin : std::fopen(options.file.c_str(), "rb"));
    if (!stream) {
        tool.fail(options.file + ": " + std::strerror(errno));
        return;
    }

    // Its clock stands still: a log does not say when its targets were heard.
    AISStation station;
    auto& controller = station.controller;
    JsonLine line;
    if (!options.table)
        controller.setReportHandler([&line](const AISReport& report, std::string_view channel) {
            if (const auto* position = std::get_if<AISPositionReport>(&report))
                write(line, *position);
            else if (const auto* statics = std::get_if<AISStaticReport>(&report))
                write(line, *statics);
            writeChannel(line, channel);
            line.print();
        });
    if (!readLines(stream.get(),
                   [&controller](std::string_view raw) { controller.processRawSentence(raw); }))
        tool.fail(options.file + ": " + std::strerror(errno));
    if (!options.table)
        return;
    for (const auto* target : station.model.positionEnumerator()) {
        write(line, *target);
        writeChannel(line, target->channel() == 1 ? "A" : target->channel() == 2 ? "B" : "");
        line.print();
    }
}

} // namespace

void addAISCommand(Tool& tool)
{
    auto* ais = tool.command("ais", "Print the AIS reports of a log, one JSON object per line");
    auto options = std::make_shared<Options>();
    ais->add_option("file", options->file, "NMEA log; - or nothing for standard input");
    ais->add_flag("--table", options->table,
                  "Print the table of targets at the end instead of each report");
    ais->callback([&tool, options] { run(tool, *options); });
}

} // namespace kelvox
