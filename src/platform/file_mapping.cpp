#include "platform/file_mapping.h"

#include <utility>

namespace brenquil {

// Open and Close are in the source for each system.

CFileMapping::CFileMapping(CFileMapping&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

CFileMapping& CFileMapping::operator=(CFileMapping&& other) noexcept {
    if (this != &other) {
        Close();
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

CFileMapping::~CFileMapping() {
    Close();
}

}  // namespace brenquil
