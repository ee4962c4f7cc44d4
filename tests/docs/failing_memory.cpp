#include "docs/exported_calls.h"

namespace {

using namespace kvx::zelvo::tests;

template <class Allocate>
void* take(Allocate&& allocate) noexcept {
    if (allocations_left == 0) {
        refused = true;
        if (fails_once) allocations_left = unlimited;
        return nullptr;
    }
    if (allocations_left > 0) --allocations_left;
    ++live_blocks;
    return allocate();
}
void give_back(void* block) noexcept {
    if (block) --live_blocks;
    std::free(block);
}

} // namespace

// The allocators of the program serve the library too. Kept out of line: inlined, free() looks to
// the compiler like a mismatch of new.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return take([size] { return std::malloc(size); });
}
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* const block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    give_back(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    give_back(block);
}
std::byte* kvx::__vector_num_alloc(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(take([bytes] { return std::malloc(bytes); }));
}
std::byte* kvx::__vector_num_alloc_zeros(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(take([bytes] { return std::calloc(bytes, 1); }));
}
void kvx::__vector_num_free(std::byte* raw_block) noexcept {
    give_back(raw_block);
}
