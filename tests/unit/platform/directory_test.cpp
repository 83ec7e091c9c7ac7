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

TEST(Directory, NameMayBeUtf8) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / u8"brenquil_directory_test \u00F6 \u265E";
    std::filesystem::create_directories(folder);
    const std::u8string name = folder.u8string();
    EXPECT_TRUE(DirectoryExists(std::string(name.begin(), name.end())));
    std::filesystem::remove(folder);
}

#if defined(_WIN32)

TEST(Directory, TheDriveOfTheProgramIsThereAndReady) {
    const char letter = std::filesystem::current_path().string().at(0);
    EXPECT_TRUE(DriveExists(letter));
    EXPECT_TRUE(DriveExists(static_cast<char>(letter ^ 0x20)));
    EXPECT_TRUE(DriveIsReady(letter));
}

TEST(Directory, OnlyLettersAreDrives) {
    for (const char letter : std::string("0@[`{ \xE4")) {
        EXPECT_FALSE(DriveExists(letter)) << letter;
    }
    int drives = 0;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        drives += DriveExists(letter) ? 1 : 0;
    }
    EXPECT_LT(drives, 26) << "every letter in use";
}

#else

TEST(Directory, WithoutDriveLettersEveryDriveIsThereAndReady) {
    for (const char letter : std::string("aczACZ0")) {
        EXPECT_TRUE(DriveExists(letter)) << letter;
        EXPECT_TRUE(DriveIsReady(letter)) << letter;
    }
}

#endif

}  // namespace
}  // namespace brenquil
