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

/// Looks for an identity; else for all symbols, namespaces and macros whose qualified name is `word`, for
/// parameters and the like only when it is a qualified one; else for functions whose signature it is; else
/// for what has `word` as its simple name or as the end of its qualified one. Linear in the size of the
/// model. \throws UsageError for an empty word.
[[nodiscard]] Lookup lookUp(zelkor::ast::Ast const& ast, std::string const& word);

/// \returns what a word names, as far as it `fits`: a template replaced by the symbol that stands for it,
/// each element once. Empty when the word names nothing; that was told on standard error. \throws UsageError
/// when nothing that it names fits:
/// "'x' is a Variable and has no callers", with `what` as the last word, and how to see what is inside.
[[nodiscard]] std::vector<brant::zero::ModelElement>
subjects(zelkor::ast::Ast const& ast, std::string const& word,
         std::function<bool(brant::zero::ModelElement const&)> const& fits, char const* what);

/// Calls `visit` for an element and for all that it contains, an element before its contents. Placeholders
/// are left out.
void forEachBelow(brant::zero::ModelElement const& root,
                  std::function<void(brant::zero::ModelElement const&)> const& visit);

/// \returns what an element contains, in order, placeholders left out.
[[nodiscard]] std::vector<brant::zero::ModelElement> childrenOf(brant::zero::ModelElement const& element);

/// The same for all elements of a model.
void forEachElement(zelkor::ast::Ast const& ast,
                    std::function<void(brant::zero::ModelElement const&)> const& visit);

/// Looks for files by identity or path, whole or its end behind a `/`.
[[nodiscard]] Lookup lookUpFiles(zelkor::ast::Ast const& ast, std::string const& word);
/// \returns whether a path is `word`, ends with it behind a `/`, or lies in the folder `word`.
[[nodiscard]] bool isPathOf(std::string const& word, std::string const& path);

/// Says on standard error that there is no `word`, and which names are near. \returns the exit code for it.
int reportMissing(std::string const& word, Lookup const& lookup);

/// \returns whether the element lies inside of a function or is a parameter of one or of a template, as seen
/// from `root`, or from the model when that is null.
[[nodiscard]] bool isLocal(brant::zero::ModelElement const& element,
                           brant::zero::ModelElement const& root = {});
/// \returns whether it is one of the hundreds of macros that the front end defines by itself.
bool isPredefined(brant::zero::ModelElement const& element);
/// \returns whether the element is a symbol, a namespace or a macro.
[[nodiscard]] bool hasName(brant::zero::ModelElement const& element);
/// \returns the simple name of a symbol, namespace or macro, or an empty text.
[[nodiscard]] std::string simpleName(brant::zero::ModelElement const& element);
/// \returns the name from the outermost scope inward; of what lies in no scope the simple name.
[[nodiscard]] std::string qualifiedName(brant::zero::ModelElement const& element);

} // namespace zelkor::command
