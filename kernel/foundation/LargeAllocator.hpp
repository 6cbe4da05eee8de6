/// Memory of tables that are searched in no order: from a few megabytes on large pages back it where the system
/// has them, since each search would miss the processor's table of small ones.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace brant::zero {

template <class T>
struct LargeAllocator {
    using value_type = T;

    LargeAllocator() = default;
    template <class U>
    explicit LargeAllocator(LargeAllocator<U> const&) noexcept {}

    T* allocate(std::size_t count) {
        std::size_t const size = count * sizeof(T);
        if (size < pageSize) return static_cast<T*>(::operator new(size));
        void* const memory = std::aligned_alloc(pageSize, (size + pageSize - 1) / pageSize * pageSize);
        if (memory == nullptr) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        ::madvise(memory, size, MADV_HUGEPAGE); // a hint: it may be refused
#endif
        return static_cast<T*>(memory);
    }

    void deallocate(T* memory, std::size_t count) noexcept {
        if (count * sizeof(T) < pageSize)
            ::operator delete(memory);
        else
            std::free(memory);
    }

    friend bool operator==(LargeAllocator const&, LargeAllocator const&) noexcept { return true; }

  private:
    static constexpr std::size_t pageSize = std::size_t{2} << 20;
};

} // namespace brant::zero
