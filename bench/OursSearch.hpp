// Search by the library: by name, by signature, and the walk alone.
#pragma once

#include "OursBuilder.hpp"
#include "Stage.hpp"

namespace zelkor::bench {

/// By qualified name, everywhere.
void find(Stage& stage, za::Project const& project);
/// The same with the options as they are by default, which look at the file of each symbol.
void findByDefault(Stage& stage, za::Project const& project);
/// By signature: those of the functions of the same names.
void findBySignature(Stage& stage, za::Project const& project);
/// For a class that no symbol has: what the walk costs without names.
void findNothing(Stage& stage, za::Project const& project);

} // namespace zelkor::bench
