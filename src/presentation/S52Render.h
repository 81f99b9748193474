#pragma once

#include "presentation/Instruction.h"
#include "presentation/S52Model.h"

#include <memory>
#include <unordered_map>

namespace kelvox {

/// A symbol made ready for one colour scheme. Display points, y up, the pivot at the origin.
struct SymbolDrawing {
    std::string name;
    std::vector<S52Path> paths;
    Rect box; ///< declared box about the pivot, which it need not hold
    Rect figure; ///< around all that is drawn, pens left out
    double reach = 0; ///< from the pivot to the farthest that is drawn

    /// The pixels that the symbol takes at a place, turned clockwise.
    [[nodiscard]] Rect spaceAt(Point at, double degrees, double pixelsPerPoint) const;
    [[nodiscard]] static SymbolDrawing from(std::string name, std::vector<S52Path> paths, Rect box);
};

/// All that drawing takes from the presentation library in one colour scheme: an unchanging
/// snapshot that workers share.
struct Portrayal {
    S52CcieMap colors;
    std::unordered_map<std::string, SymbolDrawing> symbols;
    // The one colour that lines and fills of a definition are drawn in.
    std::unordered_map<std::string, DisplayColor> lineStyleColors;
    std::unordered_map<std::string, DisplayColor> patternColors;
    std::unordered_map<const S52Lupt*, std::vector<Instruction>> instructions;

    [[nodiscard]] const DisplayColor* color(std::string_view token) const;
    [[nodiscard]] const SymbolDrawing* symbol(const std::string& name) const;
};

/// Colour schemes and the definitions drawn in them. Main thread.
class S52Render {
public:
    /// Begins with the day table. The model must outlive the renderer and what it gives out.
    explicit S52Render(S52Model& model);

    /// 1 day, 2 dusk, 3 night; with any other number, or a table that the library lacks, nothing
    /// that needs a colour is drawn.
    void setColorTable(int table);

    [[nodiscard]] const S52Ccie* s52CcieForToken(std::string_view token) const;
    [[nodiscard]] const S52Symb* s52SymbForToken(std::string_view name) const;
    [[nodiscard]] const S52Lnst* s52LnstForToken(std::string_view name) const;
    /// The first pen colour of a definition that the scheme has; kept on the item.
    [[nodiscard]] const S52Ccie* s52CcieForS52Item(S52Item& item) const;
    /// The item's box in display points, y up, with its pivot on the anchor.
    [[nodiscard]] static Rect itemRect(const S52Item& item, Point anchor);

    [[nodiscard]] std::shared_ptr<const Portrayal> portrayal() const { return m_portrayal; }

private:
    void buildPortrayal();

    S52Model& m_model;
    const S52CcieMap* m_ccieDictionary = nullptr;
    std::shared_ptr<const Portrayal> m_portrayal;
};

} // namespace kelvox
