#include "base/File.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace kelvox {

TEST(File, AtomicWriteReplacesKeepsTheModeAndLeavesNothingBeside)
{
    const TemporaryFolder folder;
    const auto path = folder.path() / "new" / "data.plist";
    ASSERT_TRUE(writeFileAtomically(path, "first"));
    ::chmod(path.c_str(), 0600);
    ASSERT_TRUE(writeFileAtomically(path, "second"));
    EXPECT_EQ(readFile(path).value(), "second");
    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1);
}

TEST(File, AWriteThroughALinkKeepsTheLink)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileAtomically(folder.path() / "real", "old"));
    std::filesystem::create_symlink("real", folder.path() / "link");
    ASSERT_TRUE(writeFileAtomically(folder.path() / "link", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path() / "link"));
    EXPECT_EQ(readFile(folder.path() / "real").value(), "new");
}

TEST(File, FailuresNameTheFile)
{
    const TemporaryFolder folder;
    const auto missing = MappedFile::open(folder.path() / "nowhere.000");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.error().message.find("nowhere.000"), std::string::npos);
    EXPECT_FALSE(MappedFile::open(folder.path())) << "a folder is not a file";
    ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(MappedFile::open(folder.path() / "pipe")) << "and must not hang";
    ASSERT_TRUE(writeFileAtomically(folder.path() / "empty", ""));
    EXPECT_TRUE(MappedFile::open(folder.path() / "empty")->bytes().empty());
    EXPECT_FALSE(readFile(folder.path() / "empty" / "below"));
}

} // namespace kelvox
