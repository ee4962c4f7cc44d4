#pragma once

#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>

namespace kvx::zelvo {

/// What every function that returns a code answers when memory runs out.
inline constexpr int out_of_memory = -199;

/// Runs work() and returns its result; exhausted memory, and containers beyond their largest size,
/// become out_of_memory. No exception leaves the library: every exported function that can
/// allocate runs inside this.
template <class Work>
int guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return out_of_memory;
    } catch (const std::length_error&) {
        return out_of_memory;
    }
}

/// Allocation of an array that must succeed for the work to go on; inside guarded().
inline void need(bool allocated) {
    if (!allocated) throw std::bad_alloc();
}

/// That so many nodes or elements have 32-bit numbers below no_node, before any array of them is
/// sized; inside guarded().
inline void need_numbers_for(std::uint64_t count) {
    constexpr std::uint64_t numbers = 0xFFFFFFFFu;
    need(count <= numbers);
}

/// A count as a result: counts beyond the largest int stay there, so that none reads as an error.
inline int count_result(std::uint64_t count) noexcept {
    constexpr auto largest = std::numeric_limits<int>::max();
    return count > static_cast<std::uint64_t>(largest) ? largest : static_cast<int>(count);
}

/// A 64-bit column count as the 32-bit bound that index checks take.
inline unsigned int index_bound(std::uint64_t count) noexcept {
    constexpr std::uint64_t largest = 0xFFFFFFFFu;
    return static_cast<unsigned int>(count < largest ? count : largest);
}

} // namespace kvx::zelvo
