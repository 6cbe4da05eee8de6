/// \file
/// A random model for queries, and the plain walk that they are compared with.
#pragma once

#include "names/RandomModel.hpp"

#include <cstdint>
#include <vector>

namespace querytest {

namespace za = zelkor::ast;
namespace zt = zelkor::ast::types;

/// A random model with a project, files and positions.
class Sample : public testnames::RandomModel {
  public:
    explicit Sample(std::uint32_t seed);

    za::Ast const& ast = m.ast;
    za::Scope unit = scopes().front();
    std::vector<za::source::SourceFile> files;

  private:
    void place(za::source::LocatedObject const& object);
};

/// \returns all elements below one, containers first, by the run-time description alone.
std::vector<brant::zero::ModelElement> elementsBelow(brant::zero::ModelElement const& element);
/// \returns all elements of a model in the same order.
std::vector<brant::zero::ModelElement> elementsOf(brant::zero::Model const& model);

} // namespace querytest
