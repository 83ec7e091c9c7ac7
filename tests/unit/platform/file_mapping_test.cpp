#include "platform/file_mapping.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace brenquil {
namespace {

// A folder of its own for each test, removed with all that is in it.
class FileMapping : public testing::Test {
protected:
    void SetUp() override {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = std::filesystem::temp_directory_path() /
                  (std::string("brenquil_mapping_") + test->name() + "_" +
                   std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "_" +
                   std::to_string(
                       std::filesystem::file_time_type::clock::now().time_since_epoch().count()));
        std::filesystem::create_directories(folder_);
    }

    void TearDown() override { std::filesystem::remove_all(folder_); }

    [[nodiscard]] std::string PathOf(std::string_view name) const {
        const std::u8string path = (folder_ / std::u8string(name.begin(), name.end())).u8string();
        return {path.begin(), path.end()};
    }

    std::string Write(std::string_view name, std::string_view content) const {
        const std::string path = PathOf(name);
        std::ofstream(folder_ / std::u8string(name.begin(), name.end()), std::ios::binary)
            .write(content.data(), std::ssize(content));
        return path;
    }

private:
    std::filesystem::path folder_;
};

std::string TextOf(const CFileMapping& file) {
    return {file.Bytes().begin(), file.Bytes().end()};
}

TEST_F(FileMapping, ShowsEveryByte) {
    std::string content = "first line\r\nsecond\n";
    content += std::string("\0\xFF\x1A", 3);
    CFileMapping file;
    ASSERT_TRUE(file.Open(Write("bytes", content)));
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.Size(), content.size());
    EXPECT_EQ(file.Data()[0], 'f');
    EXPECT_EQ(TextOf(file), content);
}

TEST_F(FileMapping, ShowsAFileOfManyPages) {
    std::string content(3 * 65536 + 17, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 31 % 251);
    }
    CFileMapping file;
    ASSERT_TRUE(file.Open(Write("large", content)));
    EXPECT_EQ(TextOf(file), content);
}

TEST_F(FileMapping, RefusesWhatIsNotThere) {
    CFileMapping file;
    EXPECT_FALSE(file.Open(PathOf("missing")));
    EXPECT_FALSE(file.Open(""));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Data(), nullptr);
    EXPECT_EQ(file.Size(), 0U);
}

TEST_F(FileMapping, RefusesAnEmptyFile) {
    CFileMapping file;
    EXPECT_FALSE(file.Open(Write("empty", "")));
    EXPECT_EQ(file.Data(), nullptr);
}

TEST_F(FileMapping, RefusesADirectory) {
    CFileMapping file;
    EXPECT_FALSE(file.Open(PathOf("")));
    EXPECT_EQ(file.Data(), nullptr);
}

#if !defined(_WIN32)

TEST_F(FileMapping, RefusesANamedPipeWithoutWaitingForAWriter) {
    const std::string path = PathOf("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), S_IRUSR | S_IWUSR), 0);
    CFileMapping file;
    EXPECT_FALSE(file.Open(path));
}

#endif

TEST_F(FileMapping, OpeningAnotherFileReplacesTheFirst) {
    CFileMapping file;
    ASSERT_TRUE(file.Open(Write("one", "one")));
    ASSERT_TRUE(file.Open(Write("two", "second")));
    EXPECT_EQ(TextOf(file), "second");
    EXPECT_FALSE(file.Open(PathOf("missing")));
    EXPECT_EQ(file.Size(), 0U);
}

TEST_F(FileMapping, CloseEndsTheMappingAndMayBeRepeated) {
    CFileMapping file;
    ASSERT_TRUE(file.Open(Write("one", "one")));
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Size(), 0U);
    file.Close();
}

TEST_F(FileMapping, BytesStayWhereTheyAreWhenTheObjectMoves) {
    CFileMapping first;
    ASSERT_TRUE(first.Open(Write("one", "content")));
    const std::uint8_t* const data = first.Data();
    CFileMapping second = std::move(first);
    EXPECT_EQ(second.Data(), data);
    CFileMapping third;
    ASSERT_TRUE(third.Open(Write("two", "other")));
    third = std::move(second);
    EXPECT_EQ(third.Data(), data);
    EXPECT_EQ(TextOf(third), "content");
}

TEST_F(FileMapping, ShowsAFileOfMoreThanFourGibibytes) {
    constexpr std::uint64_t Size = (std::uint64_t{1} << 32U) + 5000;
    const std::string path = Write("large", "start");
    // The rest is a hole that takes no room where the system can leave one.
    std::filesystem::resize_file(path, Size);
    CFileMapping file;
    ASSERT_TRUE(file.Open(path));
    EXPECT_EQ(file.Size(), Size);
    EXPECT_EQ(file.Data()[0], 's');
    EXPECT_EQ(file.Data()[Size - 1], 0);
    EXPECT_EQ(LengthOfFile(path), Size);
}

TEST_F(FileMapping, NameMayBeUtf8) {
    CFileMapping file;
    ASSERT_TRUE(file.Open(Write("\xC3\xB6 \xE2\x99\x9E", "found")));
    EXPECT_EQ(TextOf(file), "found");
}

TEST_F(FileMapping, TwoMappingsOfOneFileDoNotDisturbEachOther) {
    const std::string path = Write("shared", "shared");
    CFileMapping first;
    CFileMapping second;
    ASSERT_TRUE(first.Open(path));
    ASSERT_TRUE(second.Open(path));
    first.Close();
    EXPECT_EQ(TextOf(second), "shared");
}

}  // namespace
}  // namespace brenquil
