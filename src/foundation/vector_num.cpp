#include <kvx/ref_counted.h>

namespace kvx {

// The replaceable operator new, so that a program's own allocator serves the arrays too.
std::byte* __vector_num_alloc(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(::operator new(bytes, std::nothrow));
}

void __vector_num_free(std::byte* raw_block) noexcept {
    ::operator delete(raw_block);
}

} // namespace kvx
