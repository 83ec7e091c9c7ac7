// Streams: names of all kinds, and places that 32 bits cannot hold.

#include "../../support/temporary_folder.h"
#include "platform/file_stream.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace brenquil {
namespace {

constexpr std::uint64_t Gibibyte = std::uint64_t{1} << 30U;

class FileStream : public testing::Test {
protected:
    ~FileStream() override { Close(); }

    void Open(const std::string& name, const char* mode) {
        Close();
        file = OpenStream(name, mode);
    }

    void Close() {
        if (file != nullptr) {
            (void)std::fclose(file);
            file = nullptr;
        }
    }

    const test::CTemporaryFolder folder;
    std::FILE* file = nullptr;
};

TEST_F(FileStream, OpensForReadingAndWritingAsTheModeSays) {
    Open(folder.At("file"), "rb");
    EXPECT_EQ(file, nullptr);
    Open(folder.At("file"), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(std::fputs("text", file), 0);
    Open(folder.At("file"), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fgetc(file), 't');
    Open("", "rb");
    EXPECT_EQ(file, nullptr);
}

TEST_F(FileStream, NamesInUtf8AreFound) {
    const std::string name = "Er\xC3\xB6"
                             "ffnungen \xE2\x99\x9E.bin";
    folder.Write(name, "x");
    Open(folder.At(name), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fgetc(file), 'x');
}

#if !defined(_WIN32)

TEST_F(FileStream, WhatIsNoFileIsNotOpenedAndKeepsNobodyWaiting) {
    const std::string pipe = folder.At("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name : {pipe, folder.At(""), std::string("/dev/null")}) {
        for (const char* const mode : {"rb", "r+b", "w", "a"}) {
            Open(name, mode);
            EXPECT_EQ(file, nullptr) << name << ' ' << mode;
        }
    }
    // With somebody at the other end it could be opened.
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    Open(pipe, "a");
    EXPECT_EQ(file, nullptr);
    close(reader);
}

#endif

TEST_F(FileStream, AppendingAddsAndWritingReplaces) {
    const std::string name = folder.Write("file", "old ");
    for (const char* const mode : {"a", "w", "a"}) {
        Open(name, mode);
        ASSERT_NE(file, nullptr);
        EXPECT_GE(std::fputs(mode, file), 0);
    }
    Close();
    EXPECT_EQ(folder.ReadText("file"), "wa");
}

#if defined(_WIN32)

TEST_F(FileStream, NamesInTheCodePageOfTheSystemAreFound) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the code page here is " << GetACP();
    }
    folder.Write("\xC3\xB6.bin", "x");
    Open(folder.At("") + "\xF6.bin", "rb");
    EXPECT_NE(file, nullptr);
}

#endif

TEST_F(FileStream, PlacesAndSizes) {
    Open(folder.Write("file", "0123456789"), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(StreamPlace(file), 0U);
    ASSERT_TRUE(SeekStream(file, 4));
    EXPECT_EQ(std::fgetc(file), '4');
    EXPECT_EQ(StreamPlace(file), 5U);
    EXPECT_EQ(StreamSize(file), 10U);
    EXPECT_EQ(StreamPlace(file), 10U);
    ASSERT_TRUE(SeekStream(file, 100));
    EXPECT_EQ(std::fgetc(file), EOF);
    EXPECT_FALSE(SeekStream(file, ~std::uint64_t{0}));
}

TEST_F(FileStream, PlacesBehindTwoAndFourGibibytes) {
    // The file has holes where the system can leave them, and takes no room on the disk.
    const std::string name = folder.Write("large", "start");
    const std::array<std::uint64_t, 3> places = {2 * Gibibyte - 1, 2 * Gibibyte, 4 * Gibibyte + 5};
    std::filesystem::resize_file(name, places.back() + 1);
    Open(name, "r+b");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(StreamSize(file), places.back() + 1);
    for (const std::uint64_t place : places) {
        ASSERT_TRUE(SeekStream(file, place)) << place;
        EXPECT_EQ(StreamPlace(file), place);
        EXPECT_EQ(std::fputc('x', file), 'x');
        ASSERT_TRUE(SeekStream(file, place)) << place;
        EXPECT_EQ(std::fgetc(file), 'x') << place;
    }
    // Cut to 32 bits, the last place would be the sixth byte.
    ASSERT_TRUE(SeekStream(file, 5));
    EXPECT_EQ(std::fgetc(file), 0);
}

}  // namespace
}  // namespace brenquil
