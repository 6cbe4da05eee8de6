/// \file
/// The rules of search once more, written for the reader: recursion over handles, every name written out.
#pragma once

#include "names/NameSupport.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace testsearch {

namespace za = zelkor::ast;
namespace zt = zelkor::ast::types;
using za::FinderOptions;
using za::NameFinderKind;

/// A mistake that the plain rules make on purpose, so that a comparison can be seen to find it.
enum class Fault {
    None,
    NameNeedsByteInFront, ///< takes a qualified name only for longer than the simple one
    NameEndsText,         ///< takes a qualified name only when the simple one ends it, arguments or not
    SignatureHoldsName,   ///< takes the signature of any symbol only when its name stands in it
    DeclarationIsEnough,  ///< takes a declared position for a defined one
    StdByName,
    SkipsOnlySymbol,    ///< looks into the scope of a symbol from a system header
    NamespacesFirst,    ///< looks into namespaces before symbols
    InsideBehindScope,  ///< looks into the scopes of symbols behind all symbols
    EntersFunctions,    ///< looks into the scopes of functions
    OddStrategyIsName,  ///< takes an unknown strategy for the simple name
    SubclassesAlways,   ///< takes subclasses when only the class is wanted
    RemovesDuplicates,  ///< of equal names only the first
    EmptyNameIsCompared ///< takes no symbol with a name for an empty one
};

struct Question {
    za::Scope start;
    brant::zero::meta::Class wanted;
    std::string name;
    FinderOptions options;
};

[[nodiscard]] std::vector<za::Symbol> plainSearch(Question const& question, Fault fault = Fault::None);
[[nodiscard]] std::vector<za::Symbol> search(Question const& question);
/// Everything but the start.
std::ostream& operator<<(std::ostream& out, Question const& question);

/// \returns what a strategy compares.
[[nodiscard]] std::string nameFor(za::Symbol const& symbol, NameFinderKind strategy);
/// \returns the qualified names, each with a blank behind it.
[[nodiscard]] std::string namesOf(std::vector<za::Symbol> const& symbols);

} // namespace testsearch
