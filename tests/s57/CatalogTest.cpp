#include "s57/ISO8211Wrap.h"
#include "support/RawIso.h"
#include "support/SmallCells.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kelvox {

namespace {
void write(const std::filesystem::path& path, const std::string& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}
} // namespace

TEST(ISO8211Wrap, KnowsACellByItsHead)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "X.000";
    struct {
        const char* head;
        bool isCell;
    } const rows[] = {{"018013LE1 090021", true},  {"018011LE  090021", true},
                      {"018013LE2 090021", false}, {"018013DE1 090021", false},
                      {"018010LE1 090021", false}, {"018013LE1 09002", false}};
    for (const auto& row : rows) {
        write(path, row.head);
        EXPECT_EQ(ISO8211Wrap::isS57Cell(path), row.isCell) << row.head;
    }
    EXPECT_FALSE(ISO8211Wrap::isS57Cell(folder.path() / "none"));
}

TEST(ISO8211Wrap, ReadsCatalogues)
{
    const TemporaryFolder folder;
    const auto catalog = folder.path() / "CATALOG.031";
    struct {
        std::string file, format;
        bool exists;
    } const rows[] = {{"A\\B\\KV5TEST1.000", "BIN", true},
                      {"KV5TEST2.001", "BIN", true},
                      {"KV5TEST3.000", "BIN", false},
                      {"KV5TEST4.000", "ASC", true},
                      {"README.TXT", "BIN", true}};
    std::string bytes = raw::definitions(
        {{"0001", raw::description("05", "", "(b12)")},
         {"CATD",
          raw::description("16", "RCNM!RCID!FILE!LFIL!VOLM!IMPL!SLAT!WLON!NLAT!ELON!CRCS!COMT",
                           "(A(2),I(10),3A,A(3),4R,2A)")}});
    for (const auto& row : rows) {
        bytes +=
            raw::record({{"0001", "\1\1\x1e"},
                         {"CATD",
                          "CD0000000001" + row.file + "\x1flong name\x1fV01X01\x1f" + row.format
                              + "59.4\x1f"
                                "10.25\x1f"
                                "59.5\x1f"
                                "-10.5\x1f"
                                "00000000\x1f"
                                "remark\x1f\x1e"}});
        std::string slashed = row.file;
        std::replace(slashed.begin(), slashed.end(), '\\', '/');
        if (row.exists)
            write(folder.path() / slashed, "x");
    }
    write(catalog, bytes);
    ISO8211Wrap::Catalog found;
    ASSERT_TRUE(ISO8211Wrap::load(catalog, found));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0]->path, folder.path() / "A/B/KV5TEST1.000");
    EXPECT_TRUE(found[0]->binaryPrimary);
    EXPECT_FALSE(found[1]->binaryPrimary);
    EXPECT_EQ(found[0]->description, "long name");
    EXPECT_EQ(found[0]->comment, "remark");
    EXPECT_EQ(found[0]->southLatitude, 59.4);
    EXPECT_EQ(found[0]->westLongitude, 10.25);
    EXPECT_EQ(found[0]->northLatitude, 59.5);
    EXPECT_EQ(found[0]->eastLongitude, -10.5);

    std::filesystem::remove_all(folder.path() / "A");
    std::filesystem::remove(folder.path() / "KV5TEST2.001");
    EXPECT_FALSE(ISO8211Wrap::load(catalog, found)); // nothing listed is there
}

TEST(ISO8211Wrap, WritesACatalogueOfAFolder)
{
    const TemporaryFolder folder;
    SmallCell small;
    ASSERT_TRUE(small.writer.save(folder.path()));
    auto update = small.writer.update("20260301");
    update.removeFeature(small.buoy);
    ASSERT_TRUE(update.save(folder.path()));
    ASSERT_TRUE(update.update("20260302").update("20260303").save(folder.path())); // beyond a gap
    write(folder.path() / "BROKEN.000", "broken");
    const auto catalog = folder.path() / "CATALOG.031";
    ISO8211Wrap::Catalog cells;
    const auto saved = ISO8211Wrap::save(catalog, cells);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->size(), 1U); // the broken one is named
    EXPECT_EQ(cells.size(), 1U);

    const auto file = ISO8211Wrap::pathToISOFile(catalog);
    ASSERT_TRUE(file);
    ASSERT_EQ(file->records().size(), 2U); // base and first update
    ISO8211Wrap::Catalog back;
    ASSERT_TRUE(ISO8211Wrap::load(catalog, back));
    ASSERT_EQ(back.size(), 2U);
    EXPECT_EQ(back[1]->path.filename(), "KV5TEST1.001");
    for (const auto& entry : back) { // every update has its base cell's extent
        EXPECT_NEAR(entry->westLongitude, 10.45, 1e-5);
        EXPECT_NEAR(entry->southLatitude, 59.45, 1e-5);
        EXPECT_NEAR(entry->eastLongitude, 10.55, 1e-5);
        EXPECT_NEAR(entry->northLatitude, 59.55, 1e-5);
    }
    EXPECT_FALSE(ISO8211Wrap::save(folder.path() / "none" / "CATALOG.031", cells));
}

} // namespace kelvox
