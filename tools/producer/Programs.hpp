// Keeps apart the programs of one compile database: tests, examples and tools that each define `main`,
// `usage` or `struct options` for themselves.
#pragma once

#include "Facts.hpp"

#include <functional>

namespace zelkor::producer {

using Renaming = IdMap<Id>;

// What of `unit` must not be taken for what `known` answers for the same identity, since the two cannot stand
// in one program: with what stands in it, and the types and instances made from it. The identities it gets
// depend on the file of the definition. `mainFiles` are those of the units so far and of this one.
Renaming findRivals(UnitFacts const& unit, std::function<Entity const*(Id const&)> const& known,
                    IdSet const& mainFiles);

// Gives everything that `renaming` names its new identity, wherever the unit mentions it.
void rename(UnitFacts& unit, Renaming const& renaming);

} // namespace zelkor::producer
