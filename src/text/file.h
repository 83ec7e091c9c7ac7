// Owners of one buffered file stream of the standard library.
//
//     CReadFile file;
//     std::string line;
//     if (file.Open(name)) { while (file.ReadLine(line)) { ... } }
//
// A name is a byte string, relative to the working directory; it may hold blanks, and letters
// beyond ASCII (platform/file_stream.h). Only regular files are opened: a directory, a pipe or a
// device counts as a file that cannot be opened, and so does a name with a zero byte in it. Nothing
// is reported anywhere but by the result. An object belongs to one thread.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace brenquil {

/// One stream, or none. Closes it at its end.
class CFile {
public:
    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    virtual ~CFile();

    /// The mode text for opening.
    [[nodiscard]] virtual const char* Mode() const noexcept = 0;

    /// Closes an open stream and opens the file of that name.
    /// @return false when it cannot be opened; there is no stream then
    [[nodiscard]] bool Open(const std::string& name) noexcept;

    /// Closes the stream, if there is one.
    void Close() noexcept;

    [[nodiscard]] bool IsOpen() const noexcept { return file != nullptr; }

    std::FILE* file = nullptr;  ///< null when closed; for the functions of the library
};

/// A file to read, byte for byte as it stands on the disk.
class CReadFile final : public CFile {
public:
    /// Characters that one call of ReadLine reads at most, the line feed among them.
    static constexpr int LineCapacity = 511;

    [[nodiscard]] const char* Mode() const noexcept override { return "rb"; }

    /// Takes the next line, without any of its carriage returns and line feeds. A line of more than
    /// LineCapacity characters comes back as several lines; of what is read at once, a zero byte
    /// and all after it are dropped.
    /// @return false at the end of the file, on an error and when no file is open
    [[nodiscard]] bool ReadLine(std::string& line);
};

/// A file to write as text, in place of what it held before. Written by std::fputs on `file`.
class CWriteFile final : public CFile {
public:
    [[nodiscard]] const char* Mode() const noexcept override { return "w"; }
};

/// A text file to add to, made when there is none.
class CAppendFile final : public CFile {
public:
    [[nodiscard]] const char* Mode() const noexcept override { return "a"; }

    /// Hands the text to the system in one piece, so that the texts of several threads, each with
    /// an object of its own, do not mingle.
    /// @return false when it could not be written, or no file is open
    bool Write(std::string_view text) noexcept;
};

/// True when there is a file of that name that can be opened for reading.
[[nodiscard]] bool FileExists(const std::string& name) noexcept;

}  // namespace brenquil
