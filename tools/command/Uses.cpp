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
    std::vector<za::Variable> Use::*mine;
    std::vector<za::Variable> Use::*theirs;
    bool (za::codeinsight::VariableInfo::*flag)() const;
};
constexpr Access reading{"reads",
                         "read",
                         "read",
                         "and writes it",
                         &Use::reads,
                         &Use::writes,
                         &za::codeinsight::VariableInfo::getIsRead};
constexpr Access writing{"writes",
                         "write",
                         "written",
                         "and reads it",
                         &Use::writes,
                         &Use::reads,
                         &za::codeinsight::VariableInfo::getIsWritten};

bool holds(std::vector<za::Variable> const& variables, za::Variable const& variable) {
    return std::find(variables.begin(), variables.end(), variable) != variables.end();
}

/// The row of `element`, which uses `variable` or is it; `user` does so itself, `via` leads there.
Row rowOf(ModelElement const& element, Use const& user, za::Variable const& variable, Access const& access,
          unsigned depth, ModelElement const& via) {
    bool const both = holds(user.*access.mine, variable) && holds(user.*access.theirs, variable);
    Row row{element, {}, both ? access.other : ""};
    if (za::Variable::cast(user.user)) row.note = "in its initializer";
    row.members.text("relation", access.verb)
        .text("access", both ? "both" : access.plural)
        .number("depth", depth);
    if (depth > 1) {
        row.note += (row.note.empty() ? "" : "; ") + std::string("through ") + qualifiedName(via);
        row.members.text("via", via->identifier());
    }
    return row;
}

/// Those that do it themselves, then those that call them; and who may do it through a pointer.
std::vector<Section> usersOf(CallGraph& graph, Insight const& insight, za::Variable const& variable,
                             std::string const& name, Access const& access, unsigned depth) {
    Section section{variable, name + " is " + access.passive + " by"};
    section.nothing = "nothing in the model " + std::string(access.verb) + ' ' + name;
    std::vector<std::size_t> direct;
    for (std::size_t i = 0; i < graph.size(); ++i)
        if (holds(graph.use(i).*access.mine, variable)) {
            direct.push_back(i);
            section.rows.push_back(rowOf(graph.use(i).user, graph.use(i), variable, access, 1, {}));
        }
    sortByPlace(section.rows);
    std::vector<Row> callers;
    for (CallGraph::Step const& step : graph.reach(direct, false, depth - 1))
        if (!std::binary_search(direct.begin(), direct.end(), step.edge.node))
            callers.push_back(rowOf(graph.use(step.edge.node).user, graph.use(step.edge.node), variable,
                                    access, step.depth + 1, graph.use(step.from).user));
    sortByPlace(callers);
    section.rows.insert(section.rows.end(), callers.begin(), callers.end());
    auto const record = insight.recordOf(variable);
    if (section.rows.empty() && record && (record.*access.flag)())
        section.notes.push_back(name + " is marked as " + access.passive + ", and no record tells where");
    return {section, addressTakers(graph, variable,
                                   "the address of " + name + " is taken by, so that it may be " +
                                       access.passive + " through a pointer")};
}

/// What a function uses itself, then what the functions that it calls do; and what it may use through a
/// pointer.
std::vector<Section> usesOf(CallGraph& graph, za::Function const& function, std::string const& name,
                            Access const& access, unsigned depth) {
    std::size_t const node = graph.node(function);
    Section section{function, name + ' ' + access.verb};
    section.nothing = graph.use(node).isBodyKnown ? name + ' ' + access.verb + " no variable"
                                                  : "the body of " + name + " is not in the model; what it " +
                                                        access.verb + " is unknown";
    std::unordered_set<brant::zero::ModelElementImpl const*> seen;
    auto const add = [&](Use const& use, unsigned level) {
        for (za::Variable const& variable : use.*access.mine)
            if (seen.insert(variable.get()).second)
                section.rows.push_back(rowOf(variable, use, variable, access, level, use.user));
    };
    add(graph.use(node), 1);
    std::size_t unknown = 0;
    std::vector<std::size_t> left; // whose calls are followed
    if (depth > 1) left.push_back(node);
    for (CallGraph::Step const& step : graph.reach({node}, true, depth - 1)) {
        add(graph.use(step.edge.node), step.depth + 1);
        if (step.depth + 1 < depth) left.push_back(step.edge.node);
        unknown += graph.use(step.edge.node).isBodyKnown ? 0 : 1;
    }
    if (unknown > 0)
        section.notes.push_back(
            "of the called functions without a body in the model: " + counted(unknown, "function") +
            "; the " + access.verb + " inside are unknown");
    notePattern(function, name, section);
    noteOpenPointers(graph, left, section);
    Section pointers{function, name + " takes the address of, so that it may be " + access.passive +
                                   " through a pointer"};
    for (za::Symbol const& symbol : graph.use(node).points)
        if (za::Variable::cast(symbol)) {
            pointers.rows.push_back({symbol});
            pointers.rows.back().members.text("relation", "address").number("depth", 1);
        }
    return {section, pointers};
}

int answerUses(Arguments const& arguments, Access const& access) {
    arguments.requireOperands({"FILE", "NAME|UUID"});
    unsigned const depth = depthOf(arguments, 1);
    za::Ast const ast = readModel(arguments.operands()[0]);
    auto const fits = [](ModelElement const& element) {
        return za::Function::cast(element) || za::Variable::cast(element);
    };
    std::vector<Section> sections;
    std::vector<ModelElement> const found = subjects(ast, arguments.operands()[1], fits, access.verb);
    if (!found.empty()) {
        Insight const insight(ast);
        CallGraph graph(insight, arguments.has("--exact"));
        std::vector<std::string> const names = namesOf(found);
        for (std::size_t i = 0; i < found.size(); ++i) {
            auto const variable = za::Variable::cast(found[i]);
            std::vector<Section> const answers =
                variable ? usersOf(graph, insight, variable, names[i], access, depth)
                         : usesOf(graph, za::Function::cast(found[i]), names[i], access, depth);
            sections.insert(sections.end(), answers.begin(), answers.end());
        }
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
