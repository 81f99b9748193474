// kelvox-tool nmea: what Kelvox makes of a log, line by line.

#include "base/File.h"
#include "positioning/NMEA.h"
#include "positioning/OwnVessel.h"
#include "tool/Command.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>

namespace kelvox {
namespace {

constexpr std::size_t blockSize = 1U << 20;
constexpr std::size_t longestLine = 1U << 20;

bool isForAIS(std::string_view command)
{
    static constexpr std::array<std::string_view, 6> commands = {"VDM", "VDO", "TTM",
                                                                 "TLL", "RSD", "MLS"};
    return std::find(commands.begin(), commands.end(), command) != commands.end();
}

class LogReport {
public:
    LogReport(bool apparentWind, bool everyLine)
        : m_vessel(m_clock)
        , m_everyLine(everyLine)
    {
        m_vessel.settings.set("windApparent", apparentWind);
    }

    /// Any piece of the log; a line may run across pieces.
    void take(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const auto lineFeed = bytes.find('\n');
            const auto part = bytes.substr(0, lineFeed == bytes.npos ? lineFeed : lineFeed + 1);
            bytes.remove_prefix(part.size());
            if (m_partial.empty() && lineFeed != bytes.npos) {
                takeLine(part);
                continue;
            }
            m_tooLong = m_tooLong || m_partial.size() + part.size() > longestLine;
            if (!m_tooLong)
                m_partial += part;
            if (lineFeed != bytes.npos)
                finishLine();
        }
    }
    /// The last line may lack its end; then the state and the counts.
    void finish()
    {
        if (!m_partial.empty() || m_tooLong)
            finishLine();
        flush();
        fmt::print("{{\"state\":{{{}}},\"lines\":{},\"accepted\":{},\"dropped\":{},"
                   "\"unknown\":{}}}\n",
                   state(), m_lines, m_counts[0], m_counts[1], m_counts[2]);
    }

private:
    using Outcome = Verdict::Outcome;

    /// A JSON string of any bytes, each byte above 127 as the character of that number; null for
    /// an empty one.
    void appendQuoted(std::string_view text)
    {
        if (text.empty()) {
            m_output += "null";
            return;
        }
        m_output += '"';
        for (const char c : text) {
            if (c == '"' || c == '\\')
                m_output += {'\\', c};
            else if (c >= ' ' && c <= '~')
                m_output += c;
            else
                fmt::format_to(std::back_inserter(m_output), "\\u{:04x}",
                               static_cast<unsigned char>(c));
        }
        m_output += '"';
    }
    void flush()
    {
        std::fwrite(m_output.data(), 1, m_output.size(), stdout);
        m_output.clear();
    }
    void finishLine()
    {
        if (m_tooLong) {
            ++m_lines;
            report({Outcome::Dropped, "line too long"}, {});
        } else {
            takeLine(m_partial);
        }
        m_partial.clear();
        m_tooLong = false;
    }
    void takeLine(std::string_view line)
    {
        ++m_lines;
        auto verdict = m_vessel.gps.processRawSentence(line);
        const auto sentence = NMEA::start(line);
        const bool started = sentence.starts_with('$') || sentence.starts_with('!');
        const auto command = NMEA::command(started ? sentence : "").value_or("");
        if (verdict.outcome == Outcome::Unknown) {
            if (m_vessel.instruments.knowsCommand(command))
                verdict = {Outcome::Accepted};
            else if (isForAIS(command))
                verdict = line.find('*') == line.npos
                    ? Verdict{Outcome::Dropped, "checksum missing"}
                    : Verdict{Outcome::Accepted};
        }
        report(verdict, command);
    }
    void report(Verdict verdict, std::string_view command)
    {
        static constexpr std::array<std::string_view, 3> names = {"accepted", "dropped", "unknown"};
        const auto outcome = static_cast<std::size_t>(verdict.outcome);
        ++m_counts[outcome];
        if (!m_everyLine)
            return;
        fmt::format_to(std::back_inserter(m_output),
                       "{{\"line\":{},\"outcome\":\"{}\",\"reason\":", m_lines, names[outcome]);
        appendQuoted(verdict.reason);
        m_output += ",\"command\":";
        appendQuoted(command);
        m_output += "}\n";
        if (m_output.size() >= blockSize)
            flush();
    }
    [[nodiscard]] std::string state() const
    {
        using Instrument = InstrumentsController::Instrument;
        const auto& gps = m_vessel.gps;
        const auto& instruments = m_vessel.instruments;
        std::string text;
        const auto add = [&text](const char* name, double value, double unknown) {
            if (value == unknown)
                return;
            if (!text.empty())
                text += ',';
            // Everything is kept in single precision: its shortest text says all there is.
            text += fmt::format("\"{}\":{}", name, static_cast<float>(value));
        };
        add("latitude", gps.position().latitude, noCoordinate);
        add("longitude", gps.position().longitude, noCoordinate);
        add("sog", gps.speedOverGround(), noValue);
        add("cog", gps.courseOverGround(), noValue);
        add("heading", instruments.value(Instrument::Heading), noValue);
        add("depthFeet", instruments.value(Instrument::Depth), noValue);
        add("temperatureF", instruments.value(Instrument::Temperature), noValue);
        add("windAngle", instruments.value(Instrument::WindAngle), noValue);
        add("windSpeed", instruments.value(Instrument::WindSpeed), noValue);
        return text;
    }

    SystemClock m_clock;
    OwnVessel m_vessel;
    bool m_everyLine;
    std::string m_partial;
    bool m_tooLong = false;
    std::size_t m_lines = 0;
    std::array<std::size_t, 3> m_counts{};
    std::string m_output;
};

struct Options {
    std::string file;
    bool summary = false;
    bool apparentWind = false;
};

void run(Tool& tool, const Options& options)
{
    struct Close {
        void operator()(std::FILE* file) const
        {
            if (file != stdin)
                std::fclose(file); // NOLINT: nothing was written to it
        }
    };
    const std::unique_ptr<std::FILE, Close> file(
        options.file == "-" ? stdin : std::fopen(options.file.c_str(), "rb"));
    if (!file) {
        tool.fail(options.file + ": " + std::strerror(errno));
        return;
    }
    LogReport report(options.apparentWind, !options.summary);
    std::string block(blockSize, '\0');
    while (const auto size = std::fread(block.data(), 1, block.size(), file.get()))
        report.take({block.data(), size});
    if (std::ferror(file.get())) {
        tool.fail(options.file + ": " + std::strerror(errno));
        return;
    }
    report.finish();
}

} // namespace

void addNmeaCommand(Tool& tool)
{
    auto options = std::make_shared<Options>();
    auto* command = tool.command(
        "nmea",
        "Says what became of each line of an NMEA 0183 log, and the state of the vessel at its "
        "end.\nAIS payloads are not looked into.");
    command->add_option("FILE", options->file, "the log, or - for standard input")->required();
    command->add_flag("--summary", options->summary, "only the last line: state and counts");
    command->add_flag("--apparent", options->apparentWind,
                      "take the apparent wind rather than the true wind");
    command->callback([&tool, options] { run(tool, *options); });
}

} // namespace kelvox
