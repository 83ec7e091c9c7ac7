// What only looks like a file.

#include "../../support/temporary_folder.h"
#include "platform/special_file.h"

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace brenquil {
namespace {

TEST(SpecialFile, FilesAndMissingOnesAreNotSpecial) {
    const test::CTemporaryFolder folder;
    EXPECT_FALSE(IsSpecialFile(folder.Write("file", "content")));
    EXPECT_FALSE(IsSpecialFile(folder.Write("empty", "")));
    EXPECT_FALSE(IsSpecialFile(folder.At("missing")));
    EXPECT_FALSE(IsSpecialFile(""));
}

TEST(SpecialFile, DirectoriesAreSpecial) {
    const test::CTemporaryFolder folder;
    EXPECT_TRUE(IsSpecialFile(folder.At("")));
    EXPECT_TRUE(IsSpecialFile("."));
}

#if defined(_WIN32)

TEST(SpecialFile, DevicesAreSpecialInEveryFolderAndWithEveryExtension) {
    for (const char* const name : {"CON", "nul", "con.cmd", "aux", "COM1"}) {
        EXPECT_TRUE(IsSpecialFile(name)) << name;
    }
    const test::CTemporaryFolder folder;
    EXPECT_FALSE(IsSpecialFile(folder.Write("console.cmd", "content")));
}

#else

TEST(SpecialFile, PipesDevicesAndLinksToThemAreSpecial) {
    const test::CTemporaryFolder folder;
    const std::string pipe = folder.At("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(IsSpecialFile(pipe));
    EXPECT_TRUE(IsSpecialFile("/dev/null"));
    std::filesystem::create_symlink("/dev/null", folder.At("link"));
    EXPECT_TRUE(IsSpecialFile(folder.At("link")));
    folder.Write("file", "content");
    std::filesystem::create_symlink(folder.At("file"), folder.At("good link"));
    EXPECT_FALSE(IsSpecialFile(folder.At("good link")));
}

#endif

}  // namespace
}  // namespace brenquil
