// What book, tables and memory need of the program around them, in four operations.
//
// They change when an option changes, they have something to say then, and a table file that cannot
// be what its name says ends the program. How a line is printed, what a search is and how the
// program ends is not theirs to know: the program supplies one object for all of them.
#pragma once

#include <string>
#include <string_view>

namespace brenquil {

/// The program, as its sources of answers see it. Outlives them.
class IHost {
public:
    /// Where the last words of a program go.
    enum class Stream { Output, Error };

    IHost() = default;
    IHost(const IHost&) = delete;
    IHost& operator=(const IHost&) = delete;
    virtual ~IHost() = default;

    /// Tells the user something: the text of an `info string`. For the reading thread.
    virtual void Print(std::string_view message) = 0;

    /// Prints a line just as it is, in either mode and past the log. For the reading thread.
    virtual void PrintBare(std::string_view line) = 0;

    /// Ends the search under way, if there is one, and returns when nobody reads any more what the
    /// caller is about to change. For the reading thread.
    virtual void EndSearch() = 0;

    /// Writes the text, as it stands, and ends the program with code 1. Nothing is destroyed, so
    /// any thread may call it while the others run.
    [[noreturn]] void Fail(Stream stream, const std::string& text);

protected:
    /// Writes the text to the stream and flushes it.
    virtual void PrintLastWords(Stream stream, const std::string& text);
};

/// A host for programs that are not the engine: prints to standard output and has no search.
class CPlainHost : public IHost {
public:
    void Print(std::string_view message) override;
    void PrintBare(std::string_view line) override;

    void EndSearch() override {}
};

}  // namespace brenquil
