#pragma once

#include <cstddef>

#include "brant/zero/Export.hpp"

/// Memory for elements and other small objects that live in large numbers: blocks of one size lie side by
/// side in slabs of 64 KiB. Any thread may free what another one allocated, also after that one has ended;
/// such blocks go back to their slab when the thread that allocated them next needs room, or by `trim` once
/// it has ended.
///
/// Under AddressSanitizer, or when built with ZELKOR_AST_SYSTEM_ALLOCATOR, every block comes from
/// ::operator new, so that memory checkers see each of them.
namespace brant::zero::slab {

/// Larger blocks come from ::operator new.
inline constexpr std::size_t largestBlock = 512;

/// A block of at least `size` bytes, aligned to 16. Throws std::bad_alloc.
[[nodiscard]] ZELKOR_API void* allocate(std::size_t size);

/// Gives back what `allocate(size)` returned; a null pointer is ignored.
ZELKOR_API void deallocate(void* block, std::size_t size) noexcept;

/// Empty slabs up to this many bytes are kept for the next model instead of going back to the operating
/// system, since touching fresh memory costs more than filling it. The default is 64 MiB.
ZELKOR_API void setRetention(std::size_t bytes) noexcept;

/// Returns all empty slabs to the operating system, except those that running threads allocate from.
ZELKOR_API void trim() noexcept;

/// For reports and tests: bytes in slabs that hold blocks or serve a thread, and in empty ones kept.
struct Usage {
    std::size_t inUse;
    std::size_t retained;
};
ZELKOR_API Usage usage() noexcept;

/// True when every block comes from ::operator new; then there is nothing to retain, and `usage` gives zeros.
ZELKOR_API bool usesSystemAllocator() noexcept;

} // namespace brant::zero::slab
