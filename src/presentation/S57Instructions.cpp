// The plain drawing instructions of look-up entries.

#include "presentation/S57ObjectRender.h"

#include <cmath>

namespace kelvox {

namespace {
constexpr double patternOpacity = 0.15;
constexpr double textStep = 20; ///< display points of one unit of a text's offset

float turned(double degrees)
{
    return static_cast<float>(degrees - 360 * std::floor(degrees / 360));
}
} // namespace

void S57ObjectRender::drawLookUp(const Parameter& p) const
{
    const S52Lupt* entry = p.feature.s52Lupt();
    if (!entry)
        return;
    const auto instructions = m_portrayal.instructions.find(entry);
    if (instructions == m_portrayal.instructions.end())
        return;
    for (const Instruction& instruction : instructions->second)
        drawInstruction(p, instruction);
}

void S57ObjectRender::processSelectedInstruction(const Parameter& p, std::string_view text) const
{
    drawInstruction(p, Instruction::parse(text));
}

void S57ObjectRender::drawInstruction(const Parameter& p, const Instruction& instruction) const
{
    using Kind = Instruction::Kind;
    switch (instruction.kind) {
    case Kind::SY:
        return drawSymbol(p, instruction);
    case Kind::LS:
        return drawLineStyle(p, instruction);
    case Kind::LC:
        return drawLineComplex(p, instruction);
    case Kind::AC:
        return drawAreaColor(p, instruction);
    case Kind::AP:
        return drawAreaPattern(p, instruction);
    case Kind::TX:
    case Kind::TE:
        return drawText(p, instruction);
    case Kind::CS:
        return drawSymbolConditional(p, instruction.name);
    case Kind::None:
        return;
    }
}

void S57ObjectRender::drawSymbol(const Parameter& p, const Instruction& instruction) const
{
    const SymbolDrawing* symbol = m_portrayal.symbol(instruction.name);
    if (!symbol || p.covered)
        return;
    // The box grown by its own size to each side, as generous as the space of a turned figure.
    const double scale = m_frame.pixelsPerPoint;
    const Rect& box = symbol->box;
    const Rect grown = Rect{p.anchor.x + box.left * scale, p.anchor.y - box.top * scale,
                            p.anchor.x + box.right * scale, p.anchor.y - box.bottom * scale}
                           .grownBy(box.width() * scale, box.height() * scale);
    const Rect space = p.portion.textBox.isEmpty() ? pictureBox(0) : p.portion.textBox;
    if (!grown.intersects(space))
        return;
    if (p.hits) // also where the scheme has no colour for the symbol
        return p.hits->hitBox(grown);
    if (symbol->paths.empty())
        return;
    const float angle = instruction.usesOrientation
        ? turned(p.object.orient().value_or(0) - m_frame.view.rotate())
        : turned(instruction.angle);
    p.texts.avoid(symbol->spaceAt(p.anchor, angle, scale),
                  p.isPoint() ? S57TextModel::Cover::Solid : S57TextModel::Cover::Open);
    if (!p.textsOnly)
        p.marks.placeSymbol(*symbol, p.anchor, angle);
}

void S57ObjectRender::drawLineStyle(const Parameter& p, const Instruction& instruction) const
{
    const DisplayColor* color = m_portrayal.color(instruction.name);
    if (!color)
        return;
    const LinePattern pattern = instruction.pattern == "DASH" ? LinePattern::Dash
        : instruction.pattern == "DOTT"                       ? LinePattern::Dott
                                                              : LinePattern::Solid;
    strokeOutline(p, {*color, instruction.width, pattern});
}

void S57ObjectRender::drawLineComplex(const Parameter& p, const Instruction& instruction) const
{
    // Dashed in the style's colour; its figure is not repeated along the line, on purpose.
    const auto color = m_portrayal.lineStyleColors.find(instruction.name);
    if (color != m_portrayal.lineStyleColors.end())
        strokeOutline(p, {color->second, 1, LinePattern::Dash});
}

void S57ObjectRender::drawAreaColor(const Parameter& p, const Instruction& instruction) const
{
    constexpr int builtUp = 13;
    const int code = p.feature.objectCode();
    if (code == s57class::UNSARE || code == builtUp)
        return hitOutline(p); // those two are never filled, on purpose
    const DisplayColor* color = m_portrayal.color(instruction.name);
    if (!p.isArea() || !color)
        return;
    const bool clear = instruction.transparency >= 1 && instruction.transparency <= 3;
    fillOutline(p, clear ? color->withOpacity(instruction.transparency * 0.25) : *color);
}

void S57ObjectRender::drawAreaPattern(const Parameter& p, const Instruction& instruction) const
{
    // A tint of the pattern's colour; the figure is not tiled, on purpose.
    const auto color = m_portrayal.patternColors.find(instruction.name);
    if (p.isArea() && color != m_portrayal.patternColors.end())
        fillOutline(p, color->second.withOpacity(patternOpacity));
}

void S57ObjectRender::drawText(const Parameter& p, const Instruction& instruction) const
{
    Parameter moved = p;
    moved.anchor = p.anchor
        + Point{instruction.offsetX * textStep, -instruction.offsetY * textStep}
            * m_frame.pixelsPerPoint;
    if (instruction.attribute == "OBJNAM")
        drawObjectName(moved);
    else if (instruction.attribute == "INFORM")
        drawInformation(moved);
    else if (instruction.attribute == "ELEVAT")
        drawElevation(moved);
}

} // namespace kelvox
