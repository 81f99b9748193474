#include "presentation/Instruction.h"

#include "presentation/TextFields.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvox {

namespace {
using Kind = Instruction::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 8> kinds{{{"AC", Kind::AC},
                                                                  {"AP", Kind::AP},
                                                                  {"CS", Kind::CS},
                                                                  {"LC", Kind::LC},
                                                                  {"LS", Kind::LS},
                                                                  {"SY", Kind::SY},
                                                                  {"TE", Kind::TE},
                                                                  {"TX", Kind::TX}}};

std::vector<std::string_view> split(std::string_view text)
{
    std::vector<std::string_view> parts;
    forEachPart(text, ',', [&](std::string_view part) { parts.push_back(part); });
    return parts;
}

void parseSymbol(Instruction& instruction, const std::vector<std::string_view>& parameters)
{
    instruction.name = parameters[0].substr(0, 8);
    if (parameters.size() < 2 || parameters[1].empty())
        return;
    const auto angle = parameters[1].substr(0, parameters[1].size() - 1); // the parenthesis
    if (angle == "ORIENT")
        instruction.usesOrientation = true;
    else
        instruction.angle = static_cast<float>(decimalValue(angle));
}

void parseLine(Instruction& instruction, std::string_view inner)
{
    const auto parameters = split(inner);
    if (parameters.size() != 3) {
        instruction.kind = Kind::None;
        return;
    }
    constexpr double widest = 2; // on purpose, whatever the library asks for
    instruction.pattern = parameters[0];
    instruction.width = static_cast<float>(std::min(decimalValue(parameters[1]), widest));
    instruction.name = parameters[2].substr(0, 5);
}

void parseText(Instruction& instruction, const std::vector<std::string_view>& parameters)
{
    if (parameters.size() < 9)
        return;
    if (parameters[0] == "OBJNAM" || parameters[0] == "INFORM")
        instruction.attribute = parameters[0];
    instruction.offsetX = integerValue(parameters[5]);
    instruction.offsetY = integerValue(parameters[6]);
}

void parseFormattedText(Instruction& instruction, std::string_view inner)
{
    const auto parts = split(inner);
    if (parts.size() < 2)
        return;
    if (parts[1] == "'OBJNAM'")
        instruction.attribute = "OBJNAM";
    else if (parts[1] == "'ELEVAT'")
        instruction.attribute = "ELEVAT";
}
} // namespace

Instruction Instruction::parse(std::string_view text)
{
    Instruction instruction;
    const auto known =
        std::ranges::find(kinds, text.substr(0, 2), &std::pair<std::string_view, Kind>::first);
    if (known == kinds.end() || text.size() < 4)
        return instruction;
    instruction.kind = known->second;
    const std::string_view rest = text.substr(3);
    const std::string_view inner = rest.substr(0, rest.size() - 1);
    const auto parameters = split(rest);
    switch (instruction.kind) {
    case Kind::SY:
        parseSymbol(instruction, parameters);
        break;
    case Kind::LS:
        parseLine(instruction, inner);
        break;
    case Kind::AC:
        instruction.name = parameters[0].substr(0, 5);
        if (parameters.size() > 1)
            instruction.transparency = integerValue(parameters[1]);
        break;
    case Kind::TX:
        parseText(instruction, parameters);
        break;
    case Kind::TE:
        parseFormattedText(instruction, inner);
        break;
    default: // AP, CS, LC: a name of eight characters
        instruction.name = rest.substr(0, 8);
        break;
    }
    return instruction;
}

} // namespace kelvox
