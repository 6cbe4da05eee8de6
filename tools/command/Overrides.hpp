// Which virtual method overrides which. The model does not store it: it follows from names, parameters and
// bases.
#pragma once

#include <zelkor/ast.hpp>

#include <unordered_map>
#include <vector>

namespace zelkor::command {

class Overrides {
  public:
    /// Linear in the methods of classes with bases, times the methods of their bases.
    explicit Overrides(zelkor::ast::Ast const& ast);

    /// \returns the methods that a call of `method` may run in its place, at any depth of derivation, in the
    /// order of the model.
    [[nodiscard]] std::vector<zelkor::ast::Function> const& of(zelkor::ast::Function const& method) const;

  private:
    void addMethod(zelkor::ast::types::Method const& method);

    std::unordered_map<brant::zero::ModelElementImpl const*, std::vector<zelkor::ast::Function>> overriders_;
};

/// \returns the direct bases that are known as classes, typedefs resolved.
[[nodiscard]] std::vector<zelkor::ast::types::StructType>
directBases(zelkor::ast::types::StructType const& type);

} // namespace zelkor::command
