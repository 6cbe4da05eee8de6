// Names, types and signatures as text, each beside the same steps without text.
#pragma once

#include "Stage.hpp"

#include <vector>

namespace zelkor::bench {

/// types.print and types.walk, names.print and names.walk, signatures.print.
std::vector<Workload> nameWorkloads();

} // namespace zelkor::bench
