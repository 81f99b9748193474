// The library as it is built and shipped.

#include "base/File.h"
#include "presentation/CodeTables.h"
#include "presentation/ProgramNames.h"
#include "presentation/S52Model.h"
#include "presentation/S57ObjectRender.h"
#include "preslib/Source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace kelvox {

namespace {
S52Model& shipped()
{
    static S52Model model({KELVOX_RESOURCE_DIR, {}});
    return model;
}

/// The classes of IHO S-57 edition 3.1 that a feature of the display can have, with the geometry
/// they may take: the classes that the program never draws are left out.
constexpr const char* geometryOfClasses =
#include "preslib/GeometryOfClasses.inc"
    ;

struct Conditions {
    std::set<std::string> texts;
    std::size_t count = 0;
};

/// Whether the attributes, one text each, satisfy every condition: a text may go on after it.
bool holds(const S52Lupt& entry, const std::set<std::string>& attributes)
{
    const auto met = [&](const std::string& condition) {
        return !condition.empty() && std::ranges::any_of(attributes, [&](const auto& text) {
            return text.starts_with(condition);
        });
    };
    return std::ranges::all_of(entry.attc(), met);
}

std::size_t conditionCount(const S52Lupt& entry)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(entry.attc(), [](const auto& text) { return !text.empty(); }));
}

/// A feature that meets the conditions of both entries; nothing when they contradict each other.
std::set<std::string> featureFor(const S52Lupt& one, const S52Lupt& other)
{
    std::map<std::string, std::string> values;
    for (const S52Lupt* entry : {&one, &other})
        for (const std::string& condition : entry->attc()) {
            if (condition.empty())
                continue;
            std::string& value = values[condition.substr(0, 6)];
            const std::string wanted = condition.substr(6);
            if (!value.empty() && !wanted.empty() && value != wanted)
                return {};
            if (!wanted.empty())
                value = wanted;
        }
    std::set<std::string> attributes;
    for (const auto& [acronym, value] : values)
        attributes.insert(acronym + (value.empty() ? "7" : value));
    return attributes;
}

std::array<const S52LuptTable*, 5> tables(S52Model& model)
{
    std::array<const S52LuptTable*, 5> result{};
    model.setSymbols(false, false);
    result[0] = &model.luptForPoints();
    result[1] = &model.luptForAreas();
    model.setSymbols(true, true);
    result[2] = &model.luptForPoints();
    result[3] = &model.luptForAreas();
    result[4] = &model.luptForLines();
    model.setSymbols(false, true);
    return result;
}

struct Luv {
    double l, u, v;
};

/// CIE 1976 L*u*v* (CIE 15) against the tables' white of 80 cd/m2.
Luv luv(double x, double y, double luminance)
{
    const auto prime = [](double cx, double cy) {
        const double d = -2 * cx + 12 * cy + 3;
        return std::pair{4 * cx / d, 9 * cy / d};
    };
    const double t = luminance / 80;
    const double l = t > 0.008856 ? 116 * std::cbrt(t) - 16 : 903.3 * t;
    const auto [u, v] = prime(x, y);
    const auto [un, vn] = prime(0.28, 0.31);
    return {l, 13 * l * (u - un), 13 * l * (v - vn)};
}

double distance(const Luv& a, const Luv& b)
{
    return std::hypot(a.l - b.l, a.u - b.u, a.v - b.v);
}

/// What the calibrated display gives off: shares of the primaries in the white (0.28, 0.31),
/// worked out by a separate program, and the tristimulus values of the sRGB primaries.
Luv shown(DisplayColor c, double* luminance = nullptr)
{
    const double share[] = {0.15533, 0.75485, 0.08982};
    const double at[][2] = {{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};
    const int drive[] = {c.red, c.green, c.blue};
    double X = 0;
    double Y = 0;
    double Z = 0;
    for (int i = 0; i < 3; ++i) {
        const double v = drive[i] / 255.0;
        const double light =
            80 * share[i] * (v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
        X += light * at[i][0] / at[i][1];
        Y += light;
        Z += light * (1 - at[i][0] - at[i][1]) / at[i][1];
    }
    if (luminance)
        *luminance = Y;
    const double sum = X + Y + Z;
    return sum > 0 ? luv(X / sum, Y / sum, Y) : Luv{0, 0, 0};
}
} // namespace

TEST(Library, NamesNothingThatTheProgramOrTheLibraryLacks)
{
    const S52LoadReport& report = shipped().report();
    EXPECT_TRUE(report.problems.empty());
    for (const S52UnknownName& unknown : report.unknownNames)
        ADD_FAILURE() << unknown.sentence();
    EXPECT_FALSE(report.calibration.empty());
}

TEST(Library, HasEntriesForEveryClassAndGeometry)
{
    std::string_view rest = geometryOfClasses;
    const auto all = tables(shipped());
    int classes = 0;
    while (!rest.empty()) {
        const std::string acronym(rest.substr(0, 6));
        const auto end = rest.find(' ', 7);
        const std::string_view geometry = rest.substr(7, end - 7);
        ASSERT_GT(objectCode(acronym), 0) << acronym;
        ++classes;
        for (const auto& [kind, indices] : std::initializer_list<std::pair<char, std::vector<int>>>{
                 {'P', {0, 2}}, {'L', {4}}, {'A', {1, 3}}})
            if (geometry.find(kind) != std::string_view::npos)
                for (const int index : indices) {
                    EXPECT_TRUE(all[index]->contains(acronym)) << acronym << ' ' << kind << index;
                }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    EXPECT_EQ(classes, 147) << "1 to 160 without the 11 not drawn and the 2 without look-up";
}

TEST(Library, TheLastMatchIsTheBestMatch)
{
    int features = 0;
    for (const S52LuptTable* table : tables(shipped()))
        for (const auto& [acronym, entries] : *table) {
            EXPECT_EQ(conditionCount(*entries.front()), 0U)
                << acronym << ": the row without conditions comes first";
            for (const auto& one : entries)
                for (const auto& other : entries) {
                    const auto feature = featureFor(*one, *other);
                    if (feature.empty())
                        continue;
                    ++features;
                    const S52Lupt* last = nullptr;
                    std::size_t most = 0;
                    for (const auto& entry : entries)
                        if (conditionCount(*entry) > 0 && holds(*entry, feature)) {
                            last = entry.get();
                            most = std::max(most, conditionCount(*entry));
                        }
                    ASSERT_NE(last, nullptr);
                    // A feature with just what a row asks for gets that row: not the one for
                    // COLOUR3 when it is COLOUR3,4,3, though both match.
                    if (one == other) {
                        EXPECT_EQ(last->attc(), one->attc()) << acronym;
                    }
                    EXPECT_EQ(conditionCount(*last), most)
                        << acronym << ' ' << *feature.begin() << ' ' << *feature.rbegin();
                }
        }
    EXPECT_GT(features, 2000);
}

TEST(Library, EveryDefinitionDrawsInEveryScheme)
{
    S52Model& model = shipped();
    for (const std::string_view scheme : colorTableNames()) {
        const S52CcieMap& colors = model.cols().find(scheme)->second.ccie();
        const auto look = [&](auto& items, std::size_t least) {
            EXPECT_GE(items.size(), least);
            for (auto& [name, item] : items) {
                item.processVct(colors);
                EXPECT_FALSE(item.s52Path().empty()) << name;
                EXPECT_EQ(name.size(), 8U);
                // The first pen gives line styles and patterns their colour.
                const auto pen =
                    std::ranges::find(item.vct(), int(S52Vct::SP), &S52Vct::instruction);
                ASSERT_NE(pen, item.vct().end()) << name;
                EXPECT_TRUE(colors.contains(item.crf().at(pen->parametersString.at(0)))) << name;
            }
        };
        look(model.symb(), 562);
        look(model.lnst(), 55);
        look(model.patt(), 25);
    }
}

TEST(Library, MarksStandOnTheirPositions)
{
    S52Model& model = shipped();
    const auto ink = [&](const char* name) {
        S52Symb& item = model.symb().find(std::string_view(name))->second;
        item.processVct(model.cols().at("DAY").ccie());
        Rect box;
        for (const S52Path& piece : item.s52Path())
            box.include(piece.path.bounds());
        return box;
    };
    for (const char* name :
         {"BOYCON01", "BOYCAN01", "BOYPIL01", "BOYSPR01", "BCNTOW01", "LITVES01"}) {
        EXPECT_NEAR(ink(name).bottom, -1.4, 0.3) << name << ": the position circle is at its foot";
        EXPECT_GT(ink(name).top, 8) << name;
    }
    for (const char* name : {"BOYLAT13", "BOYLAT24", "BCNLAT15", "BOYCAR01", "BOYSPP11"})
        EXPECT_TRUE(ink(name).grownBy(-1, -1).contains({0, 0})) << name;
    for (const char* name : {"TOPMAR02", "TOPMAR10", "TOPMAR22", "TOPMAR30"})
        EXPECT_GT(ink(name).bottom, ink("BOYPIL01").top) << name << " stands above its mark";
    EXPECT_NEAR(ink("LIGHTS11").bottom, 0, 0.01) << "a flare points from its light";
    EXPECT_GT(ink("LIGHTS11").top, 15);
}

TEST(Library, GreysAreNeutralAndTheDeepestWaterIsWhite)
{
    const auto source = preslib::readSource(KELVOX_PRESLIB_SOURCE);
    ASSERT_TRUE(source.diagnostics.isEmpty()) << source.diagnostics.messages().front();
    EXPECT_EQ(shipped().cols().at("DAY").ccie().at("DEPDW").color, (DisplayColor{255, 255, 255}));
    EXPECT_EQ(shipped().cols().at("DAY").ccie().at("CHBLK").color, (DisplayColor{0, 0, 0}));
    for (const auto& color : source.library.colors)
        for (std::size_t scheme = 0; scheme < 3; ++scheme) {
            const CieColor& cie = color.schemes[scheme];
            const auto& table = shipped().cols().at(preslib::Library::schemeNames[scheme]).ccie();
            const DisplayColor got = table.at(color.token).color;
            double luminance = 0;
            const Luv light = shown(got, &luminance);
            if (cie.x == 0.28 && cie.y == 0.31) {
                EXPECT_TRUE(got.red == got.green && got.green == got.blue) << color.token;
            }
            // A colour that the display cannot give is dimmed, never brightened. Two drive steps
            // of rounding are allowed for.
            EXPECT_LE(luminance, cie.luminance * 1.035 + 0.02) << color.token << ' ' << scheme;
            if (scheme > 0 && cie.x > 0.2) { // mariner's blue and cyan lie outside the display
                EXPECT_LT(distance(light, luv(cie.x, cie.y, cie.luminance)), 2.5)
                    << color.token << ' ' << scheme;
            }
        }
}

TEST(Library, ColoursKeepTheirDistances)
{
    const auto source = preslib::readSource(KELVOX_PRESLIB_SOURCE);
    const std::set<std::string> tokens{"DEPDW", "DEPMD", "DEPMS", "DEPVS", "DEPIT",
                                       "LANDA", "DNGHL", "TRFCD", "CHBLK", "CSTLN"};
    for (std::size_t scheme = 0; scheme < 3; ++scheme) {
        const auto& table = shipped().cols().at(preslib::Library::schemeNames[scheme]).ccie();
        for (const auto& one : source.library.colors)
            for (const auto& other : source.library.colors) {
                if (!tokens.contains(one.token) || !tokens.contains(other.token)
                    || one.token >= other.token)
                    continue;
                const CieColor& a = one.schemes[scheme];
                const CieColor& b = other.schemes[scheme];
                const double wanted =
                    distance(luv(a.x, a.y, a.luminance), luv(b.x, b.y, b.luminance));
                const double got =
                    distance(shown(table.at(one.token).color), shown(table.at(other.token).color));
                EXPECT_NEAR(got, wanted, std::max(2.5, wanted * 0.2))
                    << one.token << ' ' << other.token << ' ' << scheme;
            }
    }
}

TEST(Library, NamesAndSoundingsStandOutInEveryScheme)
{
    const auto luminanceOf = [](DisplayColor color) {
        double luminance = 0;
        shown(color, &luminance);
        return luminance;
    };
    for (const char* scheme : preslib::Library::schemeNames) {
        const RenderColors colors = RenderColors::from(shipped().cols().at(scheme).ccie());
        for (const DisplayColor text : {colors.textColor, colors.soundingColor})
            for (const DisplayColor ground :
                 {colors.landColor, colors.coverageColor, colors.shallowFillColor,
                  colors.coastFillColor, colors.noDataColor}) {
                const auto [dark, bright] = std::minmax({luminanceOf(text), luminanceOf(ground)});
                EXPECT_GT(bright, 4 * dark) << scheme;
            }
    }
}

} // namespace kelvox
