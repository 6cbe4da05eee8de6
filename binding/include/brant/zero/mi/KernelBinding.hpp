/// \file
/// The kernel's own script classes.
#pragma once

#include "brant/zero/Export.hpp"

namespace brant::zero::mi {

/// Gives `brant.zero` (`ModelElement`, `Model`, `Transaction`) and `brant.zero.meta` (the classes of meta
/// objects) to the host. May be called again.
ZELKOR_API void registerKernelPackages();

} // namespace brant::zero::mi
