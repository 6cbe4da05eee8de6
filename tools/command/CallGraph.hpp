// Who may call whom, by the records: what is called, and what may run in its place.
#pragma once

#include "Answers.hpp"
#include "Insight.hpp"

#include <cstdint>

namespace zelkor::command {

class CallGraph {
  public:
    enum class Why : std::uint8_t {
        Call,     ///< the function is named in the call
        Override, ///< a method that it overrides is
        Template, ///< something that was made from it is
        Pointer   ///< a pointer that may hold it is read
    };
    struct Edge {
        std::size_t node;  ///< the other end
        std::size_t named; ///< what the call names: the called end itself when `why` is Call, or a pointer
        Why why;
    };
    /// A node that was reached.
    struct Step {
        Edge edge;
        std::size_t from; ///< the node before it
        unsigned depth;   ///< from 1
    };

    /// With `exact` there are no edges but those of kind Call, and no open pointers.
    CallGraph(Insight const& insight, bool exact);

    [[nodiscard]] Use const& use(std::size_t node) const { return uses_[node]; }
    /// \returns the node of a function or variable; without records it is a node without edges.
    std::size_t node(brant::zero::ModelElement const& user);
    [[nodiscard]] std::size_t size() const noexcept { return uses_.size(); }
    [[nodiscard]] std::vector<Edge> const& callees(std::size_t node) const { return callees_[node]; }
    [[nodiscard]] std::vector<Edge> const& callers(std::size_t node) const { return callers_[node]; }
    /// \returns the pointers to functions that a node reads and of which the model does not tell all that
    /// they may hold.
    [[nodiscard]] std::vector<zelkor::ast::Variable> const& openPointers(std::size_t node) const {
        return openPointers_[node];
    }

    /// Breadth first, so that each node is reached by a shortest way from one of the starts; a start is part
    /// of it only when it is reached from one. \returns at most one step per node, nearest first.
    [[nodiscard]] std::vector<Step> reach(std::vector<std::size_t> const& starts, bool forward,
                                          unsigned depth) const;

  private:
    void connect(std::size_t caller, Edge const& edge);
    void connectByOtherNames(std::size_t caller, Insight const& insight);

    std::vector<Use> uses_;
    std::unordered_map<brant::zero::ModelElementImpl const*, std::size_t> nodes_;
    std::vector<std::vector<Edge>> callees_;
    std::vector<std::vector<Edge>> callers_;
    std::vector<std::vector<zelkor::ast::Variable>> openPointers_;
};

/// \returns the word that records and exported graphs use: "calls", "overrides", "template", "pointer".
[[nodiscard]] char const* relationName(CallGraph::Why why);

/// Adds what has to be known about the calls out of these nodes: which pointers may lead further.
void noteOpenPointers(CallGraph const& graph, std::vector<std::size_t> const& nodes, Section& section);
/// Adds that a function, called `name`, tells not all that it does when it stands for a template.
void notePattern(zelkor::ast::Function const& function, std::string const& name, Section& section);
/// Adds that pointers may lead to the node, called `name`, when its address is taken.
void noteTakenAddress(CallGraph const& graph, std::size_t node, std::string const& name, Section& section);

/// \returns who takes the address of a symbol, and which variables point at it.
[[nodiscard]] Section addressTakers(CallGraph const& graph, zelkor::ast::Symbol const& symbol,
                                    std::string const& heading);

} // namespace zelkor::command
