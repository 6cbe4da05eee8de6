#include "CallGraph.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;

char const* relationName(CallGraph::Why why) {
    switch (why) {
    case CallGraph::Why::Override:
        return "overrides";
    case CallGraph::Why::Template:
        return "template";
    case CallGraph::Why::Pointer:
        return "pointer";
    default:
        return "calls";
    }
}

CallGraph::CallGraph(Insight const& insight, bool exact) {
    for (Use const& use : insight.uses())
        uses_[node(use.user)] = use;
    std::size_t const recorded = uses_.size();
    // What is named comes before what may run in its place, which a call may name as well.
    for (std::size_t caller = 0; caller < recorded; ++caller)
        for (std::size_t i = 0; i < uses_[caller].calls.size(); ++i) {
            std::size_t const called = node(za::Function(uses_[caller].calls[i]));
            connect(caller, {called, called, Why::Call});
        }
    for (std::size_t caller = 0; caller < recorded && !exact; ++caller)
        connectByOtherNames(caller, insight);
}

void CallGraph::connectByOtherNames(std::size_t caller, Insight const& insight) {
    Use const use = uses_[caller]; // a copy: nodes are added below
    for (za::Function const& named : use.calls) {
        std::size_t const at = node(named);
        if (za::Function const pattern = patternOf(named))
            connect(caller, {node(pattern), at, Why::Template});
        for (za::Function const& method : insight.overridersOf(named))
            connect(caller, {node(method), at, Why::Override});
    }
    for (za::Variable const& pointer : use.reads) {
        if (!isFunctionPointer(pointer)) continue;
        if (insight.mayHoldOthers(pointer)) openPointers_[caller].push_back(pointer);
        for (za::Function const& target : insight.functionsBehind(pointer))
            connect(caller, {node(target), node(pointer), Why::Pointer});
    }
}

std::size_t CallGraph::node(brant::zero::ModelElement const& user) {
    auto const [place, isNew] = nodes_.emplace(user.get(), uses_.size());
    if (isNew) {
        uses_.push_back({user});
        callees_.emplace_back();
        callers_.emplace_back();
        openPointers_.emplace_back();
    }
    return place->second;
}

void CallGraph::connect(std::size_t caller, Edge const& edge) {
    std::vector<Edge>& edges = callees_[caller];
    bool const known =
        std::any_of(edges.begin(), edges.end(), [&](Edge const& other) { return other.node == edge.node; });
    if (known) return;
    edges.push_back(edge);
    callers_[edge.node].push_back({caller, edge.named, edge.why});
}

std::vector<CallGraph::Step> CallGraph::reach(std::vector<std::size_t> const& starts, bool forward,
                                              unsigned depth) const {
    std::vector<Step> steps;
    std::vector<bool> seen(size());
    std::vector<bool> expanded(size());
    auto const expand = [&](std::size_t from, unsigned level) {
        if (expanded[from]) return;
        expanded[from] = true;
        for (Edge const& edge : (forward ? callees_ : callers_)[from]) {
            if (seen[edge.node]) continue;
            seen[edge.node] = true;
            steps.push_back({edge, from, level});
        }
    };
    if (depth == 0) return steps;
    for (std::size_t const start : starts)
        expand(start, 1);
    for (std::size_t i = 0; i < steps.size() && steps[i].depth < depth; ++i)
        expand(steps[i].edge.node, steps[i].depth + 1);
    return steps;
}

void noteOpenPointers(CallGraph const& graph, std::vector<std::size_t> const& nodes, Section& section) {
    std::vector<za::Variable> open;
    for (std::size_t const node : nodes)
        for (za::Variable const& pointer : graph.openPointers(node))
            if (std::find(open.begin(), open.end(), pointer) == open.end()) open.push_back(pointer);
    if (open.empty()) return;
    bool const isOne = open.size() == 1;
    std::string const first = qualifiedName(open.front());
    section.notes.push_back(
        "the model does not tell all that " +
        (isOne ? "the pointer to functions " + first
               : counted(open.size(), "pointer") + " to functions, such as " + first + ',') +
        " may hold; calls through " + (isOne ? "it" : "them") + " may be missing");
}

void notePattern(za::Function const& function, std::string const& name, Section& section) {
    if (isPattern(function))
        section.notes.push_back(name +
                                " stands for a template; what depends on the parameters of that is told "
                                "of its instantiations only");
}

void noteTakenAddress(CallGraph const& graph, std::size_t node, std::string const& name, Section& section) {
    if (graph.use(node).isAddressTaken)
        section.notes.push_back(
            "the address of " + name +
            " is taken; calls through pointers that the model cannot follow are not listed");
}

Section addressTakers(CallGraph const& graph, za::Symbol const& symbol, std::string const& heading) {
    Section section{symbol, heading};
    for (std::size_t i = 0; i < graph.size(); ++i) {
        Use const& use = graph.use(i);
        if (std::find(use.points.begin(), use.points.end(), symbol) == use.points.end()) continue;
        Row row{use.user, {}, za::Variable::cast(use.user) ? "points at it" : ""};
        row.members.text("relation", "address").number("depth", 1);
        section.rows.push_back(row);
    }
    sortByPlace(section.rows);
    return section;
}

} // namespace zelkor::command
