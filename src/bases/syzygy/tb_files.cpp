#include "bases/syzygy/tb_files.h"

#include "platform/directory.h"
#include "text/text.h"

namespace brenquil {

void CTbPaths::Set(std::string_view list) {
    directories_ = Split(list, ';');
}

std::string CTbPaths::TbOpenFile(std::string_view name, std::string_view suffix) const {
    std::string path;
    for (const std::string& directory : directories_) {
        path = directory;
        path += PathSeparator();
        path += name;
        path += suffix;
        if (LengthOfFile(path).has_value()) {
            return path;
        }
    }
    return {};
}

bool CTbPaths::TbMapFile(std::string_view name, std::string_view suffix,
                         CFileMapping& mapping) const {
    const std::string path = TbOpenFile(name, suffix);
    if (path.empty()) {
        return false;
    }
    if (!mapping.Open(path) && LengthOfFile(path).value_or(0) != 0) {
        host_.Fail(IHost::Stream::Error,
                   "MapViewOfFile() failed, name = " + std::string(name) + std::string(suffix) +
                       ", error = " + std::to_string(mapping.Error()) + ".\n");
    }
    return true;
}

}  // namespace brenquil
