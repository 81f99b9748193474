#include "base/Settings.h"
#include "presentation/LabelTexts.h"
#include "presentation/LibraryText.h"
#include "presentation/S52Lookup.h"
#include "presentation/S57ObjectRender.h"
#include "s57/ISO8211Wrap.h"
#include "s57/S57CellLoader.h"
#include "s57/S57CellWriter.h"
#include "support/TextCanvas.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
using Steps = std::vector<std::string>;

constexpr auto colorTokens = {"DEPDW", "DEPIT", "DEPVS", "LANDA", "CSTLN", "DEPCN",
                              "CHMGD", "CHGRN", "CHBLK", "DNGHL", "LITRD"};

std::string colorTable(const std::string& name)
{
    std::string text = field("0001", "00001") + field("COLS", "CS00001NIL" + name);
    int i = 0;
    for (const char* token : colorTokens)
        text += field("CCIE", fmt::format("{}0.28~0.31~{}~used", token, 5 + 5 * i++));
    return text + "****00000\r\n";
}

std::string entry(const std::string& acronym, char geometry, const std::string& table,
                  const std::string& condition, const std::string& instructions)
{
    return module({field("LUPT", "LU00001NIL" + acronym + geometry + "00005O" + table),
                   field("ATTC", condition), field("INST", instructions)});
}

std::string symbols(std::initializer_list<const char*> names)
{
    std::string text;
    for (const char* name : names)
        text += symbol(name, "SPA;SW2;PU300,200;PD400,300");
    return text;
}

/// A small library, a cell and the drawing steps they give.
class Portrayed : public testing::Test {
protected:
    Portrayed()
    {
        model.loadPresentationLibrary(
            colorTable("DAY") + colorTable("NIGHT")
                + symbols({"BOYLAT13", "BOYLAT14", "LIGHTS11", "LIGHTS13", "LIGHTS82", "DANGER02",
                           "OBSTRN01", "UWTROC04", "WRECKS05", "TOPMAR05", "TOPMAR25", "TMARDEF2",
                           "FSHRES51", "ENTRES51", "LNDARE01", "ORIENT01"})
                + entry("BOYLAT", 'P', "PAPER_CHART", "", "SY(BOYLAT13)")
                + entry("BOYLAT", 'P', "PAPER_CHART", "COLOUR3", "SY(BOYLAT14,90);SY(NOSUCH01)")
                + entry("LIGHTS", 'P', "PAPER_CHART", "", "CS(LIGHTS05)")
                + entry("OBSTRN", 'P', "PAPER_CHART", "", "CS(OBSTRN05)")
                + entry("OBSTRN", 'A', "PLAIN_BOUNDARIES", "", "AC(DEPVS,2);CS(OBSTRN05)")
                + entry("UWTROC", 'P', "PAPER_CHART", "", "CS(OBSTRN05)")
                + entry("UWTROC", 'P', "SIMPLIFIED", "", "SY(DANGER02)")
                + entry("CTNARE", 'A', "PLAIN_BOUNDARIES", "", "LS(DASH,1,CHMGD)")
                + entry("RESARE", 'A', "SYMBOLIZED_BOUNDARIES", "", "LS(DOTT,1,CHMGD)")
                + entry("WRECKS", 'P', "PAPER_CHART", "", "CS(WRECKS03)")
                + entry("TOPMAR", 'P', "PAPER_CHART", "", "CS(TOPMAR01)")
                + entry("RESARE", 'A', "PLAIN_BOUNDARIES", "", "CS(RESARE03);CS(RESTRN01)")
                + entry("BUAARE", 'A', "PLAIN_BOUNDARIES", "", "AC(DEPVS);LS(DASH,3,CHBLK)")
                + entry("SLCONS", 'L', "LINES", "", "CS(SLCONS03)")
                + entry("RECTRC", 'L', "LINES", "", "LS(SOLID,1,CHBLK);SY(ORIENT01,ORIENT)"),
            {});
    }

    /// Draws the writer's cell around its middle. "line" steps of the cell's frame do not occur:
    /// there is no coverage unless a test adds it.
    Steps draw(int scale = 20'000, float rotation = 0,
               S57ObjectRender::Quality quality = S57ObjectRender::Quality::Full)
    {
        const auto bytes = writer.bytes();
        EXPECT_TRUE(bytes) << (bytes ? "" : bytes.error().message);
        cell = S57CellLoader::loadBytes(*bytes)->cell;
        S52Lookup::setS52Lupts(*cell, model);
        const CellGeometry geometry(cell);
        S52Render presentation(model);
        presentation.setColorTable(colorScheme);
        const auto portrayal = presentation.portrayal();
        const auto frame = ViewFrame::at(Position{10.5, 59.5}, scale, rotation, 800, 600, 1, 66);
        TextCanvas canvas;
        for (const char* token : colorTokens)
            if (const DisplayColor* color = portrayal->color(token))
                canvas.names.emplace_back(*color, token);
        S57ObjectRender(frame, *portrayal, settings, quality)
            .drawFeatures(
                {.geometry = geometry, .features = geometry.featuresIn(frame.coveredBox(16))},
                {canvas, canvas, texts});
        return canvas.steps;
    }
    static S57CellWriter::Line box(double half)
    {
        return {{10.5 - half, 59.5 - half},
                {10.5 + half, 59.5 - half},
                {10.5 + half, 59.5 + half},
                {10.5 - half, 59.5 + half}};
    }

    const Position here{10.5, 59.5};
    S52Model model;
    S57CellWriter writer{{.name = "KV5TEST1"}};
    RenderSettings settings;
    S57TextModel texts;
    std::shared_ptr<S57ChartItems> cell;
    int colorScheme = 1;
};
} // namespace

TEST_F(Portrayed, TheLastMatchingEntryWinsAndTheFirstStandsInForNone)
{
    writer.addPoint("BOYLAT", here, {{"COLOUR", "3,4"}, {"BOYSHP", "1"}});
    writer.addPoint("BOYLAT", here, {{"COLOUR", "4"}});
    writer.addPoint("BOYLAT", here);
    EXPECT_EQ(draw(), (Steps{"symbol BOYLAT14 90", "symbol BOYLAT13 0", "symbol BOYLAT13 0"}));
}

TEST_F(Portrayed, DepthAreasAreFilledByTheirLeastDepth)
{
    for (const auto& [least, most] : std::vector<std::pair<const char*, const char*>>{
             {"0", "5"}, {"0", "-1"}, {"-2", "0"}, {"2", "5"}})
        writer.addArea("DEPARE", box(0.01), {{"DRVAL1", least}, {"DRVAL2", most}});
    EXPECT_EQ(draw(), (Steps{"area DEPVS", "area DEPIT", "area DEPIT"}));
}

TEST_F(Portrayed, TheGroundComesFirstWhereverItStandsInTheFile)
{
    writer.addPoint("BOYLAT", here);
    writer.addLine("DEPCNT", {{10.49, 59.5}, {10.51, 59.5}});
    writer.addArea("LNDARE", box(0.002));
    writer.addArea("DEPARE", box(0.01), {{"DRVAL1", "0"}});
    writer.addArea("M_COVR", box(0.02), {{"CATCOV", "1"}});
    EXPECT_EQ(draw(),
              (Steps{"area DEPDW", "area DEPVS", "area LANDA", "line DEPCN 1 solid",
                     "symbol BOYLAT13 0"}));
    EXPECT_EQ(draw(20'000, 0, S57ObjectRender::Quality::Reduced),
              (Steps{"area DEPDW", "area DEPVS", "area LANDA", "line DEPCN 1 solid"}))
        << "while dragging only the ground stays";
}

TEST_F(Portrayed, LightsByCategoryColourAndSector)
{
    writer.addPoint("LIGHTS", here, {{"CATLIT", "8"}, {"COLOUR", "3"}});
    writer.addPoint("LIGHTS", here, {{"COLOUR", "6"}});
    writer.addPoint("LIGHTS", here, {{"COLOUR", "1,3"}});
    writer.addPoint("LIGHTS", here);
    const std::string circle = "line CHBLK 2 solid";
    EXPECT_EQ(draw(),
              (Steps{circle, "symbol LIGHTS82 0", circle, "symbol LIGHTS13 45", circle,
                     "symbol LIGHTS11 135", circle}));
}

TEST_F(Portrayed, SectorsShowBelowTheirScaleAndNeedBothLimits)
{
    writer.addPoint("LIGHTS", here, {{"COLOUR", "3"}, {"SECTR1", "10"}, {"SECTR2", "90"}});
    EXPECT_EQ(draw(50'000),
              (Steps{"line CHBLK 2 solid", "line CHBLK 1 dash", "line CHBLK 4 solid",
                     "line LITRD 2.4 solid"}));
    EXPECT_EQ(draw(50'001).back(), "symbol LIGHTS11 135");
    settings.showSectors = false;
    EXPECT_EQ(draw(50'000).back(), "symbol LIGHTS11 135");
}

TEST_F(Portrayed, DangersByKindAndDepth)
{
    writer.addPoint("OBSTRN", here, {{"WATLEV", "5"}, {"VALSOU", "25"}});
    writer.addPoint("OBSTRN", here, {{"WATLEV", "5"}, {"VALSOU", "20"}});
    writer.addPoint("UWTROC", here);
    writer.addPoint("WRECKS", here, {{"CATWRK", "2"}});
    writer.addPoint("WRECKS", here, {{"CATWRK", "3"}});
    writer.addArea("OBSTRN", box(0.002));
    EXPECT_EQ(
        draw(),
        (Steps{"area DEPVS/128", "symbol OBSTRN01 0", "line DNGHL 1 dott", "symbol DANGER02 0",
               "symbol OBSTRN01 0", "symbol UWTROC04 0", "symbol WRECKS05 0"}));
}

TEST_F(Portrayed, ATopmarkGoesByWhatCarriesIt)
{
    const Position there{10.501, 59.5};
    const Position alone{10.502, 59.5};
    writer.addPoint("TOPMAR", here, {{"TOPSHP", "13"}});
    writer.addPoint("TOPMAR", there, {{"TOPSHP", "13"}});
    writer.addPoint("TOPMAR", alone, {{"TOPSHP", "13"}});
    writer.addPoint("TOPMAR", here, {{"TOPSHP", "99"}});
    writer.addPoint("LITVES", here);
    writer.addPoint("BCNCAR", there);
    EXPECT_EQ(draw(), (Steps{"symbol TOPMAR05 0", "symbol TOPMAR25 0", "symbol TMARDEF2 0"}));
}

TEST_F(Portrayed, AreasAndShoresByTheirProcedures)
{
    writer.addArea("RESARE", box(0.003), {{"RESTRN", "4"}});
    writer.addArea("BUAARE", box(0.002));
    const S57CellWriter::Line quay{{10.499, 59.499}, {10.501, 59.499}};
    writer.addLine("SLCONS", quay, {{"CONDTN", "2"}});
    writer.addLine("SLCONS", {{10.499, 59.498}, {10.501, 59.498}}, {{"CATSLC", "6"}});
    EXPECT_EQ(draw(),
              (Steps{"line CHMGD 1 dash", "symbol FSHRES51 0", "line CHBLK 2 dash",
                     "line CSTLN 1 dash", "line CSTLN 2 solid"}))
        << "no fill for a built-up area, no pen above two points";
}

TEST_F(Portrayed, SwitchesWorkAsAChainAndScaleHides)
{
    writer.addArea("RESARE", box(0.003));
    writer.addLine("RECTRC", {{10.499, 59.5}, {10.501, 59.5}}, {{"ORIENT", "45"}});
    EXPECT_EQ(draw(20'000, 10).back(), "symbol ORIENT01 35");
    settings.showRestrictedAreas = false;
    EXPECT_TRUE(draw().empty()) << "tracks go with the restricted areas";

    settings = {};
    writer = S57CellWriter({.name = "KV5TEST2"});
    writer.addPoint("BOYLAT", here, {{"SCAMIN", "22000"}});
    EXPECT_EQ(draw(27'500).size(), 1U);
    EXPECT_TRUE(draw(27'501).empty());
    settings.showAtAllScales = true;
    EXPECT_EQ(draw(27'501).size(), 1U);
}

TEST_F(Portrayed, WithoutAColourTableNothingThatNeedsAColourIsDrawn)
{
    writer.addPoint("BOYLAT", here);
    writer.addArea("RESARE", box(0.003));
    colorScheme = 2; // this library has no dusk
    for (const auto& step : draw())
        EXPECT_TRUE(step.starts_with("symbol")) << step;
}

TEST(SoundingFigure, IsInTheUsersUnitAndSize)
{
    EXPECT_EQ(soundingFigure(-10.0F, 0, false).text, "33"); // 32.8 ft, drying
    EXPECT_TRUE(soundingFigure(-10.0F, 0, false).underlined);
    EXPECT_EQ(soundingFigure(12.59F, 1, false).subscript, "5");
    EXPECT_EQ(soundingFigure(10.0F, 2, false).text, "5");
    EXPECT_GT(soundingFigure(10.0F, 2, true).size, soundingFigure(10.0F, 2, false).size);
    EXPECT_EQ(soundingFigure(-10.0F, 7, false).text, "") << "no such unit";
}

TEST_F(Portrayed, ALightTellsItsCharacter)
{
    writer.addPoint("LIGHTS", here,
                    {{"COLOUR", "4"},
                     {"LITCHR", "2"},
                     {"SIGGRP", "(2)"},
                     {"SIGPER", "5"},
                     {"HEIGHT", "12"},
                     {"VALNMR", "9"}});
    writer.addPoint("LIGHTS", here, {{"COLOUR", "1"}, {"LITCHR", "7"}, {"SIGPER", "4.5"}});
    draw();
    ASSERT_EQ(texts.items().size(), 2U);
    EXPECT_EQ(texts.items()[0].figure.text, "Fl(2)G 5s 12m 9M");
    EXPECT_EQ(texts.items()[1].figure.text, "Iso 4.5s");
}

TEST(S57TextModel, NoTwoTextsCrossAndTheMoreImportantStays)
{
    struct Measure : TextMeasure {
        [[nodiscard]] Size size(const TextFigure& figure) const override
        {
            return {static_cast<double>(figure.text.size()) * 6, 12};
        }
    } measure;
    const auto draw = [&](Point shift) {
        S57TextModel model;
        for (int i = 0; i < 200; ++i) {
            S57TextModel::Item item;
            item.figure.text = "label" + std::to_string(i);
            item.anchor = Point{(i * 37) % 300 + 0.5, (i * 91) % 200 + 0.5} + shift;
            item.rank = i % 5 == 0 ? S57TextModel::Rank::Mark : S57TextModel::Rank::Detail;
            item.order = static_cast<std::uint64_t>(i);
            model.add(item);
        }
        TextCanvas canvas;
        model.draw(measure, 1, canvas);
        return canvas;
    };
    const TextCanvas first = draw({0, 0});
    ASSERT_GT(first.steps.size(), 20U);
    EXPECT_EQ(first.steps.front(), "text label0");
    const auto box = [&](std::size_t i) {
        const double half = static_cast<double>(first.steps[i].size() - 5) * 3;
        const Point p = first.places[i];
        return Rect{p.x - half, p.y - 6, p.x + half, p.y + 6};
    };
    for (std::size_t i = 0; i < first.steps.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_FALSE(box(i).intersects(box(k))) << first.steps[i] << " " << first.steps[k];

    const TextCanvas panned = draw({1000, -77});
    EXPECT_EQ(panned.steps, first.steps) << "nothing jumps while the chart is panned";
}

TEST(S57TextModel, NoTextOverprintsASounding)
{
    struct Measure : TextMeasure {
        [[nodiscard]] Size size(const TextFigure& figure) const override
        {
            return {static_cast<double>(figure.text.size()) * 6, 12};
        }
    } measure;
    const auto draw = [&](S57TextModel::Rank rank, bool stays, float otherDepth) {
        S57TextModel model;
        S57TextModel::Item item;
        item.figure.text = "mud";
        item.anchor = {100, 100};
        item.centred = true;
        item.rank = rank;
        model.add(item);
        TextFigure figure;
        figure.text = "12";
        for (const double y : {78, 100, 122}) // wherever the text may stand
            model.addSounding({figure, {104, y}, 12, stays});
        figure.text = "8";
        model.addSounding({figure, {300, 100}, otherDepth, stays});
        figure.text = "9";
        model.addSounding({figure, {302, 102}, 9, stays});
        TextCanvas canvas;
        model.draw(measure, 1, canvas);
        return canvas.steps;
    };
    using Steps = std::vector<std::string>;
    using Rank = S57TextModel::Rank;
    EXPECT_EQ(draw(Rank::Detail, false, 8), (Steps{"text 12", "text 12", "text 12", "text 8"}));
    EXPECT_EQ(draw(Rank::Place, true, 8), (Steps{"text 12", "text 12", "text 12", "text 8"}));
    EXPECT_EQ(draw(Rank::Place, false, 8), (Steps{"text 12", "text 12", "text 8", "text mud"}));
    EXPECT_EQ(draw(Rank::Place, false, 20), (Steps{"text 12", "text 12", "text 9", "text mud"}))
        << "of two soundings that would cross the shoaler is shown";
}

TEST(S57TextModel, NamesAndSoundingsKeepClearOfSymbols)
{
    struct Measure : TextMeasure {
        [[nodiscard]] Size size(const TextFigure& figure) const override
        {
            return {static_cast<double>(figure.text.size()) * 6, 12};
        }
    } measure;
    const auto draw = [&](bool stays, S57TextModel::Cover cover) {
        S57TextModel model;
        S57TextModel::Item item;
        item.figure.text = "Roads";
        item.anchor = {100, 100};
        item.centred = true;
        model.add(item);
        model.avoid({90, 92, 110, 108}); // the anchor of the anchorage that bears the name
        TextFigure figure;
        figure.text = "12";
        model.addSounding({figure, {300, 100}, 12, stays});
        model.avoid({292, 92, 308, 108}, cover);
        TextCanvas canvas;
        model.draw(measure, 1, canvas);
        return canvas;
    };
    const TextCanvas open = draw(false, S57TextModel::Cover::Open);
    ASSERT_EQ(open.steps, (std::vector<std::string>{"text 12", "text Roads"}));
    EXPECT_GE(std::abs(open.places[1].y - 100), 14) << "the name lies on the symbol";
    EXPECT_EQ(open.places[1].x, 100);
    EXPECT_EQ(draw(false, S57TextModel::Cover::Solid).steps.size(), 1U);
    EXPECT_EQ(draw(true, S57TextModel::Cover::Solid).steps.size(), 2U)
        << "the shoalest of its waters is shown whatever stands there";
}

TEST_F(Portrayed, EverySettingChangesTheDrawing)
{
    writer.addArea("RESARE", box(0.003));
    writer.addArea("CTNARE", box(0.003));
    writer.addLine("RECTRC", {{10.499, 59.5}, {10.501, 59.5}});
    writer.addLine("DEPCNT", {{10.49, 59.5}, {10.51, 59.5}});
    writer.addArea("SBDARE", box(0.001), {{"NATSUR", "1"}});
    writer.addArea("LAKARE", box(0.001), {{"OBJNAM", "Tarn"}, {"ELEVAT", "30"}});
    writer.addPoint("UWTROC", here, {{"OBJNAM", "Grumpy"}, {"SCAMIN", "12000"}});
    writer.addPoint("LIGHTS", here,
                    {{"COLOUR", "3"}, {"LITCHR", "2"}, {"SECTR1", "10"}, {"SECTR2", "90"}});
    writer.addSoundings({{here, 12.5}});
    const auto drawing = [&](const char* key, const char* value) {
        MemorySettings chosen;
        if (key)
            chosen.set(key, std::string(value));
        const auto all = PortrayalSettings::fromSettings(chosen);
        settings = all.render;
        colorScheme = all.colorTable();
        model.setSymbols(false, !all.simplifiedSymbols);
        texts = {};
        Steps steps = draw();
        steps.push_back(std::to_string(colorScheme));
        for (const auto& item : texts.items())
            steps.push_back(fmt::format("{} {}", item.figure.text, item.figure.size));
        for (const auto& sounding : texts.soundings())
            steps.push_back(sounding.figure.text + " " + sounding.figure.subscript);
        return steps;
    };
    const Steps usual = drawing(nullptr, nullptr);
    for (const auto& key : PortrayalSettings::keys) {
        const bool isOnFromTheStart = key.name.starts_with("show") && key.name != "showAtAllScales";
        const char* other = key.name == "waterDepthUnits" ? "2"
            : isOnFromTheStart                            ? "false"
                                                          : "true";
        EXPECT_NE(drawing(key.name.data(), other), usual) << key.name;
    }
    EXPECT_EQ(drawing("waterDepthUnits", "1"), usual);
    EXPECT_EQ(drawing("noSuchKey", "true"), usual);
}

TEST_F(Portrayed, WhatTheCellAboveCoversBearsNoMarks)
{
    writer.addPoint("BOYLAT", here);
    writer.addPoint("BOYLAT", Position{10.51, 59.5});
    writer.addArea("RESARE", box(0.003));
    writer.addSoundings({{here, 12}, {{10.51, 59.5}, 7}});
    const auto bytes = writer.bytes();
    ASSERT_TRUE(bytes);
    cell = S57CellLoader::loadBytes(*bytes)->cell;
    S52Lookup::setS52Lupts(*cell, model);
    const CellGeometry geometry(cell);
    const S52Render presentation(model);
    const auto frame = ViewFrame::at(here, 20'000, 0, 800, 600, 1, 66);
    CoveredWaters middle;
    middle.box = {380, 280, 420, 320};
    for (const Point corner : {Point{380, 280}, Point{420, 280}, Point{420, 320}, Point{380, 320}})
        middle.rings.lineTo(corner);
    TextCanvas ground;
    TextCanvas marks;
    S57ObjectRender(frame, *presentation.portrayal(), settings)
        .drawFeatures({.geometry = geometry,
                       .features = geometry.featuresIn(frame.coveredBox(16)),
                       .cellRank = 1,
                       .covered = std::span(&middle, 1)},
                      {ground, marks, texts});
    EXPECT_EQ(ground.steps.size(), 1U) << "lines run on beneath the cell above";
    EXPECT_EQ(marks.steps, Steps{"symbol BOYLAT13 0"});
    ASSERT_EQ(texts.soundings().size(), 1U);
    EXPECT_EQ(texts.soundings()[0].depth, 7);
}

} // namespace kelvox
