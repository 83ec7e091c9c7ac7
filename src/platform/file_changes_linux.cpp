#include "platform/file_changes.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brenquil {

bool RenameFile(const std::string& from, const std::string& to) noexcept {
    return rename(from.c_str(), to.c_str()) == 0;
}

bool RemoveFile(const std::string& name) noexcept {
    return unlink(name.c_str()) == 0 || errno == ENOENT;
}

bool MakeDirectory(const std::string& name) noexcept {
    constexpr mode_t Everything = 0777;  // the user's mask takes away
    return mkdir(name.c_str(), Everything) == 0 || errno == EEXIST;
}

std::optional<std::vector<std::string>> NamesInDirectory(const std::string& path) {
    DIR* const directory = opendir(path.c_str());
    if (directory == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    while (const dirent* const entry = readdir(directory)) {
        const std::string_view name(&entry->d_name[0]);
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    closedir(directory);
    return names;
}

bool FlushToDisk(std::FILE* stream) noexcept {
    return std::fflush(stream) == 0 && fsync(fileno(stream)) == 0;
}

CFolderLock::~CFolderLock() {
    if (handle_ != None) {
        close(static_cast<int>(handle_));
    }
}

bool CFolderLock::Take(const std::string& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return true;
    }
    handle_ = descriptor;
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

std::string LastFileError() {
    return std::strerror(errno);
}

}  // namespace brenquil
