// Who may call whom, by the records: what is called, and what may run in its place.
#pragma once

#include "Insight.hpp"

#include <cstdint>

namespace zelkor::command {

class CallGraph {
  public:
    enum class Why : std::uint8_t {
        Call,     ///< the function is named in the call
        Override, ///< a method that it overrides is
        Template  ///< something that was made from it is
    };
    struct Edge {
        std::size_t function; ///< the other end
        std::size_t named;    ///< what the call names; the called end itself when `why` is Call
        Why why;
    };
    /// A function that was reached.
    struct Step {
        Edge edge;
        std::size_t from; ///< the function before it
        unsigned depth;   ///< from 1
    };

    CallGraph(zelkor::ast::Ast const& ast, Insight const& insight);

    [[nodiscard]] FunctionUse const& use(std::size_t function) const { return uses_[function]; }
    /// \returns the node of a function; a function without records is a node without edges.
    std::size_t node(zelkor::ast::Function const& function);
    [[nodiscard]] std::size_t size() const noexcept { return uses_.size(); }
    [[nodiscard]] std::vector<Edge> const& callees(std::size_t function) const { return callees_[function]; }
    [[nodiscard]] std::vector<Edge> const& callers(std::size_t function) const { return callers_[function]; }

    /// Breadth first, so that each function is reached by a shortest way; the start is part of it only when
    /// it reaches itself. \returns at most one step per function, nearest first.
    [[nodiscard]] std::vector<Step> reach(std::size_t start, bool forward, unsigned depth) const;

  private:
    void connect(std::size_t caller, Edge const& edge);

    std::vector<FunctionUse> uses_;
    std::unordered_map<brant::zero::ModelElementImpl const*, std::size_t> nodes_;
    std::vector<std::vector<Edge>> callees_;
    std::vector<std::vector<Edge>> callers_;
};

/// \returns the word that records and exported graphs use: "calls", "overrides", "template".
[[nodiscard]] char const* relationName(CallGraph::Why why);

} // namespace zelkor::command
