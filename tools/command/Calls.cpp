// `zelkor callers`, `callees` and `path`: who may call whom.

#include "Answers.hpp"
#include "CallGraph.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

std::string depthNote(CallGraph const& graph, CallGraph::Step const& step) {
    if (step.depth < 2) return {};
    return counted(step.depth, "call") + " away, through " + qualifiedName(graph.use(step.from).user);
}

std::string relationNote(CallGraph const& graph, CallGraph::Edge const& edge, bool forward) {
    std::string const named = qualifiedName(graph.use(edge.named).user);
    switch (edge.why) {
    case CallGraph::Why::Override:
        return forward ? "may be called: overrides " + named : "may call it: calls " + named;
    case CallGraph::Why::Template:
        return forward ? "pattern of the template behind " + named : "calls an instantiation, " + named;
    case CallGraph::Why::Pointer:
        return (forward ? "may be called: " : "may call it: ") + named + " may point at it";
    default:
        return {};
    }
}

Row rowOf(CallGraph const& graph, CallGraph::Step const& step, bool forward) {
    Use const& use = graph.use(step.edge.node);
    Row row{use.user};
    bool const isUnknown = forward && !use.isBodyKnown;
    for (std::string const& note : {std::string(za::Variable::cast(use.user) ? "in its initializer" : ""),
                                    relationNote(graph, step.edge, forward), depthNote(graph, step),
                                    std::string(isUnknown ? "its body is not in the model" : "")})
        if (!note.empty()) row.note += (row.note.empty() ? "" : "; ") + note;
    row.members.text("relation", relationName(step.edge.why)).number("depth", step.depth);
    if (step.depth > 1) row.members.text("via", graph.use(step.from).user->identifier());
    if (step.edge.why != CallGraph::Why::Call)
        row.members.text("named", graph.use(step.edge.named).user->identifier());
    row.members.flag("bodyKnown", use.isBodyKnown).flag("addressTaken", use.isAddressTaken);
    return row;
}

/// Nearest first; callers of one depth by place, callees in the order of the records.
std::vector<Row> rowsOf(CallGraph const& graph, std::vector<CallGraph::Step> const& steps, bool forward) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < steps.size();) {
        std::vector<Row> level;
        for (unsigned const depth = steps[i].depth; i < steps.size() && steps[i].depth == depth; ++i)
            level.push_back(rowOf(graph, steps[i], forward));
        if (!forward) sortByPlace(level);
        rows.insert(rows.end(), level.begin(), level.end());
    }
    return rows;
}

std::vector<Section> callersOf(CallGraph& graph, za::Function const& function, std::string const& name,
                               unsigned depth) {
    std::size_t const node = graph.node(function);
    Section calls{function, name + " is called by", rowsOf(graph, graph.reach({node}, false, depth), false)};
    calls.nothing = "nothing in the model calls " + name;
    noteTakenAddress(graph, node, name, calls);
    return {calls, addressTakers(graph, function, "the address of " + name + " is taken by")};
}

std::vector<Section> calleesOf(CallGraph& graph, za::Function const& function, std::string const& name,
                               unsigned depth) {
    std::size_t const node = graph.node(function);
    std::vector<CallGraph::Step> const steps = graph.reach({node}, true, depth);
    Section section{function, name + " calls", rowsOf(graph, steps, true)};
    section.nothing = graph.use(node).isBodyKnown
                          ? name + " calls no function" + (graph.openPointers(node).empty() ? "" : " by name")
                          : "the body of " + name + " is not in the model; what it calls is unknown";
    std::vector<std::size_t> entered{node};
    std::size_t unknown = 0;
    for (CallGraph::Step const& step : steps) {
        if (step.depth == depth) continue;
        entered.push_back(step.edge.node);
        unknown += graph.use(step.edge.node).isBodyKnown ? 0 : 1;
    }
    if (unknown > 0)
        section.notes.push_back("of these without a body in the model: " + counted(unknown, "function") +
                                "; the calls inside are unknown");
    notePattern(function, name, section);
    noteOpenPointers(graph, entered, section);
    return {section};
}

bool isFunction(ModelElement const& element) {
    return bool(za::Function::cast(element));
}

int answerCalls(Arguments const& arguments, std::string const& verb,
                std::vector<Section> (*sectionsOf)(CallGraph&, za::Function const&, std::string const&,
                                                   unsigned)) {
    arguments.requireOperands({"FILE", "NAME|UUID"});
    unsigned const depth = depthOf(arguments, 1);
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::vector<Section> sections;
    std::vector<ModelElement> const found = subjects(ast, arguments.operands()[1], isFunction, verb.c_str());
    if (!found.empty()) {
        CallGraph graph(Insight(ast), arguments.has("--exact"));
        std::vector<std::string> const names = namesOf(found);
        for (std::size_t i = 0; i < found.size(); ++i)
            for (Section& section : sectionsOf(graph, za::Function::cast(found[i]), names[i], depth))
                sections.push_back(std::move(section));
    }
    return printAnswer(arguments, verb, sections);
}

/// The steps that lead to `target`, the first one first; empty when none does.
std::vector<CallGraph::Step> wayTo(std::vector<CallGraph::Step> const& steps, std::size_t target) {
    std::vector<CallGraph::Step> way;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        if (step->edge.node == (way.empty() ? target : way.back().from) &&
            (way.empty() || step->depth + 1 == way.back().depth))
            way.push_back(*step);
    std::reverse(way.begin(), way.end());
    return way;
}

std::string howFar(CallGraph const& graph, std::vector<CallGraph::Step> const& steps) {
    if (steps.empty()) return "it calls nothing that is recorded";
    std::string text = "it reaches " + counted(steps.size(), "function") + ", at most " +
                       counted(steps.back().depth, "call") + " away";
    std::vector<std::string> unknown;
    for (CallGraph::Step const& step : steps)
        if (!graph.use(step.edge.node).isBodyKnown)
            unknown.push_back(qualifiedName(graph.use(step.edge.node).user));
    if (!unknown.empty())
        text += "; of these without a body in the model: " + counted(unknown.size(), "function") +
                ", such as " + unknown.front();
    return text;
}

/// One end of a path, as headings call it.
struct End {
    za::Function function;
    std::string name;
};

std::vector<End> endsOf(std::vector<ModelElement> const& functions) {
    std::vector<std::string> const names = namesOf(functions);
    std::vector<End> ends;
    for (std::size_t i = 0; i < functions.size(); ++i)
        ends.push_back({za::Function::cast(functions[i]), names[i]});
    return ends;
}

Section pathBetween(CallGraph& graph, End const& first, End const& last) {
    za::Function const& from = first.function;
    za::Function const& to = last.function;
    std::size_t const start = graph.node(from);
    std::size_t const target = graph.node(to);
    std::vector<CallGraph::Step> const steps = graph.reach({start}, true, unlimitedDepth);
    std::vector<CallGraph::Step> const way = wayTo(steps, target);
    Section section{from, first.name + " reaches " + last.name + " in " + counted(way.size(), "call")};
    section.nothing = "no calls lead from " + first.name + " to " + last.name + "; " + howFar(graph, steps);
    if (way.empty()) {
        std::vector<std::size_t> entered{start};
        for (CallGraph::Step const& step : steps)
            entered.push_back(step.edge.node);
        notePattern(from, first.name, section);
        noteOpenPointers(graph, entered, section);
        noteTakenAddress(graph, target, last.name, section);
        return section;
    }
    Row begin{from};
    begin.members.text("relation", "start").number("depth", 0);
    section.rows.push_back(begin);
    for (CallGraph::Step const& step : way) {
        Row row = rowOf(graph, step, true);
        row.note = relationNote(graph, step.edge, true);
        section.rows.push_back(row);
    }
    return section;
}

} // namespace

int runCallers(Arguments const& arguments) {
    return answerCalls(arguments, "callers", callersOf);
}

int runCallees(Arguments const& arguments) {
    return answerCalls(arguments, "callees", calleesOf);
}

int runPath(Arguments const& arguments) {
    arguments.requireOperands({"FILE", "FROM", "TO"});
    za::Ast const ast = readModel(arguments.operands()[0]);
    auto const starts = subjects(ast, arguments.operands()[1], isFunction, "calls");
    auto const ends = subjects(ast, arguments.operands()[2], isFunction, "callers");
    std::vector<Section> sections;
    if (!starts.empty() && !ends.empty()) {
        CallGraph graph(Insight(ast), arguments.has("--exact"));
        for (End const& from : endsOf(starts))
            for (End const& to : endsOf(ends))
                sections.push_back(pathBetween(graph, from, to));
    }
    return printAnswer(arguments, "path", sections);
}

} // namespace zelkor::command
