#include "platform/directory.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace brenquil {
namespace {

TEST(Directory, KnowsDirectoriesFromFilesAndFromNothing) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "brenquil_directory_test";
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "file").string();
    std::ofstream(file) << "content";

    EXPECT_TRUE(DirectoryExists(folder.string()));
    EXPECT_TRUE(DirectoryExists(folder.string() + PathSeparator()));
    EXPECT_TRUE(DirectoryExists("."));
    EXPECT_FALSE(DirectoryExists(file));
    EXPECT_FALSE(DirectoryExists((folder / "missing").string()));
    EXPECT_FALSE(DirectoryExists(""));

    std::filesystem::remove_all(folder);
    EXPECT_FALSE(DirectoryExists(folder.string()));
}

TEST(Directory, SeparatorIsTheOneOfTheSystem) {
    EXPECT_EQ(PathSeparator(), static_cast<char>(std::filesystem::path::preferred_separator));
}

#if !defined(_WIN32)

TEST(Directory, WithoutDriveLettersEveryDriveIsThereAndReady) {
    for (const char letter : std::string("aczACZ0")) {
        EXPECT_TRUE(DriveExists(letter)) << letter;
        EXPECT_TRUE(DriveIsReady(letter)) << letter;
    }
}

#endif

}  // namespace
}  // namespace brenquil
