#include "presentation/LabelTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
constexpr double feetPerMetre = 3.2808399;

/// Characteristics by value of LITCHR, 1 to 29; where a group belongs it stands at the '#'.
constexpr std::array<std::string_view, 30> characters{
    "",    "F",   "Fl#", "LFl#", "Q#",      "VQ#",    "UQ#",     "Iso",     "Oc#",    "IQ",
    "IVQ", "IUQ", "Mo#", "FFl#", "Fl+LFl#", "Oc+Fl#", "FLFl#",   "AlOc#",   "AlLFl#", "AlFl#",
    "Al#", "",    "",    "",     "",        "Q+LFl#", "VQ+LFl#", "UQ+LFl#", "Al",     "AlFFl#"};

std::string_view colourLetter(int colour)
{
    switch (colour) {
    case 1:
        return "W";
    case 3:
        return "R";
    case 4:
        return "G";
    case 5:
        return "Bu";
    case 6:
        return "Y";
    case 9:
        return "Am";
    case 10:
        return "Vi";
    case 11:
        return "Or";
    default:
        return "";
    }
}

/// "(2)(1)" as the cell writes it; a single flash and empty brackets are left out.
std::string group(const S57Object& light)
{
    const std::string_view text = light.feature().featureAttributeStringValue(s57attribute::SIGGRP);
    if (text.empty() || text == "()" || text == "(1)" || text == "()(1)")
        return {};
    std::string inner;
    for (const char c : text) {
        if (c == ')' && !inner.empty() && inner.back() != '+')
            inner += '+';
        else if (c != '(' && c != ')')
            inner += c;
    }
    while (!inner.empty() && inner.back() == '+')
        inner.pop_back();
    return inner.empty() ? std::string() : '(' + inner + ')';
}
} // namespace

TextFigure soundingFigure(float depthMetres, int unit, bool large)
{
    const S57Depth sounding{{}, depthMetres};
    const auto form = large ? S57Depth::Form::Large : S57Depth::Form::Small;
    S57DepthText text;
    switch (unit) {
    case 0:
        text = sounding.depthInFeet(form);
        break;
    case 1:
        text = sounding.depthInMetres(form);
        break;
    case 2:
        text = sounding.depthInFathoms(form);
        break;
    default:
        return {};
    }
    TextFigure figure;
    figure.text = std::move(text.figure);
    figure.subscript = std::move(text.subscript);
    figure.size = text.size;
    figure.underlined = text.dries;
    figure.halo = false;
    return figure;
}

std::string lightCharacter(const S57Object& light, bool heightsInMetres)
{
    const S57Feature& feature = light.feature();
    const int kind = feature.featureAttributeIntValue(s57attribute::LITCHR).value_or(0);
    std::string text;
    if (kind > 0 && kind < static_cast<int>(characters.size())) {
        text = characters[static_cast<std::size_t>(kind)];
        if (const auto place = text.find('#'); place != std::string::npos)
            text.replace(place, 1, group(light));
    }
    const auto add = [&](std::string_view part) {
        if (part.empty())
            return;
        if (!text.empty() && text.back() != ')' && text.back() != ' ')
            text += ' ';
        text += part;
    };
    std::string colours;
    for (const int colour : light.colour())
        colours += colourLetter(colour);
    if (colours != "W")
        add(colours); // white goes without saying
    const auto number = [&](int code, std::string_view unit, double factor) {
        if (const auto value = feature.featureAttributeFloatValue(code))
            add(fmt::format("{:g}{}", std::round(*value * factor * 10) / 10, unit));
    };
    number(s57attribute::SIGPER, "s", 1);
    if (heightsInMetres)
        number(s57attribute::HEIGHT, "m", 1);
    else if (const auto height = feature.featureAttributeFloatValue(s57attribute::HEIGHT))
        add(fmt::format("{:.0f}ft", *height * feetPerMetre));
    number(s57attribute::VALNMR, "M", 1);
    return text;
}

} // namespace kelvox
