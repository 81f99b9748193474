#include "presentation/S52Render.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr std::size_t mostInstructions = 65'535; ///< counted in 16 bits, on purpose

void addInstructions(Portrayal& portrayal, const S52LuptTable& table)
{
    for (const auto& [acronym, entries] : table)
        for (const auto& entry : entries) {
            auto& list = portrayal.instructions[entry.get()];
            if (!list.empty())
                continue; // listed twice under its class
            for (const auto& text : entry->inst())
                if (list.size() < mostInstructions)
                    list.push_back(Instruction::parse(text));
        }
}
} // namespace

SymbolDrawing SymbolDrawing::from(std::string name, std::vector<S52Path> paths, Rect box)
{
    SymbolDrawing drawing;
    drawing.name = std::move(name);
    drawing.paths = std::move(paths);
    drawing.box = box;
    for (const S52Path& piece : drawing.paths)
        for (const Point p : piece.path.points()) {
            drawing.figure.include(p);
            drawing.reach = std::max(drawing.reach, std::hypot(p.x, p.y));
        }
    return drawing;
}

Rect SymbolDrawing::spaceAt(Point at, double degrees, double pixelsPerPoint) const
{
    Rect space;
    if (figure.isEmpty())
        return space;
    const double angle = degrees * std::numbers::pi / 180;
    const double sine = std::sin(angle) * pixelsPerPoint;
    const double cosine = std::cos(angle) * pixelsPerPoint;
    for (const double x : {figure.left, figure.right})
        for (const double y : {figure.bottom, figure.top})
            space.include(at + Point{x * cosine + y * sine, x * sine - y * cosine});
    return space;
}

const DisplayColor* Portrayal::color(std::string_view token) const
{
    const auto it = colors.find(token);
    return it == colors.end() ? nullptr : &it->second.color;
}

const SymbolDrawing* Portrayal::symbol(const std::string& name) const
{
    const auto it = symbols.find(name);
    return it == symbols.end() ? nullptr : &it->second;
}

S52Render::S52Render(S52Model& model)
    : m_model(model)
{
    setColorTable(1);
}

void S52Render::setColorTable(int table)
{
    constexpr std::array names{"DAY", "DUSK", "NIGHT"};
    m_ccieDictionary = nullptr;
    if (table >= 1 && table <= 3) {
        const auto it = m_model.cols().find(names[static_cast<std::size_t>(table - 1)]);
        if (it != m_model.cols().end())
            m_ccieDictionary = &it->second.ccie();
    }
    m_model.resetS52Ccie();
    m_model.buildSymbolPaths(m_ccieDictionary ? *m_ccieDictionary : S52CcieMap());
    buildPortrayal();
}

void S52Render::buildPortrayal()
{
    auto portrayal = std::make_shared<Portrayal>();
    if (m_ccieDictionary)
        portrayal->colors = *m_ccieDictionary;
    for (const auto& [name, symbol] : m_model.symb())
        portrayal->symbols.emplace(
            name, SymbolDrawing::from(name, symbol.s52Path(), itemRect(symbol, {0, 0})));
    for (auto& [name, style] : m_model.lnst())
        if (const S52Ccie* color = s52CcieForS52Item(style))
            portrayal->lineStyleColors.emplace(name, color->color);
    for (auto& [name, pattern] : m_model.patt())
        if (const S52Ccie* color = s52CcieForS52Item(pattern))
            portrayal->patternColors.emplace(name, color->color);
    addInstructions(*portrayal, m_model.luptForAreas());
    addInstructions(*portrayal, m_model.luptForLines());
    addInstructions(*portrayal, m_model.luptForPoints());
    m_portrayal = std::move(portrayal);
}

const S52Ccie* S52Render::s52CcieForToken(std::string_view token) const
{
    if (!m_ccieDictionary)
        return nullptr;
    const auto it = m_ccieDictionary->find(token);
    return it == m_ccieDictionary->end() ? nullptr : &it->second;
}

const S52Symb* S52Render::s52SymbForToken(std::string_view name) const
{
    const auto it = m_model.symb().find(name);
    return it == m_model.symb().end() ? nullptr : &it->second;
}

const S52Lnst* S52Render::s52LnstForToken(std::string_view name) const
{
    const auto it = m_model.lnst().find(name);
    return it == m_model.lnst().end() ? nullptr : &it->second;
}

const S52Ccie* S52Render::s52CcieForS52Item(S52Item& item) const
{
    if (item.s52Ccie)
        return &*item.s52Ccie;
    for (const S52Vct& vct : item.vct()) {
        if (vct.instruction != S52Vct::SP || vct.parametersString.empty())
            continue;
        const auto token = item.crf().find(vct.parametersString.front());
        const S52Ccie* color = token == item.crf().end() ? nullptr : s52CcieForToken(token->second);
        if (color) {
            item.s52Ccie = *color;
            return &*item.s52Ccie;
        }
    }
    return nullptr;
}

Rect S52Render::itemRect(const S52Item& item, Point anchor)
{
    constexpr double scale = S52Item::scaleTransform;
    const Rect box = item.rect();
    const Point move = item.pivotTransform() + anchor;
    return {box.left * scale + move.x, box.bottom * scale + move.y, box.right * scale + move.x,
            box.top * scale + move.y};
}

} // namespace kelvox
