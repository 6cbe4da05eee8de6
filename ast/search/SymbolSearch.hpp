/// \file
/// The walk behind `Scope::findSymbolByMetaClassAndName`.
#pragma once

#include "zelkor/ast/FinderOptions.hpp"
#include "zelkor/ast/Scope.hpp"

#include <string>
#include <vector>

namespace zelkor::ast::search {

/// \returns the symbols of a class and a name in `start` and, as `options` say, below it: depth first in
/// stored order, a symbol's own scope right behind it. A null class fits nothing, an empty name everything.
/// Linear in the symbols walked, in a loop: scopes may be nested as deep as memory allows.
[[nodiscard]] std::vector<Symbol> findSymbols(Scope::Impl const& start,
                                              ::brant::zero::meta::Class const& wanted, std::string name,
                                              FinderOptions const& options);

} // namespace zelkor::ast::search
