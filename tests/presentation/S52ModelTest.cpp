#include "presentation/S52Model.h"

#include "base/File.h"
#include "presentation/CodeTables.h"
#include "presentation/LibraryText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
struct LoadedModel : S52Model {
    explicit LoadedModel(const std::string& library) { loadPresentationLibrary(library, {}); }
};

bool reports(const S52Model& model, S52UnknownName::Kind kind, const std::string& name,
             const std::string& usedBy)
{
    for (const S52UnknownName& unknown : model.report().unknownNames)
        if (unknown == S52UnknownName{kind, name, usedBy})
            return true;
    return false;
}
} // namespace

TEST(S52Model, TakesFieldsByTheirFixedPlaces)
{
    LoadedModel model(lookUp({"BOYSHP1~COLOUR3,4,3"}, "SY(BOYLAT14);TE('by %s')")
                      + symbol("BOYLAT14", "SPA;SW1"));
    model.setSymbols(false, false);
    const S52Lupt& entry = *model.luptForPoints().at("BOYLAT").at(0);
    EXPECT_EQ(entry.rcidNumber, 7);
    EXPECT_EQ(entry.drpiNumber, 8);
    EXPECT_EQ(entry.rpriString, "O");
    EXPECT_EQ(entry.attc(), (std::vector<std::string>{"BOYSHP1", "COLOUR3,4,3"}));
    EXPECT_EQ(entry.inst(), (std::vector<std::string>{"SY(BOYLAT14)", "TE('by %s')"}));
    EXPECT_EQ(entry.lucmString, "27010");

    const S52Symb& item = model.symb().at("BOYLAT14");
    EXPECT_EQ(item.poString, "a thing");
    EXPECT_EQ(item.crf().at('B'), "CHGRN");
    EXPECT_EQ(item.pivotTransform(), (Point{-300 * 0.028, 200 * 0.028}));
    EXPECT_EQ(item.rect(), (Rect{100, -550, 500, -50}));
}

TEST(S52Model, ReadsLineStylesAndPatterns)
{
    const LoadedModel model(
        module({field("LNST", "LS00001NIL"),
                field("LIND", "RECTRC09000010000200003000040000500006"), field("LCRF", "ACHGRD"),
                field("LVCT", "SPA;PU1,2;PD3,4")})
        + module({field("PATT", "PT00001NIL"),
                  field("PATD", "AIRARE02VSTGCON0200010000000010000200003000040000500006"),
                  field("PVCT", "SPA")}));
    const S52Lnst& line = model.lnst().at("RECTRC09");
    EXPECT_EQ(line.dfString, "V");
    EXPECT_EQ(line.clNumber * 10 + line.xrNumber, 16);
    EXPECT_EQ(line.vct().size(), 3U);
    const S52Patt& pattern = model.patt().at("AIRARE02");
    EXPECT_EQ(pattern.patpString + pattern.paspString, "STGCON");
    EXPECT_EQ(pattern.pamiNumber, 2000);
    EXPECT_EQ(pattern.pamaNumber, 10000);
    EXPECT_EQ(pattern.xrNumber, 6);
}

TEST(S52Model, LeavesOutWhatIsMalformedAndReadsOn)
{
    // shorter than it says
    const std::string wrong = "INST   99SY(BOYLAT13)\x1f\r\n";
    const LoadedModel model(
        field("INST", "before any module") + "rubbish\r\n****00000\r\n"
        + module({field("LUPT", "LU00001NILBOYLATP00008OPAPER_CHART"), wrong,
                  field("ATTC", "BOYSHP1"), field("INST", "SY")})
        + lookUp({""}, "SY(BOYLAT13)", "NO_SUCH_TABLE")
        + module({field("LUPT", "LU00001NILBCNLATP00008OPAPER_CHART"), field("INST", "SY(A)")})
        + "0001    6     \x1f\r\n" + field("LUPT", "LU00001NILBUOYSSP00008OPAPER_CHART")
        + field("ATTC", ""));
    const auto& points = model.luptForPoints(); // paper chart from the start
    ASSERT_EQ(points.size(), 1U) << "no condition field, unknown table, module not closed";
    EXPECT_EQ(points.at("BOYLAT").size(), 1U);
    EXPECT_TRUE(points.at("BOYLAT")[0]->inst().empty()) << "wrong length, then too short";
    EXPECT_TRUE(LoadedModel("").symb().empty());
    EXPECT_TRUE(LoadedModel("0001").cols().empty());
}

TEST(S52Model, FilesAnEntryOnceForEachConditionField)
{
    LoadedModel model(lookUp({"BOYSHP1", "COLOUR3"}, "SY(BOYLAT14)"));
    model.setSymbols(false, false);
    const auto& entries = model.luptForPoints().at("BOYLAT");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0], entries[1]);
    EXPECT_EQ(entries[0]->attc().size(), 2U);
}

TEST(S52Model, TellsWhichNamesTheProgramAndTheLibraryDoNotShare)
{
    using Kind = S52UnknownName::Kind;
    const LoadedModel model(
        lookUp({""}, "CS(LIGHTS06);CS(LIGHTS05);SY(NOSUCH01);LS(DASH,1,NOCOL);LC(NOLINE01)")
        + module({field("COLS", "CS00001NILDAY"), field("CCIE", "CHRED0.48~0.30~25~red")})
        + symbol("BOYLAT14", "SPA"));
    EXPECT_TRUE(reports(model, Kind::Procedure, "LIGHTS06", "BOYLAT"));
    EXPECT_FALSE(reports(model, Kind::Procedure, "LIGHTS05", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::Symbol, "NOSUCH01", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::LineStyle, "NOLINE01", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::Color, "NOCOL", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::Color, "CHGRN", "program")) << "of the symbol too, told once";
    EXPECT_FALSE(reports(model, Kind::Color, "CHRED", "BOYLAT14"));
    EXPECT_TRUE(reports(model, Kind::Symbol, "LIGHTS11", "program"));
    EXPECT_TRUE(reports(model, Kind::ColorScheme, "NIGHT", "program"));
}

TEST(S52Model, TellsInSentencesWhatWillNotBeDrawn)
{
    using Kind = S52UnknownName::Kind;
    const LoadedModel model(lookUp({"COLOUR3", "NOSUCH1"}, "CS(LIGHTS06);ZZ(BOYLAT14);SY(NOSUCH01)")
                            + module({field("LUPT", "LU00008NILNOCLASP00008OLINES"),
                                      field("ATTC", ""), field("INST", "SY(BOYLAT14)")})
                            + symbol("BOYLAT14", "SPA"));
    EXPECT_TRUE(reports(model, Kind::Attribute, "NOSUCH", "BOYLAT"));
    EXPECT_FALSE(reports(model, Kind::Attribute, "COLOUR", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::Instruction, "ZZ", "BOYLAT"));
    EXPECT_TRUE(reports(model, Kind::Class, "NOCLAS", "program"));
    EXPECT_TRUE(reports(model, Kind::NoEntry, "LIGHTS", "program"));
    EXPECT_TRUE(reports(model, Kind::NoEntry, "BOYLAT", "PAPER_CHART"))
        << "they would vanish with the choice of symbols";
    EXPECT_FALSE(reports(model, Kind::NoEntry, "DEPARE", "program")) << "drawn by a routine";
    const auto sentences = model.report().sentences();
    const auto tells = [&](const char* sentence) {
        return std::ranges::count(sentences, sentence) == 1;
    };
    EXPECT_TRUE(tells("Buoy, Lateral (BOYLAT) asks for the procedure LIGHTS06, which the program "
                      "does not have: what it would decide on is not drawn."));
    EXPECT_TRUE(tells("Buoy, Lateral (BOYLAT) names the symbol NOSUCH01, which the library does "
                      "not have: it is not drawn."));
    EXPECT_TRUE(tells("The library has no entry for Light (LIGHTS): it is not drawn."));
}

TEST(S52Model, TheUsersLibraryTakesThePlaceOfTheProgramsOwn)
{
    const TemporaryFolder folder;
    const S52Model::Folders folders{folder.path() / "program", folder.path() / "user"};
    const S52Model missing(folders);
    EXPECT_EQ(missing.report().problems.size(), 1U);
    EXPECT_TRUE(missing.report().unknownNames.empty());

    ASSERT_TRUE(writeFileAtomically(folders.application / S52Model::libraryName,
                                    symbol("PROGRAM1", "SPA")));
    ASSERT_TRUE(writeFileAtomically(folders.application / S52Model::calibrationName,
                                    "[general]\ncount=256\n[red luminance]\n0=0\n"));
    S52Model model(folders);
    EXPECT_TRUE(model.symb().contains("PROGRAM1"));
    EXPECT_FALSE(model.report().isUsersOwn);
    ASSERT_EQ(model.report().problems.size(), 1U) << "the calibration is not complete";
    EXPECT_NE(model.report().problems[0].message.find("CIE2RGB.ini"), std::string::npos);

    ASSERT_TRUE(
        writeFileAtomically(folders.user / S52Model::libraryName, symbol("USERS001", "SPA")));
    model.loadPresentationLibrary();
    EXPECT_TRUE(model.symb().contains("USERS001"));
    EXPECT_FALSE(model.symb().contains("PROGRAM1"));
    EXPECT_TRUE(model.report().isUsersOwn);
}

TEST(CodeTables, FollowTheObjectCatalogue)
{
    // Codes from IHO S-57 edition 3.1, Appendix A.
    for (const auto& [code, acronym] :
         std::initializer_list<std::pair<int, const char*>>{{1, "ADMARE"},
                                                            {17, "BOYLAT"},
                                                            {42, "DEPARE"},
                                                            {75, "LIGHTS"},
                                                            {86, "OBSTRN"},
                                                            {129, "SOUNDG"},
                                                            {144, "TOPMAR"},
                                                            {159, "WRECKS"},
                                                            {160, "TS_FEB"},
                                                            {0, "XXXXXX"},
                                                            {161, "XXXXXX"},
                                                            {-1, "XXXXXX"}})
        EXPECT_EQ(objectCodeAcronym(code), acronym) << code;
    for (const auto& [code, acronym] :
         std::initializer_list<std::pair<int, const char*>>{{1, "AGENCY"},
                                                            {75, "COLOUR"},
                                                            {87, "DRVAL1"},
                                                            {116, "OBJNAM"},
                                                            {133, "SCAMIN"},
                                                            {187, "WATLEV"},
                                                            {188, "CAT_TS"},
                                                            {0, ""},
                                                            {189, ""}})
        EXPECT_EQ(attributeCodeAcronym(code), acronym) << code;
    EXPECT_EQ(objectCode("WRECKS"), 159);
    EXPECT_EQ(objectCode("M_COVR"), 0);
    EXPECT_EQ(attributeCode("WATLEV"), 187);
    EXPECT_EQ(attributeCode(""), 0);
}

} // namespace kelvox
