#include "platform/memory.h"

#include "platform/system_pages.h"

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

namespace brenquil {

namespace {

/// The unit in which large objects take memory.
struct alignas(HugePageAlignment) HugePage {
    std::array<std::byte, HugePageAlignment> bytes;
};

}  // namespace

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
    const std::size_t count = (bytes + sizeof(HugePage) - 1) / sizeof(HugePage);
    std::unique_ptr<HugePage[]> pages(new HugePage[count]);
    PreferHugePages(pages.get(), count * sizeof(HugePage));
    return pages.release();
}

void CInHugePages::operator delete(void* object) noexcept {
    std::unique_ptr<HugePage[]>(static_cast<HugePage*>(object)).reset();
}

}  // namespace brenquil
