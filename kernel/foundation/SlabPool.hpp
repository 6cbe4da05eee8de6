#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "brant/zero/Slab.hpp"

namespace brant::zero::slab {

struct Heap;
struct Region;

struct Block {
    Block* next;
};

inline constexpr std::size_t slabSize = std::size_t(1) << 16;
inline constexpr std::size_t regionSize = std::size_t(1) << 21;

/// What is known of one slab. Only the thread that works with the owner changes it; the owner itself is set
/// before the first block is handed out and may be read by whoever holds a block.
struct alignas(64) Slab {
    Heap* owner;
    Block* free; ///< Blocks that came back.
    char* fresh; ///< Start of the part that was never handed out, so that its pages stay untouched.
    char* end;   ///< Where `fresh` stops: no whole block fits behind it.
    Slab* next;  ///< Neighbours in the owner's list of slabs with room.
    Slab* previous;
    std::uint32_t used; ///< Blocks that are out.
    std::uint16_t blockSize;
    bool attached; ///< In the owner's list of slabs with room, or the slab that it allocates from.
};

/// The descriptors of the slabs of a region stand together and at another offset in each region. At the start
/// of the slabs themselves they would all fall into the same few lines of every cache.
struct alignas(64) Region {
    static constexpr unsigned slabCount = regionSize / slabSize - 1;
    static constexpr std::uint32_t allSlabs = (std::uint32_t(1) << slabCount) - 1;

    Region* next;
    Region* previous;
    std::uint32_t freeSlabs;     ///< One bit for each slab that no heap owns.
    std::uint32_t residentSlabs; ///< Those among them that still have their memory.
    Slab slabs[slabCount];

    static Region& of(void const* address) noexcept {
        auto const number = reinterpret_cast<std::uintptr_t>(address) / regionSize;
        return *reinterpret_cast<Region*>(number * regionSize + number % offsets * sizeof(Region));
    }
    char* memory() noexcept {
        return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(this) / regionSize * regionSize);
    }

    // The first slab's place in a region holds this object instead.
    static constexpr std::size_t offsets = 32;
    char* memoryOf(unsigned slab) noexcept { return memory() + (slab + 1) * slabSize; }
    Slab& slabOf(void const* block) noexcept {
        return slabs[reinterpret_cast<std::uintptr_t>(block) % regionSize / slabSize - 1];
    }
};
static_assert(sizeof(Slab) == 64 && sizeof(Region) * Region::offsets <= slabSize);

inline Slab& slabOf(void const* block) noexcept {
    return Region::of(block).slabOf(block);
}

/// The slabs that no heap owns, and the heaps whose threads have ended. Everything but `takeSlab`'s argument
/// is guarded by `mutex`, and so are the heaps in the list of orphans.
class Pool {
  public:
    constexpr Pool() noexcept = default;

    /// The only one of the process; usable at any time, by initialisers and destructors of static objects
    /// too.
    static Pool& instance() noexcept;

    std::mutex mutex;
    Heap* orphans = nullptr;

    /// A slab for blocks of `blockSize` bytes. Throws std::bad_alloc. The caller holds the mutex.
    Slab& take(std::size_t blockSize);

    /// Takes back a slab without blocks. The caller holds the mutex.
    void release(Slab& slab) noexcept;

    /// Gives up memory of free slabs until no more than `bytes` are kept. The caller holds the mutex.
    void shrink(std::size_t bytes) noexcept;

    /// The caller holds the mutex.
    void setRetention(std::size_t bytes) noexcept { _retention = bytes; }
    Usage getUsage() const noexcept { return {_inUse, _retained}; }

  private:
    Region& map();
    void unmap(Region& region) noexcept;
    void link(Region& region) noexcept;
    void unlink(Region& region) noexcept;
    void discard(Region& region, unsigned slab) noexcept;

    Region* _withFree = nullptr;
    std::size_t _regionCount = 0;
    std::size_t _inUse = 0;
    std::size_t _retained = 0;
    std::size_t _retention = std::size_t(64) << 20;
};

} // namespace brant::zero::slab
