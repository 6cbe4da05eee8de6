#include <atomic>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "brant/zero/Slab.hpp"

namespace {

namespace slab = brant::zero::slab;

/// A block that knows what it should hold, so that overlapping blocks betray themselves.
struct Marked {
    unsigned char* memory;
    std::size_t size;
    unsigned char mark;

    Marked(std::size_t size, unsigned mark)
        : memory(static_cast<unsigned char*>(slab::allocate(size))), size(size),
          mark(static_cast<unsigned char>(mark)) {
        std::memset(memory, this->mark, size);
    }

    bool intact() const {
        for (std::size_t i = 0; i < size; ++i)
            if (memory[i] != mark) return false;
        return reinterpret_cast<std::uintptr_t>(memory) % 16 == 0;
    }

    void free() { slab::deallocate(memory, size); }
};

std::size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0, resident = 0;
    statm >> total >> resident;
    return resident * std::size_t(sysconf(_SC_PAGESIZE));
}

/// Allocates `megabytes` in small blocks, always two of a size, over nearly all sizes.
std::vector<Marked> fill(std::size_t megabytes) {
    std::vector<Marked> blocks;
    for (std::size_t bytes = 0, i = 0; bytes < megabytes << 20; ++i) {
        blocks.emplace_back(64 + i / 2 * 48 % 448, unsigned(i));
        bytes += blocks.back().size;
    }
    return blocks;
}

void freeAll(std::vector<Marked>& blocks) {
    std::size_t damaged = 0;
    for (Marked& block : blocks) {
        damaged += !block.intact();
        block.free();
    }
    EXPECT_EQ(damaged, 0u);
    blocks.clear();
}

TEST(Slab, BlocksOfEverySizeStandAlone) {
    std::vector<Marked> blocks;
    for (std::size_t size = 0; size <= slab::largestBlock + 100; ++size)
        for (int i = 0; i < 3; ++i)
            blocks.emplace_back(size, unsigned(blocks.size()));
    freeAll(blocks);
    slab::deallocate(nullptr, 32);
}

TEST(Slab, RandomTrafficKeepsBlocksIntact) {
    std::mt19937 random(7);
    std::vector<Marked> blocks;
    std::size_t damaged = 0;
    for (int round = 0; round < 200000; ++round) {
        // Waves of growth and decay, so that slabs fill up, empty and are taken again.
        bool const grow = random() % 100 < (round / 20000 % 2 == 0 ? 65u : 35u);
        if (grow || blocks.empty()) {
            blocks.emplace_back(random() % 560, random());
        } else {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            damaged += !blocks.back().intact();
            blocks.back().free();
            blocks.pop_back();
        }
    }
    EXPECT_EQ(damaged, 0u);
    freeAll(blocks);
}

TEST(Slab, FreedBlocksAreUsedAgain) {
    if (slab::usesSystemAllocator()) GTEST_SKIP() << "the system allocator serves the blocks";
    auto blocks = fill(16);
    std::size_t const full = slab::usage().inUse;
    for (int round = 0; round < 5; ++round) {
        // Every other block first: the slabs stay partly used and must take the next ones.
        for (std::size_t i = 0; i < blocks.size(); i += 2)
            blocks[i].free();
        for (std::size_t i = 0; i < blocks.size(); i += 2)
            blocks[i] = Marked(blocks[i].size, blocks[i].mark);
    }
    EXPECT_EQ(slab::usage().inUse, full);
    freeAll(blocks);
}

TEST(Slab, EmptySlabsAreKeptUpToTheRetention) {
    if (slab::usesSystemAllocator()) GTEST_SKIP() << "the system allocator serves the blocks";
    slab::trim();
    std::size_t const before = slab::usage().inUse;
    for (std::size_t kept : {std::size_t(0), std::size_t(8) << 20, std::size_t(1) << 30}) {
        slab::setRetention(kept);
        auto blocks = fill(48);
        EXPECT_GE(slab::usage().inUse, before + (std::size_t(44) << 20));
        freeAll(blocks);
        EXPECT_LE(slab::usage().retained, kept);
        EXPECT_GE(slab::usage().retained, std::min(kept, std::size_t(44) << 20));
        // One slab of each size may stay with the thread.
        EXPECT_LE(slab::usage().inUse, before + 33 * 65536);
        slab::trim();
        EXPECT_EQ(slab::usage().retained, 0u);
    }
    slab::setRetention(std::size_t(64) << 20);
}

TEST(Slab, TrimGivesMemoryBackToTheSystem) {
    if (slab::usesSystemAllocator()) GTEST_SKIP() << "the system allocator serves the blocks";
    auto blocks = fill(64);
    std::size_t const full = residentBytes();
    freeAll(blocks);
    slab::trim();
    EXPECT_LE(residentBytes() + (std::size_t(48) << 20), full);
}

TEST(Slab, BlocksOutliveTheirThread) {
    slab::trim();
    std::size_t const before = slab::usage().inUse;
    for (int round = 0; round < 10; ++round) {
        std::vector<Marked> blocks;
        std::thread([&blocks] { blocks = fill(8); }).join();
        freeAll(blocks);
    }
    slab::trim();
    // Nothing piles up with threads that come and go.
    EXPECT_LE(slab::usage().inUse, before + (std::size_t(1) << 20));
}

TEST(Slab, ManyThreadsComeAndGo) {
    std::mutex mutex;
    std::vector<Marked> shared;
    std::atomic<int> damaged{0};
    for (int wave = 0; wave < 5; ++wave) {
        std::vector<std::thread> threads;
        for (int t = 0; t < 6; ++t)
            threads.emplace_back([&, seed = unsigned(wave * 10 + t)] {
                std::mt19937 random(seed);
                for (int i = 0; i < 4000; ++i) {
                    Marked mine(1 + random() % 512, random());
                    std::lock_guard lock(mutex);
                    if (random() % 2 && !shared.empty()) std::swap(mine, shared[random() % shared.size()]);
                    if (random() % 8 == 0) {
                        shared.push_back(mine);
                    } else {
                        damaged += !mine.intact();
                        mine.free();
                    }
                }
            });
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(damaged, 0);
    freeAll(shared);
}

struct LateUser {
    std::vector<Marked> blocks;
    std::atomic<int>* intact = nullptr;

    ~LateUser() {
        for (unsigned i = 0; i < 1000; ++i)
            blocks.emplace_back(48, i);
        for (Marked& block : blocks) {
            *intact += block.intact();
            block.free();
        }
    }
};
thread_local LateUser lateUser;

TEST(Slab, DestructorsOfThreadLocalObjectsMayUseIt) {
    std::atomic<int> intact{0};
    slab::trim();
    std::size_t const before = slab::usage().inUse;
    // Built before the thread's first block, so destroyed after the allocator has closed the thread's books.
    for (int thread = 0; thread < 50; ++thread)
        std::thread([&intact] {
            lateUser.intact = &intact;
            for (unsigned i = 0; i < 1000; ++i)
                lateUser.blocks.emplace_back(48, i);
        }).join();
    EXPECT_EQ(intact, 50 * 2000);
    slab::trim();
    EXPECT_LE(slab::usage().inUse, before + (std::size_t(1) << 20));
}

TEST(Slab, WorksInAForkedChild) {
    if (slab::usesSystemAllocator()) GTEST_SKIP() << "that of a checker may not survive a fork";
    std::atomic<bool> stop{false};
    std::thread busy([&stop] {
        // Holds the lock of the slabs nearly all the time, from their very first use on.
        while (!stop)
            slab::trim();
    });
    for (int i = 0; i < 20; ++i) {
        pid_t const child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            alarm(20);
            std::size_t damaged = 0;
            for (unsigned n = 0; n < 5000; ++n) {
                Marked block(500, n);
                Marked const kept(400, n);
                damaged += !block.intact() || !kept.intact();
                block.free();
            }
            _exit(damaged == 0 ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    stop = true;
    busy.join();
}

} // namespace
