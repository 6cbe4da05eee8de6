// From a word on the command line to elements of a model: the one place where names are resolved.
#pragma once

#include "Verbs.hpp"

#include <functional>
#include <string>
#include <vector>

namespace zelkor::command {

/// What a word stands for, and when it stands for nothing, which names are like it.
struct Lookup {
    std::vector<brant::zero::ModelElement> elements; ///< in the order of the model
    std::vector<std::string> nearest;                ///< at most five, the best first
};

/// Looks for an identity, else for all symbols, namespaces and macros whose qualified name is `word`, else
/// for those whose simple name it is. Linear in the size of the model.
[[nodiscard]] Lookup lookUp(zelkor::ast::Ast const& ast, std::string const& word);

/// Calls `visit` for an element and for all that it contains, an element before its contents. Placeholders
/// are left out.
void forEachBelow(brant::zero::ModelElement const& root,
                  std::function<void(brant::zero::ModelElement const&)> const& visit);

/// Says on standard error that there is no `word`, and which names are near. \returns the exit code for it.
int reportMissing(std::string const& word, Lookup const& lookup);

/// \returns the simple name of a symbol, namespace or macro, or an empty text.
[[nodiscard]] std::string simpleName(brant::zero::ModelElement const& element);
/// \returns the name from the outermost scope inward; of what lies in no scope the simple name.
[[nodiscard]] std::string qualifiedName(brant::zero::ModelElement const& element);

/// Text as a JSON string with its quotes. A byte that is no UTF-8 becomes the escape of U+DC00 plus the byte.
[[nodiscard]] std::string jsonText(std::string const& text);

} // namespace zelkor::command
