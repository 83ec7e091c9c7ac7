// A working folder that belongs to one fuzz program, for the files that it writes and reads.
//
// The program under test knows its files by bare names in the working directory, so a fuzz program
// has to go to a place where these harm nobody. It lies in memory where the system has such a
// place. The folder is removed when the program ends in the normal way; a finding leaves it behind.
//
// Relative names on the command line of the fuzzer (corpus, findings) mean other places afterwards:
// give them in full.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace brenquil {

/// Makes the folder and enters it; for the first input.
/// @return true, for the initialiser of a static
inline bool EnterPrivateFolder() {
    static const std::filesystem::path folder =
        (std::filesystem::is_directory("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                   : std::filesystem::temp_directory_path()) /
        ("brenquil_fuzz_" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    return std::atexit([] {
               std::error_code error;
               std::filesystem::remove_all(folder, error);
           }) == 0;
}

/// Writes a file of the working folder, byte for byte, by the shortest way that the system has:
/// some programs do it for each input.
inline void WriteWhole(const std::string& name, std::string_view bytes) {
    const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    const bool isWritten =
        file >= 0 && ::write(file, bytes.data(), bytes.size()) == std::ssize(bytes);
    if (file < 0 || ::close(file) != 0 || !isWritten) {
        std::perror(name.c_str());
        std::abort();
    }
}

/// The bytes of an input as text.
[[nodiscard]] inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace brenquil
