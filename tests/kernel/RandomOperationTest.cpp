// Random operations, in nested levels that are committed or abandoned at random.

#include "kernel/RandomWalk.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

using testmodel::RandomWalk;

namespace {

/// More seeds than the usual ones by the environment: ZELKOR_RANDOM_SEEDS, and steps by ZELKOR_RANDOM_STEPS.
std::size_t setting(char const* name, std::size_t usual) {
    char const* const text = std::getenv(name);
    return text == nullptr ? usual : std::strtoul(text, nullptr, 10);
}

void print(char const* what, std::map<std::string, std::size_t> const& counts) {
    std::cout << what << ':';
    for (auto const& [name, count] : counts)
        std::cout << "\n  " << count << ' ' << name;
    std::cout << '\n';
}

} // namespace

TEST(RandomOperation, AbandonedLevelsLeaveNoTrace) {
    std::map<std::string, std::size_t> counts;
    std::map<std::string, std::size_t> refusals;
    std::size_t const seeds = setting("ZELKOR_RANDOM_SEEDS", 3);
    for (std::size_t seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        RandomWalk walk(seed);
        walk.run(setting("ZELKOR_RANDOM_STEPS", 2000));
        for (auto const& [name, count] : walk.counts())
            counts[name] += count;
        for (auto const& [name, count] : walk.refusals())
            refusals[name] += count;
    }
    print("operations", counts);
    print("refused", refusals);
    for (std::string const& name : RandomWalk::operationNames())
        EXPECT_GT(counts[name], 0u) << name;
    for (char const* const message :
         {"UniquenessConstraint", "CannotAddIncompatibleTypes", "CannotCastIncompatibleTypes",
          "CannotCreateCrossModelAssociation", "CircularContainment", "CannotAddSecondObject"})
        EXPECT_GT(refusals[message], 0u) << message;
}
