// A value that several threads read and write without any order between them.
//
// The name says the contract: each read and each write is whole, and nothing else is promised. A
// reader may see an old value, and two values written one after the other may be seen in the other
// order. That is what stop flags, statistics and the words of a lock-free table need, and it makes
// them free of data races by the letter of the language.
//
// Use it like a plain variable: read it by name, assign to it. There is deliberately no `+=` or
// `++`: `AddLossily` says what it does, and is for a counter that only one thread changes, and for
// a figure in which a lost addition now and then does no harm.
//
// Cost: that of a plain variable.
#pragma once

#include <atomic>
#include <type_traits>

namespace brenquil {

namespace platform_detail {

#if defined(__wasm__)
// WebAssembly has no atomic access but those in one order among all threads, whose writes are
// locked instructions; they cost a tenth of the speed. Its plain accesses serve, for which its own
// rules say what a race does: all that the contract asks for, except that on a 32-bit phone the
// halves of a 64-bit word may be of two writes. The hash table checks its words against one
// another, and figures forgive it.
template <class T>
class SharedWord {
public:
    constexpr SharedWord(T value) noexcept : value_(value) {}

    // Volatile: the compiler may leave none out.
    [[nodiscard]] T load(std::memory_order) const noexcept {
        return static_cast<const volatile T&>(value_);
    }

    void store(T value, std::memory_order) noexcept { static_cast<volatile T&>(value_) = value; }

    T fetch_add(T amount, std::memory_order) noexcept {
        return __atomic_fetch_add(&value_, amount, __ATOMIC_RELAXED);
    }

private:
    T value_;
};
#else
template <class T>
using SharedWord = std::atomic<T>;
#endif

}  // namespace platform_detail

template <class T>
class Relaxed {
    static_assert(std::is_trivially_copyable_v<T>);
    static_assert(std::atomic<T>::is_always_lock_free,
                  "a hidden lock would break the promised cost");

public:
    /// Holds T{}.
    constexpr Relaxed() noexcept : value_(T{}) {}

    /// Holds `value`. Implicit, so that tables and records of shared words are initialised like
    /// plain ones.
    constexpr Relaxed(T value) noexcept : value_(value) {}

    /// A copy takes the value of the moment; the two are independent afterwards.
    Relaxed(const Relaxed& other) noexcept : value_(other.Load()) {}

    Relaxed& operator=(const Relaxed& other) noexcept {
        Store(other.Load());
        return *this;
    }

    Relaxed& operator=(T value) noexcept {
        Store(value);
        return *this;
    }

    ~Relaxed() = default;

    operator T() const noexcept { return Load(); }

    [[nodiscard]] T Load() const noexcept { return value_.load(std::memory_order_relaxed); }

    void Store(T value) noexcept { value_.store(value, std::memory_order_relaxed); }

    /// Adds `amount` by a read and a write. What a second thread adds in between is lost.
    void AddLossily(T amount) noexcept { Store(static_cast<T>(Load() + amount)); }

    /// The same for a subtraction.
    void SubtractLossily(T amount) noexcept { Store(static_cast<T>(Load() - amount)); }

private:
    platform_detail::SharedWord<T> value_;
};

static_assert(sizeof(Relaxed<bool>) == sizeof(bool));
static_assert(sizeof(Relaxed<unsigned long long>) == sizeof(unsigned long long));

}  // namespace brenquil
