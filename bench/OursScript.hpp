// Single accesses as scripts make them, each beside the same access in C++.
#pragma once

#include "Stage.hpp"

#include <vector>

namespace zelkor::bench {

/// script.read, script.row, script.refer, script.call, script.write and their counterparts native.read,
/// native.refer, native.call, native.write: on at most 100,000 functions, per access.
std::vector<Workload> scriptWorkloads();

} // namespace zelkor::bench
