#include "support/RealData.h"
#include "support/SmallCells.h"
#include "support/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace kelvox {

namespace {
using Json = nlohmann::json;

struct Outcome {
    int code = -1;
    std::string output;
    std::string errors;
    [[nodiscard]] std::vector<Json> lines() const
    {
        std::vector<Json> all;
        std::istringstream stream(output);
        for (std::string line; std::getline(stream, line);)
            all.push_back(Json::parse(line, nullptr, false));
        return all;
    }
};

/// The tool as a user runs it.
class ToolTest : public testing::Test {
protected:
    Outcome run(const std::string& arguments) const
    {
        const auto read = [&](const char* name) {
            std::ifstream file(m_folder.path() / name);
            return std::string(std::istreambuf_iterator<char>(file), {});
        };
        const std::string command =
            "cd '" + path("").string() + "' && '" KELVOX_TOOL "' " + arguments + " >.out 2>.err";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".out"), read(".err")};
    }
    [[nodiscard]] std::filesystem::path path(const char* name) const
    {
        return m_folder.path() / name;
    }
    void write(const char* name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }

private:
    TemporaryFolder m_folder;
};

bool isOneLineNaming(const std::string& text, const std::string& name)
{
    return std::count(text.begin(), text.end(), '\n') == 1 && text.find(name) != std::string::npos;
}
} // namespace

TEST_F(ToolTest, DescribesCellsAndTheirUpdates)
{
    SmallCell small;
    ASSERT_TRUE(small.writer.save(path("")));
    auto update = small.writer.update("20260301");
    update.removeFeature(small.buoy);
    ASSERT_TRUE(update.save(path("")));
    const auto with = run("info KV5TEST1.000");
    EXPECT_EQ(with.code, 0) << with.errors;
    ASSERT_EQ(with.lines().size(), 1U);
    const Json info = with.lines()[0];
    EXPECT_EQ(info["path"], "KV5TEST1.000");
    EXPECT_EQ(info["kind"], "s57-cell");
    EXPECT_EQ(info["edition"], "1");
    EXPECT_EQ(info["update"], "1");
    EXPECT_EQ(info["issueDate"], "20260301");
    EXPECT_EQ(info["compiledScale"], 12'000);
    EXPECT_EQ(info["coordinateMultiplier"], 10'000'000);
    EXPECT_EQ(info["soundingMultiplier"], 10);
    EXPECT_EQ(info["updatesApplied"], 1);
    EXPECT_EQ(info["features"], 8);
    const Json classes{{"BCNLAT", 1}, {"DEPARE", 2}, {"DEPCNT", 1}, {"LIGHTS", 1},
                       {"M_COVR", 1}, {"SOUNDG", 1}, {"TOPMAR", 1}};
    EXPECT_EQ(info["byClass"], classes);
    EXPECT_NEAR(info["bounds"][0].get<double>(), 10.45, 1e-5);
    EXPECT_NEAR(info["bounds"][3].get<double>(), 59.55, 1e-5);

    const Json without = run("info --no-updates .").lines().at(0); // a folder is searched
    EXPECT_EQ(without["features"], 9);
    EXPECT_EQ(without["update"], "0");
    EXPECT_EQ(without["byClass"]["BOYCAR"], 1);
    // A broken cell beside a good one: both are told of.
    write("BAD.000", "018013LE1 0900");
    const auto both = run("info .");
    EXPECT_EQ(both.code, 1);
    EXPECT_EQ(both.lines().size(), 1U);
    EXPECT_TRUE(isOneLineNaming(both.errors, "BAD.000")) << both.errors;
}

TEST_F(ToolTest, WritesAndReadsCatalogues)
{
    ASSERT_TRUE(SmallCell().writer.save(path("")));
    EXPECT_EQ(run("catalog .").code, 0);
    const auto listed = run("info CATALOG.031");
    EXPECT_EQ(listed.code, 0) << listed.errors;
    const Json info = listed.lines().at(0);
    EXPECT_EQ(info["kind"], "s57-catalog");
    ASSERT_EQ(info["entries"].size(), 1U);
    EXPECT_EQ(info["entries"][0]["path"], "KV5TEST1.000");
    EXPECT_EQ(info["entries"][0]["base"], true);
    EXPECT_TRUE(isOneLineNaming(run("catalog nowhere").errors, "nowhere"));
}

TEST_F(ToolTest, DumpsRecords)
{
    const auto bytes = *SmallCell().writer.bytes();
    write("A.000", bytes);
    const auto dumped = run("dump A.000");
    EXPECT_EQ(dumped.code, 0) << dumped.errors;
    const auto lines = dumped.lines();
    ASSERT_GT(lines.size(), 10U);
    EXPECT_EQ(lines[0]["fields"][1]["tag"], "DSID");
    EXPECT_EQ(lines[0]["fields"][1]["rows"][0]["EDTN"], "1");
    EXPECT_EQ(lines[1]["fields"][1]["rows"][0]["COMF"], 10'000'000);
    write("B.000", bytes.substr(0, bytes.size() - 5));
    const auto broken = run("dump B.000");
    EXPECT_EQ(broken.code, 1);
    EXPECT_EQ(broken.lines().size() + 1, lines.size()); // what stands before the break
    EXPECT_TRUE(isOneLineNaming(broken.errors, "B.000")) << broken.errors;
}

TEST_F(ToolTest, TellsWhatLiesAtAPlace)
{
    ASSERT_TRUE(SmallCell().writer.save(path("")));
    const auto picked = run("pick --at 59.5,10.48 --scale 10000 .");
    EXPECT_EQ(picked.code, 0) << picked.errors;
    const auto lines = picked.lines();
    ASSERT_EQ(lines.size(), 3U) << picked.output; // the topmark is drawn above the place
    const auto buoy = std::ranges::find(lines, "BOYCAR",
                                        [](const Json& line) { return line.value("class", ""); });
    ASSERT_EQ(buoy, lines.begin()) << "the buoy comes before the areas";
    EXPECT_EQ((*buoy)["title"], "Grønn");
    EXPECT_EQ((*buoy)["cell"], "KV5TEST1");
    EXPECT_EQ((*buoy)["attributes"][2]["words"], "black, yellow");
    EXPECT_EQ(lines[1]["class"], "DEPARE");
    EXPECT_EQ(lines[1]["attributes"][0]["words"], "10 m");
    EXPECT_EQ(lines[2]["kind"], "information");
    EXPECT_TRUE(run("pick --at 1,1 .").output.empty());
    EXPECT_EQ(run("pick --at north .").code, 2);
}

TEST_F(ToolTest, SaysWhatWentWrong)
{
    write("TEXT.000", "no cell at all, but long enough to be read as one");
    write("EMPTY.000", "");
    for (const std::string file : {"NOWHERE.000", "TEXT.000", "EMPTY.000", "CATALOG.031"})
        for (const std::string command : {"info ", "dump "}) {
            const auto failed = run(command + file);
            EXPECT_EQ(failed.code, 1) << command << file;
            EXPECT_TRUE(isOneLineNaming(failed.errors, file)) << failed.errors;
            EXPECT_TRUE(failed.output.empty());
        }
    for (const char* wrong :
         {"", "nonsense", "info", "info --nonsense .", "dump", "dump a b", "catalog"})
        EXPECT_EQ(run(wrong).code, 2) << wrong;
    for (const char* help : {"--help", "info --help", "dump --help", "catalog --help"}) {
        const auto asked = run(help);
        EXPECT_EQ(asked.code, 0) << help;
        EXPECT_FALSE(asked.output.empty()) << help;
    }
}

} // namespace kelvox
