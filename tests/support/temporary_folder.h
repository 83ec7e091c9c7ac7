// A folder for the length of one test, as the working directory if wanted.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace brenquil::test {

/// Makes an empty folder and removes it with all that is in it. Names are UTF-8.
class CTemporaryFolder {
public:
    CTemporaryFolder() : path_(std::filesystem::temp_directory_path() / UniqueName()) {
        std::filesystem::create_directories(path_);
    }

    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    ~CTemporaryFolder() {
        if (!before_.empty()) {
            std::filesystem::current_path(before_);
        }
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }

    /// Makes the folder the working directory until the end of the test.
    void Enter() {
        before_ = std::filesystem::current_path();
        std::filesystem::current_path(path_);
    }

    /// The full name of a file in the folder.
    [[nodiscard]] std::string At(std::string_view name) const {
        const std::u8string whole = PathOf(name).u8string();
        return {whole.begin(), whole.end()};
    }

    /// Writes a file, byte for byte, and returns its full name.
    std::string Write(std::string_view name, std::string_view bytes) const {
        std::ofstream file(PathOf(name), std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return At(name);
    }

    /// The bytes of a file; none if there is no such file.
    [[nodiscard]] std::string Read(std::string_view name) const {
        std::ifstream file(PathOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// A file of text, with a plain line feed at the end of each line.
    [[nodiscard]] std::string ReadText(std::string_view name) const {
        std::ifstream file(PathOf(name));
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    [[nodiscard]] std::filesystem::path PathOf(std::string_view name) const {
        return path_ / std::u8string(name.begin(), name.end());
    }

    static std::string UniqueName() {
        const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
        return "brenquil_" + std::string(test->name()) + "_" +
               std::to_string(std::random_device()());
    }

    std::filesystem::path path_;
    std::filesystem::path before_;
};

}  // namespace brenquil::test
