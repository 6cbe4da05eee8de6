#include "SlabPool.hpp"

#include <bit>
#include <new>
#include <pthread.h>
#include <sys/mman.h>
#include <type_traits>

// Leak checkers that arrive with the program, not with this library, have to be told where elements lie.
extern "C" {
[[gnu::weak]] void __lsan_register_root_region(void const* begin, std::size_t size);
[[gnu::weak]] void __lsan_unregister_root_region(void const* begin, std::size_t size);
}

namespace brant::zero::slab {

namespace {

/// From this many regions on a page of the size of a region may back the next one: it costs a fifth of the
/// time of the small pages, and what the last one wastes no longer matters.
constexpr std::size_t hugeFrom = 8;

void* mapAligned() {
    constexpr std::size_t size = 2 * regionSize;
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    char* const begin = static_cast<char*>(mapped);
    std::size_t const before =
        (regionSize - reinterpret_cast<std::uintptr_t>(begin) % regionSize) % regionSize;
    if (before != 0) munmap(begin, before);
    munmap(begin + before + regionSize, size - before - regionSize);
    return begin + before;
}

// There before any code runs, so that no first use has to be guarded: a child forked in the middle of one
// would wait for the guard for ever. Never destroyed: objects with static lifetime may free their blocks
// after any destructor of ours.
constinit Pool pool;
static_assert(std::is_trivially_destructible_v<Pool>);

// As early as a library can, since a child forked while another thread holds the mutex would wait for it for
// ever as well.
[[gnu::constructor(101)]] void keepForkOut() {
    pthread_atfork([] { pool.mutex.lock(); }, [] { pool.mutex.unlock(); }, [] { pool.mutex.unlock(); });
}

} // namespace

Pool& Pool::instance() noexcept {
    return pool;
}

Slab& Pool::take(std::size_t blockSize) {
    Region& region = _withFree ? *_withFree : map();
    std::uint32_t const candidates = region.residentSlabs ? region.residentSlabs : region.freeSlabs;
    unsigned const number = unsigned(std::countr_zero(candidates));
    std::uint32_t const bit = std::uint32_t(1) << number;
    if (region.residentSlabs & bit) _retained -= slabSize;
    region.residentSlabs &= ~bit;
    region.freeSlabs &= ~bit;
    if (region.freeSlabs == 0) unlink(region);
    _inUse += slabSize;

    Slab& slab = region.slabs[number];
    slab = Slab{};
    slab.blockSize = std::uint16_t(blockSize);
    slab.fresh = region.memoryOf(number);
    slab.end = slab.fresh + slabSize / blockSize * blockSize;
    return slab;
}

void Pool::release(Slab& slab) noexcept {
    Region& region = Region::of(&slab);
    unsigned const number = unsigned(&slab - region.slabs);
    std::uint32_t const bit = std::uint32_t(1) << number;
    // To the front, so that slabs that still have their memory are taken first.
    if (region.freeSlabs != 0) unlink(region);
    link(region);
    region.freeSlabs |= bit;
    region.residentSlabs |= bit;
    _inUse -= slabSize;
    _retained += slabSize;
    if (_retained <= _retention) return;
    if (region.freeSlabs == Region::allSlabs)
        unmap(region);
    else
        discard(region, number);
}

void Pool::shrink(std::size_t bytes) noexcept {
    for (Region* region = _withFree; region && _retained > bytes;) {
        Region* const next = region->next;
        if (region->freeSlabs == Region::allSlabs) {
            unmap(*region);
        } else {
            while (region->residentSlabs != 0 && _retained > bytes)
                discard(*region, unsigned(std::countr_zero(region->residentSlabs)));
        }
        region = next;
    }
}

Region& Pool::map() {
    void* const memory = mapAligned();
    if (_regionCount >= hugeFrom) madvise(memory, regionSize, MADV_HUGEPAGE);
    if (__lsan_register_root_region) __lsan_register_root_region(memory, regionSize);
    Region& region = Region::of(memory);
    region.freeSlabs = Region::allSlabs;
    ++_regionCount;
    link(region);
    return region;
}

void Pool::unmap(Region& region) noexcept {
    unlink(region);
    _retained -= std::size_t(std::popcount(region.residentSlabs)) * slabSize;
    --_regionCount;
    void* const memory = region.memory();
    if (__lsan_unregister_root_region) __lsan_unregister_root_region(memory, regionSize);
    munmap(memory, regionSize);
}

void Pool::link(Region& region) noexcept {
    region.previous = nullptr;
    region.next = _withFree;
    if (_withFree) _withFree->previous = &region;
    _withFree = &region;
}

void Pool::unlink(Region& region) noexcept {
    (region.previous ? region.previous->next : _withFree) = region.next;
    if (region.next) region.next->previous = region.previous;
}

void Pool::discard(Region& region, unsigned slab) noexcept {
    madvise(region.memoryOf(slab), slabSize, MADV_DONTNEED);
    region.residentSlabs &= ~(std::uint32_t(1) << slab);
    _retained -= slabSize;
}

} // namespace brant::zero::slab
