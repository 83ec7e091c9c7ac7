#include "platform/file_changes.h"
#include "platform/windows_name.h"

#include <cerrno>
#include <cstring>
#include <io.h>
#include <windows.h>

namespace brenquil {

namespace {

/// What the C library would have noted.
bool Note(bool succeeded) noexcept {
    if (!succeeded) {
        switch (GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND: errno = ENOENT; break;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL: errno = ENOSPC; break;
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS: errno = EEXIST; break;
        default: errno = EACCES; break;
        }
    }
    return succeeded;
}

std::string NarrowName(const wchar_t* name) {
    const int length = WideCharToMultiByte(CP_UTF8, 0, name, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(length > 0 ? length - 1 : 0, '\0');
    if (length > 1) {
        (void)WideCharToMultiByte(CP_UTF8, 0, name, -1, narrow.data(), length, nullptr, nullptr);
    }
    return narrow;
}

}  // namespace

bool RenameFile(const std::string& from, const std::string& to) noexcept {
    return Note(MoveFileExW(WindowsName(from).c_str(), WindowsName(to).c_str(),
                            MOVEFILE_REPLACE_EXISTING) != 0);
}

bool RemoveFile(const std::string& name) noexcept {
    return Note(DeleteFileW(WindowsName(name).c_str()) != 0) || errno == ENOENT;
}

bool MakeDirectory(const std::string& name) noexcept {
    return Note(CreateDirectoryW(WindowsName(name).c_str(), nullptr) != 0) || errno == EEXIST;
}

std::optional<std::vector<std::string>> NamesInDirectory(const std::string& path) {
    WIN32_FIND_DATAW entry;
    HANDLE const search = FindFirstFileW(WindowsName(path + "\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        (void)Note(false);
        return std::nullopt;
    }
    std::vector<std::string> names;
    do {
        const std::string name = NarrowName(&entry.cFileName[0]);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
    return names;
}

bool FlushToDisk(std::FILE* stream) noexcept {
    return std::fflush(stream) == 0 && _commit(_fileno(stream)) == 0;
}

CFolderLock::~CFolderLock() {
    if (handle_ != None) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

/// A file that nobody else may open; the system removes it with its last handle.
bool CFolderLock::Take(const std::string& folder) {
    const std::string name = folder + "\\brenquil-tables.lock";
    HANDLE const file =
        CreateFileW(WindowsName(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError() != ERROR_SHARING_VIOLATION;
    }
    handle_ = reinterpret_cast<std::intptr_t>(file);
    return true;
}

std::string LastFileError() {
    return std::strerror(errno);
}

}  // namespace brenquil
