// `zelkor includes`: what a file includes and what includes it, as trees; without a file, how often each is
// included.

#include "Answers.hpp"
#include "FileGraph.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

/// The files around one, down to a depth. What stands in the tree already is not opened again.
Section treeOf(FileGraph const& graph, std::size_t start, bool forward, unsigned depth) {
    std::string const path = title(graph.files()[start]);
    Section section{graph.files()[start], path + (forward ? " includes " : " is included by "), {}};
    section.layout = Layout::Tree;
    section.nothing = path + (forward ? " includes nothing" : " is included by nothing");
    section.heading += counted(graph.edges(start, forward).size(), "file");
    std::size_t const reached = graph.countReached(start, forward, !forward);
    section.heading += forward
                           ? ", " + std::to_string(reached) + " with what these include"
                           : ", " + counted(reached, "unit") + " among all that include it, directly or not";
    struct Open {
        FileGraph::Edge const* edge;
        std::size_t from;
        unsigned level;
    };
    std::vector<Open> open;
    auto const push = [&](std::size_t from, unsigned level) {
        auto const& edges = graph.edges(from, forward);
        for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge)
            open.push_back({&*edge, from, level});
    };
    std::vector<bool> opened(graph.files().size());
    opened[start] = true;
    push(start, 1);
    while (!open.empty()) {
        auto const [edge, from, level] = open.back();
        open.pop_back();
        Row row{graph.files()[edge->file], {}, "", level - 1};
        row.members.text("relation", forward ? "includes" : "includedBy").number("depth", level);
        if (level > 1) row.members.text("via", graph.files()[from]->identifier());
        if (!edge->written.empty()) row.members.text("written", edge->written);
        std::size_t const below = graph.edges(edge->file, forward).size();
        if (opened[edge->file] && below > 0)
            row.note = "above";
        else if (level == depth && below > 0)
            row.note = counted(below, "file");
        else if (below > 0)
            push(edge->file, level + 1);
        if (level < depth) opened[edge->file] = true;
        section.rows.push_back(row);
    }
    return section;
}

/// All files, the most included first.
Section overview(FileGraph const& graph) {
    Section section{{}, {}, {}};
    std::vector<std::size_t> order(graph.files().size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::vector<std::string> paths;
    for (za::source::SourceFile const& file : graph.files())
        paths.push_back(title(file));
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::tuple(graph.edges(b, false).size(), std::string_view(paths[a])) <
               std::tuple(graph.edges(a, false).size(), std::string_view(paths[b]));
    });
    for (std::size_t const file : order) {
        std::size_t const includes = graph.edges(file, true).size();
        std::size_t const includers = graph.edges(file, false).size();
        Row row{graph.files()[file],
                {},
                "included by " + std::to_string(includers) + ", includes " + std::to_string(includes)};
        row.members.number("includedBy", includers).number("includes", includes);
        section.rows.push_back(row);
    }
    section.nothing = "the model has no files";
    return section;
}

} // namespace

int runIncludes(Arguments const& arguments) {
    arguments.requireOperands({"FILE", "[SOURCE]"});
    unsigned const depth = depthOf(arguments, 1);
    std::string const direction = arguments.value("--direction", "both");
    if (direction != "both" && direction != "out" && direction != "in")
        throw UsageError("--direction takes out, in or both, not '" + direction + "'");
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::vector<Section> sections;
    if (arguments.operands().size() == 1) {
        sections.push_back(overview(FileGraph(ast)));
        return printAnswer(arguments, "includes", sections);
    }
    Lookup const lookup = lookUpFiles(ast, arguments.operands()[1]);
    if (lookup.elements.empty()) reportMissing(arguments.operands()[1], lookup);
    FileGraph const graph(ast);
    for (ModelElement const& element : lookup.elements) {
        std::size_t const file = graph.indexOf(za::source::SourceFile::cast(element));
        if (direction != "in") sections.push_back(treeOf(graph, file, true, depth));
        if (direction != "out") sections.push_back(treeOf(graph, file, false, depth));
    }
    return printAnswer(arguments, "includes", sections);
}

} // namespace zelkor::command
