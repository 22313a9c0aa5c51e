#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace halvern::numerics {

/// Allocates at the start of a cache line, where no vector load crosses into the next one.
template <class T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t kLine{64};

    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>&) {}

    T* allocate(std::size_t count) {
        return static_cast<T*>(::operator new(count * sizeof(T), kLine));
    }
    void deallocate(T* place, std::size_t) { ::operator delete(place, kLine); }
    friend bool operator==(CacheLineAllocator, CacheLineAllocator) { return true; }
};

/// What work buffers are made of: every function here takes any span, and is fastest on these.
using AlignedDoubles = std::vector<double, CacheLineAllocator<double>>;

}  // namespace halvern::numerics
