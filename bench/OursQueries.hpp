// One question to the library, asked as a query and as loops written by hand.
#pragma once

#include "OursBuilder.hpp"
#include "Stage.hpp"

namespace zelkor::bench {

/// Each counts the inline functions with a parameter that is a pointer, checks the number against another
/// way, and takes a built model of the stage's plan.
void query(Stage& stage, za::Project const& project);
void queryByHandles(Stage& stage, za::Project const& project);
void queryByBodies(Stage& stage, za::Project const& project);

} // namespace zelkor::bench
