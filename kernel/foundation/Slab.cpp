#include "brant/zero/Slab.hpp"

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define ZELKOR_AST_SYSTEM_ALLOCATOR
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZELKOR_AST_SYSTEM_ALLOCATOR
#endif
#endif

#ifdef ZELKOR_AST_SYSTEM_ALLOCATOR

namespace brant::zero::slab {

void* allocate(std::size_t size) {
    return ::operator new(size);
}
void deallocate(void* block, std::size_t) noexcept {
    ::operator delete(block);
}
void setRetention(std::size_t) noexcept {}
void trim() noexcept {}
Usage usage() noexcept {
    return {0, 0};
}
bool usesSystemAllocator() noexcept {
    return true;
}

} // namespace brant::zero::slab

#else

#include "SlabPool.hpp"

namespace brant::zero::slab {

namespace {

constexpr std::size_t step = 16;
constexpr std::size_t classCount = largestBlock / step;

constexpr std::size_t classOf(std::size_t size) {
    return (size - (size != 0)) / step;
}
constexpr std::size_t blockSizeOf(std::size_t index) {
    return (index + 1) * step;
}

// Stands where a heap has no slab to allocate from: nothing free, nothing fresh.
constinit Slab noSlab{};

} // namespace

/// The slabs of one thread. When the thread ends, the heap waits in the pool for another thread to take it
/// over with all its slabs; heaps are never deleted, as blocks may come back to them at any time.
struct Heap {
    Slab* current[classCount];
    Slab* withRoom[classCount] = {};
    Heap* nextOrphan = nullptr;

    /// Blocks freed by other threads.
    alignas(64) std::atomic<Block*> returned{nullptr};
    std::atomic<unsigned> returnedToOrphan{0};
    std::atomic<bool> orphaned{false};

    constexpr Heap() : current{} {
        for (Slab*& slab : current)
            slab = &noSlab;
    }
};

namespace {

constinit Heap noHeap;

// As small as can be and reached without a call: see the generator of identities.
[[gnu::tls_model("initial-exec")]] constinit thread_local Heap* heapOfThread = &noHeap;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool threadEnded = false;

/// How many blocks may come back to an orphan before the thread that frees them puts them away.
constexpr unsigned orphanBatch = 1024;

void attach(Heap& heap, Slab& slab) noexcept {
    Slab*& head = heap.withRoom[classOf(slab.blockSize)];
    slab.attached = true;
    slab.previous = nullptr;
    slab.next = head;
    if (head) head->previous = &slab;
    head = &slab;
}

void detach(Heap& heap, Slab& slab) noexcept {
    (slab.previous ? slab.previous->next : heap.withRoom[classOf(slab.blockSize)]) = slab.next;
    if (slab.next) slab.next->previous = slab.previous;
}

/// Puts `slab`, which has got a block back, where it belongs. True when it is empty and out of the heap.
bool settle(Heap& heap, Slab& slab) noexcept {
    if (heap.current[classOf(slab.blockSize)] == &slab) return false;
    if (slab.used == 0) {
        if (slab.attached) detach(heap, slab);
        return true;
    }
    if (!slab.attached) attach(heap, slab);
    return false;
}

void put(Slab& slab, Block* block) noexcept {
    block->next = slab.free;
    slab.free = block;
    --slab.used;
}

void* get(Slab& slab) noexcept {
    if (Block* const block = slab.free) {
        slab.free = block->next;
        ++slab.used;
        return block;
    }
    if (slab.fresh != slab.end) {
        void* const block = slab.fresh;
        slab.fresh += slab.blockSize;
        ++slab.used;
        return block;
    }
    return nullptr;
}

/// Puts away what other threads have freed. The caller holds the pool's mutex.
void collect(Pool& pool, Heap& heap) noexcept {
    Block* block = heap.returned.exchange(nullptr, std::memory_order_acquire);
    while (block) {
        Block* const next = block->next;
        Slab& slab = slabOf(block);
        put(slab, block);
        if (settle(heap, slab)) pool.release(slab);
        block = next;
    }
}

/// The caller holds the pool's mutex.
void collectOrphans(Pool& pool) noexcept {
    for (Heap* heap = pool.orphans; heap; heap = heap->nextOrphan)
        if (heap->returned.load(std::memory_order_relaxed)) collect(pool, *heap);
}

Heap& adoptHeap() {
    Pool& pool = Pool::instance();
    {
        std::lock_guard lock(pool.mutex);
        if (Heap* const heap = pool.orphans) {
            pool.orphans = heap->nextOrphan;
            heap->orphaned.store(false, std::memory_order_relaxed);
            return *heap;
        }
    }
    return *new Heap;
}

void abandonHeap(Heap& heap) noexcept {
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    for (Slab*& current : heap.current) {
        Slab& slab = *current;
        current = &noSlab;
        if (&slab == &noSlab) continue;
        if (slab.used == 0)
            pool.release(slab);
        else if (slab.free || slab.fresh != slab.end)
            attach(heap, slab);
        else
            slab.attached = false;
    }
    collect(pool, heap);
    heap.orphaned.store(true, std::memory_order_relaxed);
    heap.nextOrphan = pool.orphans;
    pool.orphans = &heap;
}

struct ThreadEnd {
    bool armed = false;

    ~ThreadEnd() {
        threadEnded = true;
        Heap& heap = *heapOfThread;
        heapOfThread = &noHeap;
        if (&heap != &noHeap) abandonHeap(heap);
    }
};
thread_local ThreadEnd threadEnd;

/// Finds room where `heap`'s current slab has none left.
void* refill(Heap& heap, std::size_t index) {
    Pool& pool = Pool::instance();
    Slab*& current = heap.current[index];
    if (heap.returned.load(std::memory_order_relaxed)) {
        std::lock_guard lock(pool.mutex);
        collect(pool, heap);
        if (void* const block = get(*current)) return block;
    }
    Slab* slab = heap.withRoom[index];
    if (slab) {
        detach(heap, *slab);
    } else {
        std::lock_guard lock(pool.mutex);
        collectOrphans(pool);
        slab = &pool.take(blockSizeOf(index));
        slab->owner = &heap;
        slab->attached = true;
    }
    if (current != &noSlab) current->attached = false;
    current = slab;
    return get(*slab);
}

[[gnu::noinline]] void* allocateSlow(std::size_t index) {
    if (heapOfThread != &noHeap) return refill(*heapOfThread, index);
    Heap& heap = adoptHeap();
    if (!threadEnded) {
        threadEnd.armed = true; // the first use of it registers its destructor
        heapOfThread = &heap;
        return refill(heap, index);
    }
    // A destructor of another thread-local object allocates after ours has run.
    struct Borrowed {
        Heap& heap;
        ~Borrowed() { abandonHeap(heap); }
    } const borrowed{heap};
    return refill(heap, index);
}

[[gnu::noinline]] void settleSlow(Slab& slab) noexcept {
    if (!settle(*heapOfThread, slab)) return;
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    pool.release(slab);
}

[[gnu::noinline]] void returnToOwner(Heap& owner, Block* block) noexcept {
    block->next = owner.returned.load(std::memory_order_relaxed);
    while (!owner.returned.compare_exchange_weak(block->next, block, std::memory_order_release,
                                                 std::memory_order_relaxed)) {
    }
    if (!owner.orphaned.load(std::memory_order_relaxed)) return;
    if (owner.returnedToOrphan.fetch_add(1, std::memory_order_relaxed) % orphanBatch != orphanBatch - 1)
        return;
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    collectOrphans(pool);
}

} // namespace

void* allocate(std::size_t size) {
    if (size > largestBlock) return ::operator new(size);
    std::size_t const index = classOf(size);
    if (void* const block = get(*heapOfThread->current[index])) return block;
    return allocateSlow(index);
}

void deallocate(void* block, std::size_t size) noexcept {
    if (!block) return;
    if (size > largestBlock) return ::operator delete(block);
    Slab& slab = slabOf(block);
    auto* const freed = static_cast<Block*>(block);
    if (slab.owner != heapOfThread) return returnToOwner(*slab.owner, freed);
    put(slab, freed);
    if (slab.used == 0 || !slab.attached) [[unlikely]]
        settleSlow(slab);
}

void setRetention(std::size_t bytes) noexcept {
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    pool.setRetention(bytes);
    pool.shrink(bytes);
}

void trim() noexcept {
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    collectOrphans(pool);
    pool.shrink(0);
}

Usage usage() noexcept {
    Pool& pool = Pool::instance();
    std::lock_guard lock(pool.mutex);
    return pool.getUsage();
}

bool usesSystemAllocator() noexcept {
    return false;
}

} // namespace brant::zero::slab

#endif
