// `zelkor reads` and `writes`: of a variable the functions that do so, of a function the variables.

#include "Answers.hpp"
#include "CallGraph.hpp"

#include <algorithm>
#include <unordered_set>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

/// The one thing in which the two verbs differ.
struct Access {
    char const* verb;    ///< "reads", also what a function does
    char const* plural;  ///< "read", what functions do
    char const* passive; ///< "read" or "written"
    char const* other;   ///< what is said when the function does the other thing too
    std::vector<za::Variable> FunctionUse::*mine;
    std::vector<za::Variable> FunctionUse::*theirs;
};
constexpr Access reading{"reads", "read", "read", "and writes it", &FunctionUse::reads, &FunctionUse::writes};
constexpr Access writing{"writes",           "write", "written", "and reads it", &FunctionUse::writes,
                         &FunctionUse::reads};

bool holds(std::vector<za::Variable> const& variables, za::Variable const& variable) {
    return std::find(variables.begin(), variables.end(), variable) != variables.end();
}

/// The row of `element`: a use of `variable` by the function `use`, or by what it calls.
Row rowOf(ModelElement const& element, FunctionUse const& use, za::Variable const& variable,
          Access const& access, unsigned depth, za::Function const& via) {
    bool const both = holds(use.*access.theirs, variable);
    Row row{element, {}, both ? access.other : ""};
    row.members.text("relation", access.verb).text("access", both ? "both" : access.plural);
    row.members.number("depth", depth);
    if (depth > 1) {
        row.note += (row.note.empty() ? "" : "; ") + std::string("through ") + qualifiedName(via);
        row.members.text("via", via->identifier());
    }
    return row;
}

/// Functions that do it themselves, then those that call them.
Section usersOf(CallGraph& graph, Insight const& insight, za::Variable const& variable, Access const& access,
                unsigned depth) {
    Section section{variable, title(variable) + " is " + access.passive + " by", {}};
    section.nothing = "no function in the model " + std::string(access.verb) + ' ' + title(variable);
    std::vector<bool> seen(graph.size());
    std::vector<std::size_t> direct;
    for (std::size_t i = 0; i < graph.size(); ++i)
        if (holds(graph.use(i).*access.mine, variable)) {
            seen[i] = true;
            direct.push_back(i);
            section.rows.push_back(rowOf(graph.use(i).function, graph.use(i), variable, access, 1, {}));
        }
    sortByPlace(section.rows);
    std::vector<Row> callers;
    for (std::size_t const user : direct)
        for (CallGraph::Step const& step : graph.reach(user, false, depth - 1))
            if (!seen[step.edge.function]) {
                seen[step.edge.function] = true;
                za::Function const caller = graph.use(step.edge.function).function;
                callers.push_back(rowOf(caller, graph.use(user), variable, access, step.depth + 1,
                                        graph.use(step.from).function));
            }
    sortByPlace(callers);
    section.rows.insert(section.rows.end(), callers.begin(), callers.end());
    auto const record = insight.recordOf(variable);
    bool const outside = record && (access.verb == reading.verb ? record.getIsRead() : record.getIsWritten());
    if (outside && section.rows.empty())
        section.notes.push_back(title(variable) + " is " + access.passive +
                                " outside of functions, such as in an initializer");
    return section;
}

/// What a function uses itself, then what the functions that it calls do.
Section usesOf(CallGraph& graph, za::Function const& function, Access const& access, unsigned depth) {
    std::size_t const node = graph.node(function);
    Section section{function, title(function) + ' ' + access.verb, {}};
    section.nothing = graph.use(node).isBodyKnown
                          ? title(function) + ' ' + access.verb + " no variable"
                          : "the body of " + title(function) + " is not in the model; what it " +
                                access.verb + " is unknown";
    std::unordered_set<brant::zero::ModelElementImpl const*> seen;
    auto const add = [&](FunctionUse const& use, unsigned level) {
        for (za::Variable const& variable : use.*access.mine)
            if (seen.insert(variable.get()).second)
                section.rows.push_back(rowOf(variable, use, variable, access, level, use.function));
    };
    add(graph.use(node), 1);
    std::size_t unknown = 0;
    for (CallGraph::Step const& step : graph.reach(node, true, depth - 1)) {
        add(graph.use(step.edge.function), step.depth + 1);
        unknown += graph.use(step.edge.function).isBodyKnown ? 0 : 1;
    }
    if (unknown > 0)
        section.notes.push_back(
            "of the called functions without a body in the model: " + counted(unknown, "function") +
            "; the " + access.verb + " inside are unknown");
    return section;
}

int answerUses(Arguments const& arguments, Access const& access) {
    arguments.requireOperands({"FILE", "NAME"});
    unsigned const depth = depthOf(arguments, 1);
    za::Ast const ast = readModel(arguments.operands()[0]);
    auto const fits = [](ModelElement const& element) {
        return za::Function::cast(element) || za::Variable::cast(element);
    };
    std::vector<Section> sections;
    std::vector<ModelElement> const found = subjects(ast, arguments.operands()[1], fits, access.verb);
    if (!found.empty()) {
        Insight const insight(ast);
        CallGraph graph(ast, insight);
        for (ModelElement const& element : found)
            if (auto const variable = za::Variable::cast(element))
                sections.push_back(usersOf(graph, insight, variable, access, depth));
            else
                sections.push_back(usesOf(graph, za::Function::cast(element), access, depth));
    }
    return printAnswer(arguments, access.verb, sections);
}

} // namespace

int runReads(Arguments const& arguments) {
    return answerUses(arguments, reading);
}

int runWrites(Arguments const& arguments) {
    return answerUses(arguments, writing);
}

} // namespace zelkor::command
