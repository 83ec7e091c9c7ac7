// Folders: their names, and that one program at a time works in them.

#include "../../support/temporary_folder.h"
#include "platform/file_changes.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

using test::CTemporaryFolder;

TEST(NamesInDirectory, AreThoseOfTheFolder) {
    const CTemporaryFolder folder;
    EXPECT_EQ(NamesInDirectory(folder.At("")), std::vector<std::string>());
    std::ofstream(folder.At("b")) << 1;
    std::ofstream(folder.At("a")) << 1;
    auto names = NamesInDirectory(folder.At(""));
    ASSERT_TRUE(names);
    std::sort(names->begin(), names->end());
    EXPECT_EQ(*names, (std::vector<std::string>{"a", "b"}));
    EXPECT_FALSE(NamesInDirectory(folder.At("a"))) << "a file is no folder";
    EXPECT_FALSE(NamesInDirectory(folder.At("c")));
}

TEST(FolderLock, IsHeldByOneObject) {
    const CTemporaryFolder folder;
    {
        CFolderLock first;
        EXPECT_TRUE(first.Take(folder.At("")));
        CFolderLock second;
        EXPECT_FALSE(second.Take(folder.At("")));
        const CFolderLock moved = std::move(first);
        CFolderLock third;
        EXPECT_FALSE(third.Take(folder.At(""))) << "moving keeps it";
    }
    CFolderLock last;
    EXPECT_TRUE(last.Take(folder.At("")));
}

}  // namespace
}  // namespace brenquil
