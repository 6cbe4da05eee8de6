/// \file
/// Names a piece of work for whoever watches it.
#pragma once

#include "brant/zero/Export.hpp"

#include <string>
#include <utility>

namespace brant::zero::log {

/// A named span. The kernel writes no log of its own: an embedder that does takes the name from here.
class ZELKOR_API Span {
  public:
    static Span create(std::string name) { return Span(std::move(name)); }
    [[nodiscard]] std::string const& name() const noexcept { return name_; }

  private:
    explicit Span(std::string name) noexcept : name_(std::move(name)) {}
    std::string name_;
};

} // namespace brant::zero::log
