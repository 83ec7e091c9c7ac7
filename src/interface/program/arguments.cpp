#include "interface/program/arguments.h"

#include "interface/program/program_info.h"
#include "text/text.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace brenquil {

namespace {

using BenchNumber = int BenchSettings::*;

struct BenchArgument {
    std::string_view name;
    BenchNumber field;
    int min;
    int max;
};

constexpr std::array BenchArguments{
    BenchArgument{"depth", &BenchSettings::depth, 1, 254},
    BenchArgument{"threads", &BenchSettings::threads, 1, 256},
    BenchArgument{"hash", &BenchSettings::hash, 0, 16384},
};

Arguments Refusal(std::string fault) {
    Arguments arguments;
    arguments.action = Arguments::Action::Refuse;
    arguments.fault = std::move(fault);
    return arguments;
}

/// bench [depth] [threads] [hash]
Arguments ReadBench(Arguments arguments, const std::vector<std::string>& values) {
    if (values.size() > BenchArguments.size()) {
        return Refusal("bench has no argument \"" + values[BenchArguments.size()] + "\"");
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const BenchArgument& argument = BenchArguments[i];
        const bool isNumber = values[i].find_first_not_of("0123456789") == std::string::npos;
        const std::int32_t number = ToInteger(values[i]);
        if (values[i].empty() || !isNumber || number < argument.min || number > argument.max) {
            return Refusal("the " + std::string(argument.name) + " of bench is a number from " +
                           std::to_string(argument.min) + " to " + std::to_string(argument.max) +
                           ", not \"" + values[i] + "\"");
        }
        arguments.bench.*argument.field = number;
    }
    arguments.action = Arguments::Action::Bench;
    return arguments;
}

}  // namespace

Arguments ParseArguments(std::string_view program, const std::vector<std::string>& words) {
    Arguments arguments;
    arguments.dialect = CDialect::OfProgram(program);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--strict-uci") {
            arguments.dialect = CDialect::Strict();
        } else if (word == "--help" || word == "--version") {
            arguments.action =
                word == "--help" ? Arguments::Action::Help : Arguments::Action::Version;
            return arguments;
        } else if (word == "bench") {
            const auto rest = words.begin() + i + 1;
            return ReadBench(arguments, {rest, words.end()});
        } else {
            return Refusal("unknown argument \"" + word + "\"");
        }
    }
    return arguments;
}

std::string UsageText() {
    return std::string(ProgramTitle) + ", a chess engine for the UCI protocol\n" +
           R"(
usage: brenquil [--strict-uci]
       brenquil [--strict-uci] bench [DEPTH] [THREADS] [HASH]
       brenquil --version
       brenquil --help

Without a command it reads commands line by line: those of a person (help lists
them) and, after the line "uci", those of a front end.

  --strict-uci   talk as match tools, bots and scripts expect it; a program whose
                 name ends in -strict does so by itself
  bench          search fixed positions: speed and signature. DEPTH 1 to 254 (10),
                 THREADS 1 to 256 (1), HASH 0 to 16384 MB (16)
  --version      print name and version
  --help         print this

The manual: man 6 brenquil, and )" +
           std::string(HomePage) + "\n";
}

}  // namespace brenquil
