// The changes that the transaction workloads make: names of symbols and lines of positions in turn, at random
// places.
#pragma once

#include "Identity.hpp"

#include <string>

namespace zelkor::bench {

template <class SetName, class SetLine>
void changeAll(std::uint64_t seed, unsigned changes, std::size_t symbols, std::size_t positions,
               SetName&& setName, SetLine&& setLine) {
    Random random(seed + 1);
    for (unsigned at = 0; at < changes; ++at) {
        if (at % 2 == 0)
            setName(random.below(static_cast<unsigned>(symbols)), "renamed" + std::to_string(at));
        else
            setLine(random.below(static_cast<unsigned>(positions)), 5000 + at);
    }
}

} // namespace zelkor::bench
