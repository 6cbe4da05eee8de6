/// \file
/// Whether a symbol has a name, told without writing the names of symbols that cannot have it.
#pragma once

#include "Names.hpp"

#include "zelkor/ast/Enums.hpp"

#include <string>
#include <utility>

namespace zelkor::ast::names {

/// Compares what `strategy` names with one text, byte by byte: `Name`, `generateSignature` or, for any other
/// number, `getFullyQualifiedName`. An empty text fits every symbol.
class NameTest {
  public:
    NameTest(std::string wanted, NameFinderKind strategy) : wanted_(std::move(wanted)), strategy_(strategy) {}

    /// Writes the full text only where the symbol's own name is in the right place of the wanted one.
    [[nodiscard]] bool operator()(Symbol::Impl const& symbol) const;

  private:
    std::string wanted_;
    NameFinderKind strategy_;
};

} // namespace zelkor::ast::names
