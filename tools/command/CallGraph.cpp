#include "CallGraph.hpp"

#include "Overrides.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;

char const* relationName(CallGraph::Why why) {
    switch (why) {
    case CallGraph::Why::Override:
        return "overrides";
    case CallGraph::Why::Template:
        return "template";
    default:
        return "calls";
    }
}

CallGraph::CallGraph(za::Ast const& ast, Insight const& insight) {
    for (FunctionUse const& use : insight.functions())
        uses_[node(use.function)] = use;
    Overrides const overrides(ast);
    std::size_t const recorded = uses_.size();
    // What is named comes before what may run in its place, which a call may name as well.
    for (std::size_t caller = 0; caller < recorded; ++caller)
        for (std::size_t i = 0; i < uses_[caller].calls.size(); ++i) {
            std::size_t const called = node(za::Function(uses_[caller].calls[i]));
            connect(caller, {called, called, Why::Call});
        }
    for (std::size_t caller = 0; caller < recorded; ++caller)
        for (std::size_t i = 0; i < uses_[caller].calls.size(); ++i) {
            za::Function const named = uses_[caller].calls[i];
            std::size_t const at = node(named);
            if (za::Function const pattern = uses_[at].isBodyKnown ? za::Function() : patternOf(named))
                connect(caller, {node(pattern), at, Why::Template});
            for (za::Function const& method : overrides.of(named))
                connect(caller, {node(method), at, Why::Override});
        }
}

std::size_t CallGraph::node(za::Function const& function) {
    auto const [place, isNew] = nodes_.emplace(function.get(), uses_.size());
    if (isNew) {
        uses_.push_back({function});
        callees_.emplace_back();
        callers_.emplace_back();
    }
    return place->second;
}

void CallGraph::connect(std::size_t caller, Edge const& edge) {
    std::vector<Edge>& edges = callees_[caller];
    bool const known = std::any_of(edges.begin(), edges.end(),
                                   [&](Edge const& other) { return other.function == edge.function; });
    if (known) return;
    edges.push_back(edge);
    callers_[edge.function].push_back({caller, edge.named, edge.why});
}

std::vector<CallGraph::Step> CallGraph::reach(std::size_t start, bool forward, unsigned depth) const {
    std::vector<Step> steps;
    std::vector<bool> seen(size());
    auto const expand = [&](std::size_t from, unsigned level) {
        for (Edge const& edge : (forward ? callees_ : callers_)[from]) {
            if (seen[edge.function]) continue;
            seen[edge.function] = true;
            steps.push_back({edge, from, level});
        }
    };
    if (depth > 0) expand(start, 1);
    for (std::size_t i = 0; i < steps.size() && steps[i].depth < depth; ++i)
        if (steps[i].edge.function != start) expand(steps[i].edge.function, steps[i].depth + 1);
    return steps;
}

} // namespace zelkor::command
