#pragma once

#include <expat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The rules of GPX 1.1 as its published schema gives them: which elements stand in which, in which
/// order and how often, which attributes they must have, and what numbers and times look like.
class GpxRules {
public:
    /// Elements let through beside the rules, e.g. ones that the format is written with on purpose.
    explicit GpxRules(std::set<std::string> alsoAllowed = {})
        : m_allowed(std::move(alsoAllowed))
    {
    }
    /// What a document breaks, a line for each fault; empty when it keeps all rules.
    std::string faultsOf(const std::string& document)
    {
        m_faults.clear();
        m_open.clear();
        const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(
            XML_ParserCreateNS(nullptr, '|'), XML_ParserFree);
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(
            parser.get(),
            [](void* self, const char* name, const char** attributes) {
                static_cast<GpxRules*>(self)->begin(name, attributes);
            },
            [](void* self, const char*) { static_cast<GpxRules*>(self)->end(); });
        XML_SetCharacterDataHandler(parser.get(), [](void* self, const char* text, int length) {
            if (auto& open = static_cast<GpxRules*>(self)->m_open; !open.empty())
                open.back().text.append(text, static_cast<std::size_t>(length));
        });
        if (XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), 1)
            != XML_STATUS_OK)
            m_faults += "not well formed\n";
        return m_faults;
    }

private:
    struct Child {
        std::string_view name;
        bool repeats = false;
    };
    using Sequence = std::vector<Child>;
    struct Open {
        std::string name;
        std::string text;
        std::size_t reached = 0; ///< place in the sequence of what stands in it
    };
    static constexpr std::string_view space = "http://www.topografix.com/GPX/1/1|";

    static const Sequence* sequenceOf(std::string_view element)
    {
        static const Sequence point{{"ele"},           {"time"},   {"magvar"},    {"geoidheight"},
                                    {"name"},          {"cmt"},    {"desc"},      {"src"},
                                    {"link", true},    {"sym"},    {"type"},      {"fix"},
                                    {"sat"},           {"hdop"},   {"vdop"},      {"pdop"},
                                    {"ageofdgpsdata"}, {"dgpsid"}, {"extensions"}};
        static const std::map<std::string_view, Sequence> sequences{
            {"gpx", {{"metadata"}, {"wpt", true}, {"rte", true}, {"trk", true}, {"extensions"}}},
            {"rte",
             {{"name"},
              {"cmt"},
              {"desc"},
              {"src"},
              {"link", true},
              {"number"},
              {"type"},
              {"extensions"},
              {"rtept", true}}},
            {"trk",
             {{"name"},
              {"cmt"},
              {"desc"},
              {"src"},
              {"link", true},
              {"number"},
              {"type"},
              {"extensions"},
              {"trkseg", true}}},
            {"trkseg", {{"trkpt", true}, {"extensions"}}},
            {"wpt", point},
            {"rtept", point},
            {"trkpt", point},
        };
        const auto it = sequences.find(element);
        return it == sequences.end() ? nullptr : &it->second;
    }

    void fault(const std::string& what) { m_faults += what + "\n"; }

    void begin(std::string_view name, const char** attributes)
    {
        if (!name.starts_with(space))
            fault("not in the namespace: " + std::string(name));
        name.remove_prefix(std::min(name.size(), name.rfind('|') + 1));
        if (m_open.empty()) {
            if (name != "gpx")
                fault("begins with " + std::string(name));
        } else if (!m_allowed.contains(std::string(name))) {
            place(m_open.back(), name);
        }
        std::map<std::string, std::string> values;
        for (; *attributes; attributes += 2)
            values[attributes[0]] = attributes[1];
        if (name == "gpx" && (values["version"] != "1.1" || values["creator"].empty()))
            fault("version or creator");
        if (name == "wpt" || name == "rtept" || name == "trkpt") {
            const double latitude = number(values["lat"]);
            const double longitude = number(values["lon"]);
            if (!(latitude >= -90 && latitude <= 90))
                fault("lat " + values["lat"]);
            if (!(longitude >= -180 && longitude < 180))
                fault("lon " + values["lon"]);
        }
        m_open.push_back({std::string(name), {}, 0});
    }

    void place(Open& parent, std::string_view name)
    {
        const Sequence* sequence = sequenceOf(parent.name);
        const auto where = parent.name + "/" + std::string(name);
        if (!sequence)
            return fault("no element stands in one: " + where);
        const auto it = std::find_if(sequence->begin(), sequence->end(),
                                     [&](const Child& child) { return child.name == name; });
        if (it == sequence->end())
            return fault("unknown: " + where);
        const auto at = static_cast<std::size_t>(it - sequence->begin()) + 1;
        if (at < parent.reached || (at == parent.reached && !it->repeats))
            fault("out of order or twice: " + where);
        parent.reached = at;
    }

    void end()
    {
        const Open& open = m_open.back();
        if (open.name == "time" && !isTime(open.text))
            fault("time " + open.text);
        if (open.name == "ele" && number(open.text) != number(open.text))
            fault("ele " + open.text);
        m_open.pop_back();
    }

    /// Not a number for what is no decimal.
    static double number(std::string_view text)
    {
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value,
                                                  std::chars_format::fixed);
        const bool whole = error == std::errc{} && end == text.data() + text.size();
        return whole ? value : std::numeric_limits<double>::quiet_NaN();
    }

    static bool isTime(std::string_view text)
    {
        constexpr std::string_view form = "dddd-dd-ddTdd:dd:ddZ";
        return text.size() == form.size()
            && std::equal(text.begin(), text.end(), form.begin(), [](char c, char kind) {
                   return kind == 'd' ? c >= '0' && c <= '9' : c == kind;
               });
    }

    std::set<std::string> m_allowed;
    std::vector<Open> m_open;
    std::string m_faults;
};

} // namespace kelvox
