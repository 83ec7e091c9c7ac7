#include "platform/memory.h"

#include "platform/system_pages.h"

#include <utility>

namespace brenquil {

CPages::CPages(CPages&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

CPages& CPages::operator=(CPages&& other) noexcept {
    if (this != &other) {
        Release();
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

CPages::~CPages() {
    Release();
}

CPages CPages::Allocate(std::size_t bytes) noexcept {
    if (bytes == 0 || bytes > AvailableMemory()) {
        return {};
    }
    void* const data = ReservePages(bytes);
    return data == nullptr ? CPages() : CPages(data, bytes);
}

void CPages::Release() noexcept {
    if (data_ != nullptr) {
        ReleasePages(data_, size_);
    }
    data_ = nullptr;
    size_ = 0;
}

}  // namespace brenquil
