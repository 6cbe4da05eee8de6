// Slabs of the `tracked` floor: freed objects of a size class wait in a list for the next one of that class.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace zelkor::bench::floor {

class Slabs {
  public:
    static void* take(std::size_t size) {
        std::size_t const slot = (size + grain - 1) / grain;
        if (slot >= slots) return ::operator new(size);
        List& list = lists()[slot];
        if (!list.free) refill(list, slot * grain);
        Free* const taken = list.free;
        list.free = taken->next;
        return taken;
    }

    static void giveBack(void* object, std::size_t size) {
        std::size_t const slot = (size + grain - 1) / grain;
        if (slot >= slots) return ::operator delete(object);
        List& list = lists()[slot];
        list.free = new (object) Free{list.free};
    }

  private:
    static constexpr std::size_t grain = 16;
    static constexpr std::size_t slots = 32;
    static constexpr std::size_t slabSize = 64 * 1024;

    struct Free {
        Free* next;
    };
    struct List {
        Free* free = nullptr;
    };

    static std::array<List, slots>& lists() {
        thread_local std::array<List, slots> all;
        return all;
    }

    static void refill(List& list, std::size_t size) {
        char* const slab = static_cast<char*>(::operator new(slabSize));
        for (std::size_t at = slabSize / size; at-- > 0;)
            list.free = new (slab + at * size) Free{list.free};
    }
};

} // namespace zelkor::bench::floor
