// Classes of the model by the names that people type.
#pragma once

#include <brant/zero/meta/Class.hpp>

#include <string>
#include <vector>

namespace zelkor::command {

/// \returns the class of that simple or dotted name, one of `bases` or a subclass. \throws UsageError when
/// there is none; it names the nearest.
[[nodiscard]] brant::zero::meta::Class classNamed(std::string const& word,
                                                  std::vector<brant::zero::meta::Class> const& bases);

} // namespace zelkor::command
