/// \file
/// A random model for queries, and the plain walk that they are compared with.
#pragma once

#include "zelkor/ast.hpp"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace querytest {

namespace za = zelkor::ast;
namespace zt = zelkor::ast::types;

/// Nested namespaces with functions, parameters, positions, structs with methods and members, types and
/// templates, drawn from a seed.
class Sample {
  public:
    explicit Sample(std::uint32_t seed, int scopes = 40);

    za::Ast ast;
    za::source::CompilationUnit unit;
    std::vector<zt::Type> types;
    std::vector<za::source::SourceFile> files;

  private:
    [[nodiscard]] unsigned draw(unsigned bound) {
        return std::uniform_int_distribution<unsigned>(0, bound - 1)(random_);
    }
    [[nodiscard]] std::string name();
    [[nodiscard]] zt::Type type() {
        return draw(8) == 0 ? zt::Type() : types[draw(static_cast<unsigned>(types.size()))];
    }
    void place(za::source::LocatedObject const& object);
    void fill(za::Function const& function);
    void fill(za::Scope const& scope);
    void addType(za::Scope const& scope);
    void addStruct(za::Scope const& scope);

    std::mt19937 random_;
};

/// \returns all elements below one, containers first, by the run-time description alone.
std::vector<brant::zero::ModelElement> elementsBelow(brant::zero::ModelElement const& element);
/// \returns all elements of a model in the same order.
std::vector<brant::zero::ModelElement> elementsOf(brant::zero::Model const& model);

} // namespace querytest
