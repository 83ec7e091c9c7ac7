// The words of a command line, from which options are taken out one after the other.
//
//     CCommandWords words({"check", "--threads=4", "tables"});
//     words.Flag("--quiet");                  // false
//     words.Number("--threads", 1, 256);      // 4
//     words.Rest();                           // {"check", "tables"}
//
// An option may stand anywhere, until `--` ends them. What makes no sense is thrown as `CMisuse`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace brenquil {

/// Thrown where the arguments make no sense.
class CMisuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CCommandWords {
public:
    explicit CCommandWords(std::vector<std::string> words);

    /// Takes an option without a value out. True if it was there.
    [[nodiscard]] bool Flag(const std::string& name);

    /// Takes an option with a number from 1 to `most` out: `--name 3` or `--name=3`.
    [[nodiscard]] std::size_t Number(const std::string& name, std::size_t otherwise,
                                     std::size_t most);

    /// Takes an option with a size out: `4` and `4G` are gibibytes, `512M` mebibytes.
    /// @return bytes
    [[nodiscard]] std::uint64_t Size(const std::string& name, std::uint64_t otherwise);

    /// What is left. Throws `CMisuse` if an option is among it.
    [[nodiscard]] const std::vector<std::string>& Rest();

private:
    /// Takes an option and its value out. False if it is not there.
    [[nodiscard]] bool TakeValue(const std::string& name, std::string& value);

    std::vector<std::string> words_;
    std::vector<std::string> behind_;  // what follows `--`
};

}  // namespace brenquil
