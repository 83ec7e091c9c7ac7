#include "platform/memory.h"

#include "platform/system_pages.h"

#include <new>
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

void* CInHugePages::operator new(std::size_t bytes) {
    const std::size_t rounded =
        (bytes + StaticTableAlignment - 1) / StaticTableAlignment * StaticTableAlignment;
    void* const memory = ::operator new (rounded, std::align_val_t{StaticTableAlignment});
    PreferHugePages(memory, rounded);
    return memory;
}

void CInHugePages::operator delete(void* object) noexcept {
    ::operator delete (object, std::align_val_t{StaticTableAlignment});
}

}  // namespace brenquil
