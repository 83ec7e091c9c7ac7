// What the program says about itself: name, version, author, and the names made from them.
//
// The version comes from project() in CMakeLists.txt through the macro BRENQUIL_VERSION; the manual
// page and the packages take it from there as well.
#pragma once

#include <string>
#include <string_view>

namespace brenquil {

inline constexpr std::string_view ProgramAuthor = "J.Ostervelde";
inline constexpr std::string_view ProgramTitle = "Brenquil " BRENQUIL_VERSION;
inline constexpr std::string_view PlatformWord = "x64";

/// The program's own files, all in the working directory.
inline constexpr std::string_view LogFileName = "Brenquil" BRENQUIL_VERSION ".log";
inline constexpr std::string_view IniFileName = "Brenquil" BRENQUIL_VERSION ".ini";
inline constexpr std::string_view BatchExtension = ".cmd";

/// The project's address without a scheme.
inline constexpr std::string_view HomePage = "brenquil.example.org";

/// The date of a compiler's __DATE__ text with one blank between its parts: "Dec 8 2018", where the
/// compiler pads the day to two places.
[[nodiscard]] std::string FormatBuildDate(std::string_view compilerDate);

/// The date on which this program was built: "Dec 28 2018".
[[nodiscard]] std::string BuildDate();

}  // namespace brenquil
