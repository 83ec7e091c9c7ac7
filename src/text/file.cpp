#include "text/file.h"

#include "platform/file_stream.h"
#include "platform/special_file.h"

#include <array>

namespace brenquil {

CFile::~CFile() {
    Close();
}

bool CFile::Open(const std::string& name) noexcept {
    Close();
    // The system would take such a name for the part before the zero byte.
    const bool isWhole = name.find('\0') == std::string::npos;
    if (isWhole && !IsSpecialFile(name)) {
        file = OpenStream(name, Mode());
    }
    return IsOpen();
}

void CFile::Close() noexcept {
    if (file != nullptr) {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this class is the owner
        (void)std::fclose(file);
        file = nullptr;
    }
}

bool CReadFile::ReadLine(std::string& line) {
    std::array<char, LineCapacity + 1> piece;
    if (file == nullptr ||
        std::fgets(piece.data(), static_cast<int>(piece.size()), file) == nullptr) {
        return false;
    }
    line = piece.data();
    std::erase_if(line, [](char c) { return c == '\r' || c == '\n'; });
    return true;
}

bool CAppendFile::Write(std::string_view text) noexcept {
    // Without a buffer, which would cut a long text in two.
    return file != nullptr && std::setvbuf(file, nullptr, _IONBF, 0) == 0 &&
           std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

bool FileExists(const std::string& name) noexcept {
    return CReadFile().Open(name);
}

}  // namespace brenquil
