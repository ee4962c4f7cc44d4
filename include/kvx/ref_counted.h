#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include <kvx/zelvo/export.h>

namespace kvx {

/// Allocates `bytes` bytes for a storage block; nullptr when memory runs out.
KVX_ZELVO_API std::byte* __vector_num_alloc(std::uint64_t bytes) noexcept;

/// The same with every byte 0. Large blocks take memory page by page when they are written to, on
/// systems that hand out memory so.
KVX_ZELVO_API std::byte* __vector_num_alloc_zeros(std::uint64_t bytes) noexcept;

/// Gives back what one of them returned; nullptr is allowed.
KVX_ZELVO_API void __vector_num_free(std::byte* raw_block) noexcept;

/// Base of every shared block: a 32-bit reference count and a virtual destructor.
/// The count changes atomically, so views of one block may be dropped from several threads.
class ref_counted {
public:
    ref_counted() = default;
    ref_counted(const ref_counted&) = delete;
    ref_counted& operator=(const ref_counted&) = delete;
    virtual ~ref_counted() = default;

    /// Number of Ptr that hold this block.
    std::uint32_t ref_count() const noexcept { return count_.load(std::memory_order_acquire); }

private:
    template <class X>
    friend class Ptr;

    void add_ref() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    void drop_ref() noexcept {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) __destroy();
    }
    void __destroy() noexcept { delete this; }

    std::atomic<std::uint32_t> count_{0};
};

/// Owning pointer to a ref_counted object; copying it shares the object.
template <class X>
class Ptr {
public:
    Ptr() = default;
    explicit Ptr(X* object) noexcept
        : object_(object) {
        if (object_) object_->add_ref();
    }
    Ptr(const Ptr& other) noexcept
        : Ptr(other.object_) {}
    Ptr(Ptr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}
    ~Ptr() {
        if (object_) object_->drop_ref();
    }

    Ptr& operator=(X* object) noexcept {
        Ptr(object).swap(*this); // the new reference is taken before the old one is dropped
        return *this;
    }
    Ptr& operator=(const Ptr& other) noexcept { return *this = other.object_; }
    Ptr& operator=(Ptr&& other) noexcept {
        Ptr{std::move(other)}.swap(*this);
        return *this;
    }

    void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }
    X* get() const noexcept { return object_; }
    X* operator->() const noexcept { return object_; }
    X& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    X* object_ = nullptr;
};

/// Storage block of numbers behind dense1D and dense2D: owned and aligned to 16 bytes, or foreign
/// (memory of the caller, never freed, aligned as the caller made it).
template <class T>
class vector_num final : public ref_counted {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    static constexpr std::uint64_t alignment = 16;
    /// Largest number of elements that a block can be asked for.
    static constexpr std::uint64_t max_capacity =
        (static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) - alignment) /
        sizeof(T);

    /// A block with room for at least n elements (unset); nullptr when memory runs out.
    static Ptr<vector_num> make(std::uint64_t n) noexcept {
        Ptr<vector_num> block(new (std::nothrow) vector_num);
        if (block && !block->reserve(n, 1, 0)) block = nullptr;
        return block;
    }

    /// A block of at least n zeros, see __vector_num_alloc_zeros; nullptr when memory runs out.
    static Ptr<vector_num> make_zeros(std::uint64_t n) noexcept {
        Ptr<vector_num> block(new (std::nothrow) vector_num);
        if (!block || n > max_capacity) return {};
        const std::uint64_t bytes = n * sizeof(T) + alignment;
        std::byte* const raw = __vector_num_alloc_zeros(bytes);
        if (!raw) return {};
        block->take(raw, bytes, 0);
        return block;
    }

    /// A block around n elements that the caller owns and keeps alive; nullptr when memory runs
    /// out.
    static Ptr<vector_num> wrap(T* data, std::uint64_t n) noexcept {
        Ptr<vector_num> block(new (std::nothrow) vector_num);
        if (block) {
            block->data_ = data;
            block->capacity_ = n;
            block->foreign_ = true;
        }
        return block;
    }

    ~vector_num() override { __vector_num_free(raw_block_); }

    T* data() const noexcept { return data_; }
    std::uint64_t capacity() const noexcept { return capacity_; }
    bool foreign() const noexcept { return foreign_; }

    /// Makes room for n elements, keeping the first `used` ones. The new capacity is the largest of
    /// n, 4 and growth times the old one. False, with nothing changed, when memory runs out.
    bool reserve(std::uint64_t n, std::uint64_t growth, std::uint64_t used) noexcept {
        if (n <= capacity_) return true;
        if (n > max_capacity) return false;
        std::uint64_t wanted = n < 4 ? 4 : n;
        if (growth > 1 && capacity_ <= max_capacity / growth && growth * capacity_ > wanted)
            wanted = growth * capacity_;
        const std::uint64_t bytes = wanted * sizeof(T) + alignment;
        std::byte* const raw = __vector_num_alloc(bytes);
        if (!raw) return false;
        take(raw, bytes, used);
        return true;
    }

private:
    vector_num() = default;

    /// Goes over to a new block with the first `used` elements.
    void take(std::byte* raw, std::uint64_t bytes, std::uint64_t used) noexcept {
        const std::uint64_t skipped =
            (alignment - reinterpret_cast<std::uintptr_t>(raw) % alignment) % alignment;
        T* const aligned = reinterpret_cast<T*>(raw + skipped);
        if (used > 0) std::memcpy(aligned, data_, used * sizeof(T));
        __vector_num_free(raw_block_);
        data_ = aligned;
        capacity_ = (bytes - skipped) / sizeof(T);
        raw_block_ = raw;
        foreign_ = false;
    }

    T* data_ = nullptr;
    std::uint64_t capacity_ = 0;
    std::byte* raw_block_ = nullptr;
    bool foreign_ = false;
};

} // namespace kvx
