// The conditional symbology procedures: each decides from the feature's attributes which plain
// instructions are run.

#include "presentation/S57ObjectRender.h"

#include <array>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
using namespace s57class;

struct TopMarks {
    std::string_view floating;
    std::string_view fixed;
};

/// By topmark shape 1 to 33. Rows 12 and 31 have the same symbol twice, on purpose.
constexpr std::array<TopMarks, 33> topMarks{
    {{"SY(TOPMAR02)", "SY(TOPMAR22)"}, {"SY(TOPMAR04)", "SY(TOPMAR24)"},
     {"SY(TOPMAR10)", "SY(TOPMAR30)"}, {"SY(TOPMAR12)", "SY(TOPMAR32)"},
     {"SY(TOPMAR13)", "SY(TOPMAR33)"}, {"SY(TOPMAR14)", "SY(TOPMAR34)"},
     {"SY(TOPMAR65)", "SY(TOPMAR85)"}, {"SY(TOPMAR17)", "SY(TOPMAR86)"},
     {"SY(TOPMAR16)", "SY(TOPMAR36)"}, {"SY(TOPMAR08)", "SY(TOPMAR28)"},
     {"SY(TOPMAR07)", "SY(TOPMAR27)"}, {"SY(TOPMAR14)", "SY(TOPMAR14)"},
     {"SY(TOPMAR05)", "SY(TOPMAR25)"}, {"SY(TOPMAR06)", "SY(TOPMAR26)"},
     {"SY(TMARDEF2)", "SY(TOPMAR88)"}, {"SY(TMARDEF2)", "SY(TOPMAR87)"},
     {"SY(TMARDEF2)", "SY(TMARDEF1)"}, {"SY(TOPMAR10)", "SY(TOPMAR30)"},
     {"SY(TOPMAR13)", "SY(TOPMAR33)"}, {"SY(TOPMAR14)", "SY(TOPMAR34)"},
     {"SY(TOPMAR13)", "SY(TOPMAR33)"}, {"SY(TOPMAR14)", "SY(TOPMAR34)"},
     {"SY(TOPMAR14)", "SY(TOPMAR34)"}, {"SY(TOPMAR02)", "SY(TOPMAR22)"},
     {"SY(TOPMAR04)", "SY(TOPMAR24)"}, {"SY(TOPMAR10)", "SY(TOPMAR30)"},
     {"SY(TOPMAR17)", "SY(TOPMAR86)"}, {"SY(TOPMAR18)", "SY(TOPMAR89)"},
     {"SY(TOPMAR02)", "SY(TOPMAR22)"}, {"SY(TOPMAR17)", "SY(TOPMAR86)"},
     {"SY(TOPMAR14)", "SY(TOPMAR14)"}, {"SY(TOPMAR10)", "SY(TOPMAR30)"},
     {"SY(TMARDEF2)", "SY(TMARDEF1)"}}};

std::string_view lightSymbol(const std::vector<int>& colours)
{
    if (colours.size() == 1)
        switch (colours[0]) {
        case 1:
        case 6:
        case 11:
            return "SY(LIGHTS13,45)";
        case 3:
            return "SY(LIGHTS11,135)";
        case 4:
            return "SY(LIGHTS12,135)";
        default:
            return "SY(LITDEF11,135)";
        }
    if (colours[0] == 1 && colours[1] == 3)
        return "SY(LIGHTS11,135)";
    if (colours[0] == 1 && colours[1] == 4)
        return "SY(LIGHTS12,135)";
    return "SY(LITDEF11,135)";
}
} // namespace

void S57ObjectRender::drawSymbolConditional(const Parameter& p, const std::string& name) const
{
    using Procedure = void (S57ObjectRender::*)(const Parameter&) const;
    static constexpr std::array<std::pair<std::string_view, Procedure>, 9> procedures{
        {{"DEPARE02", &S57ObjectRender::drawDepthArea},
         {"LIGHTS05", &S57ObjectRender::drawLights},
         {"OBSTRN05", &S57ObjectRender::drawObstruction},
         {"SLCONS03", &S57ObjectRender::drawShoreLineConstruction},
         {"QUAPOS01", &S57ObjectRender::drawQualityOfPosition},
         {"RESTRN01", &S57ObjectRender::drawRestriction},
         {"RESARE03", &S57ObjectRender::drawRestrictedArea},
         {"TOPMAR01", &S57ObjectRender::drawTopMark},
         {"WRECKS03", &S57ObjectRender::drawWreck}}};
    for (const auto& [known, procedure] : procedures)
        if (known == name)
            return (this->*procedure)(p);
}

void S57ObjectRender::drawDepthArea(const Parameter& p) const
{
    if (p.feature.objectCode() != DRGARE)
        return; // ordinary depth areas have a routine of their own
    processSelectedInstruction(p, "AP(DRGARE01)");
    processSelectedInstruction(p, "LS(SOLID,1,DEPCN)");
}

void S57ObjectRender::drawLights(const Parameter& p) const
{
    constexpr int sectorScale = 50'001; ///< sectors are drawn at finer scales only
    if (!p.object.parent()) {
        constexpr double radius = 4;
        constexpr int corners = 24;
        Path circle;
        for (int i = 0; i <= corners; ++i) {
            const double angle = 2 * std::numbers::pi * i / corners;
            circle.lineTo(p.anchor
                          + Point{std::cos(angle), std::sin(angle)}
                              * (radius * m_frame.pixelsPerPoint));
        }
        strokeFigure(p, circle, {m_colors.inkColor, 2, LinePattern::Solid});
    }
    if (p.hits) { // one that shows nothing but its sector is found where it stands
        const double reach = 8 * m_frame.pixelsPerPoint;
        p.hits->hitBox(Rect{p.anchor.x, p.anchor.y, p.anchor.x, p.anchor.y}.grownBy(reach, reach));
    }
    drawLightCharacter(p);
    if (m_frame.view.scale() < sectorScale && m_settings.showSectors
        && p.object.sectr1().value_or(0) != 0 && p.object.sectr2().value_or(0) != 0)
        return drawSector(p);

    const int category = p.object.catlit();
    if (category == 8 || category == 11)
        return processSelectedInstruction(p, "SY(LIGHTS82)");
    if (category == 9)
        return processSelectedInstruction(p, "SY(LIGHTS81)");
    const auto colours = p.object.colour();
    if (!colours.empty())
        processSelectedInstruction(p, lightSymbol(colours));
}

void S57ObjectRender::drawObstruction(const Parameter& p) const
{
    constexpr double shoalMetres = 20; ///< fixed, no user setting, on purpose
    const int level = p.object.watlev();
    if (p.feature.objectCode() == UWTROC) {
        processSelectedInstruction(p,
                                   level == 2       ? "SY(OBSTRN11)"
                                       : level == 3 ? "SY(UWTROC03)"
                                                    : "SY(UWTROC04)");
        return drawObjectName(p);
    }
    if (p.feature.objectCode() == OBSTRN) {
        const int category = p.object.catobs();
        const bool deep = p.object.valsou().value_or(0) > shoalMetres;
        std::string_view symbol = deep ? "SY(DANGER02)" : "SY(OBSTRN01)";
        if (category == 7)
            symbol = "SY(FOULGND1)";
        else if (category == 5)
            symbol = "SY(FSHHAV01)";
        else if (level == 1 || level == 4)
            symbol = "SY(OBSTRN03)";
        else if (level == 2)
            symbol = "SY(OBSTRN11)";
        else if (level == 7)
            symbol = "SY(FLTHAZ02)";
        processSelectedInstruction(p, symbol);
    }
    if (p.isArea())
        processSelectedInstruction(p, "LS(DOTT,1,DNGHL)");
}

void S57ObjectRender::drawShoreLineConstruction(const Parameter& p) const
{
    if (!p.isLine() && !p.isArea())
        return;
    const int condition = p.object.condtn();
    const int level = p.object.watlev();
    const int category = p.object.catslc();
    if (condition == 1 || condition == 2)
        processSelectedInstruction(p, "LS(DASH,1,CSTLN)");
    else if (level == 3 || level == 4)
        processSelectedInstruction(p, "LS(DASH,2,CSTLN)");
    else if (category == 6 || category == 15 || category == 16)
        processSelectedInstruction(p, "LS(SOLID,4,CSTLN)");
    else
        processSelectedInstruction(p, "LS(SOLID,2,CSTLN)");
}

void S57ObjectRender::drawQualityOfPosition(const Parameter& p) const
{
    if (p.isLine() || p.isArea())
        processSelectedInstruction(p, "LS(SOLID,1,CSTLN)"); // whatever the quality, on purpose
}

void S57ObjectRender::drawRestriction(const Parameter& /*p*/) const
{
    // Draws nothing, on purpose: the area's own symbols tell its restriction.
}

void S57ObjectRender::drawRestrictedArea(const Parameter& p) const
{
    processSelectedInstruction(p, "LS(DASH,1,CHMGD)");
    const int restriction = p.object.restrn();
    if (restriction == 1 || restriction == 2)
        processSelectedInstruction(p, "SY(ACHRES51)");
    else if (restriction >= 3 && restriction <= 6)
        processSelectedInstruction(p, "SY(FSHRES51)");
    else
        processSelectedInstruction(p, "SY(ENTRES51)");
}

void S57ObjectRender::drawTopMark(const Parameter& p) const
{
    const S57Feature* parent = p.object.parent();
    if (!parent)
        return;
    const int carrier = parent->objectCode();
    const bool floating =
        (carrier >= BOYCAR && carrier <= BOYSPP) || carrier == LITFLT || carrier == LITVES;
    const bool fixed = carrier >= BCNCAR && carrier <= BCNSPP;
    if (!floating && !fixed)
        return;
    const int shape = p.object.topshp();
    if (shape < 1 || shape > static_cast<int>(topMarks.size()))
        return processSelectedInstruction(p, floating ? "SY(TMARDEF2)" : "SY(TMARDEF1)");
    const TopMarks& marks = topMarks[static_cast<std::size_t>(shape - 1)];
    processSelectedInstruction(p, floating ? marks.floating : marks.fixed);
}

void S57ObjectRender::drawWreck(const Parameter& p) const
{
    if (p.feature.objectCode() != WRECKS)
        return;
    const int category = p.object.catwrk();
    if (category == 1)
        processSelectedInstruction(p, "SY(WRECKS04)");
    else if (category == 2)
        processSelectedInstruction(p, "SY(WRECKS05)");
    else if (category == 4 || category == 5)
        processSelectedInstruction(p, "SY(WRECKS01)");
}

} // namespace kelvox
