#pragma once

#include <fmt/format.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace kelvox {

/// One line of a library in the exchange form; '~' in the body stands for the unit separator.
inline std::string field(std::string_view tag, std::string body)
{
    for (char& c : body)
        if (c == '~')
            c = '\x1f';
    return fmt::format("{}{:5}{}\x1f\r\n", tag, body.size() + 1, body);
}

inline std::string module(std::initializer_list<std::string> fields)
{
    std::string text = field("0001", "00001");
    for (const std::string& line : fields)
        text += line;
    return text + "****00000\r\n";
}

/// A look-up entry of class BOYLAT in the table of simplified points.
inline std::string lookUp(std::initializer_list<std::string> conditions,
                          const std::string& instructions, const std::string& table = "SIMPLIFIED")
{
    std::string text = field("0001", "00001") + field("LUPT", "LU00007NILBOYLATP00008O" + table);
    for (const std::string& condition : conditions)
        text += field("ATTC", condition);
    return text + field("INST", instructions) + field("DISC", "STANDARD") + field("LUCM", "27010")
        + "****00000\r\n";
}

inline std::string symbol(const std::string& name, const std::string& vectors)
{
    return module(
        {field("SYMB", "SY00003NIL"), field("SYMD", name + "V003000020000400005000010000050"),
         field("SXPO", "a thing"), field("SCRF", "ACHREDBCHGRN"), field("SVCT", vectors)});
}

} // namespace kelvox
