// `zelkor export`: calls, includes and inheritance as graphs for other tools.

#include "CallGraph.hpp"
#include "FileGraph.hpp"
#include "Graph.hpp"

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

Graph callsOf(za::Ast const& ast) {
    Insight const insight(ast);
    CallGraph const calls(insight, false);
    Graph graph{"calls", {}, {}};
    for (std::size_t i = 0; i < calls.size(); ++i) {
        graph.nodes.push_back(calls.use(i).user);
        for (CallGraph::Edge const& edge : calls.callees(i))
            graph.edges.push_back({i, edge.node, relationName(edge.why)});
    }
    return graph;
}

Graph includesOf(za::Ast const& ast) {
    FileGraph const files(ast);
    Graph graph{"includes", {}, {}};
    for (std::size_t i = 0; i < files.files().size(); ++i) {
        graph.nodes.push_back(files.files()[i]);
        for (FileGraph::Edge const& edge : files.edges(i, true))
            graph.edges.push_back({i, edge.file, "includes"});
    }
    return graph;
}

/// The direct bases that are known as classes, typedefs resolved.
std::vector<za::types::StructType> directBases(za::types::StructType const& type) {
    std::vector<za::types::StructType> bases;
    for (za::types::BaseClass const& base : type.getBaseClasses())
        if (auto const known = za::types::StructType::cast(za::types::Type::skipTyperefs(base.getType()));
            known && !known.isProxy())
            bases.push_back(known);
    return bases;
}

/// Classes that have a base or are one.
Graph inheritanceOf(za::Ast const& ast) {
    Graph graph{"inherits", {}, {}};
    std::unordered_map<brant::zero::ModelElementImpl const*, std::size_t> nodes;
    auto const node = [&](za::types::StructType const& type) {
        auto const [place, isNew] = nodes.emplace(type.get(), graph.nodes.size());
        if (isNew) graph.nodes.push_back(type);
        return place->second;
    };
    forEachElement(ast, [&](ModelElement const& element) {
        auto const type = za::types::StructType::cast(element);
        if (!type) return;
        for (za::types::StructType const& base : directBases(type)) {
            std::size_t const from = node(type);
            graph.edges.push_back({from, node(base), "inherits"});
        }
    });
    return graph;
}

/// \returns the entry of a table that a word names. \throws UsageError with what there is.
template <class Entry, std::size_t size>
Entry const& entryOf(Entry const (&table)[size], std::string const& word, char const* option) {
    std::string known;
    for (Entry const& entry : table) {
        if (word == entry.name) return entry;
        known += (known.empty() ? "" : ", ") + std::string(entry.name);
    }
    throw UsageError(std::string(option) + " takes one of " + known + ", not '" + word + "'");
}

/// Takes out what lies in system headers or nowhere, with its edges.
void dropForeign(Graph& graph) {
    std::vector<std::size_t> kept(graph.nodes.size());
    std::vector<ModelElement> nodes;
    for (std::size_t i = 0; i < graph.nodes.size(); ++i) {
        kept[i] = isForeign(graph.nodes[i]) ? graph.nodes.size() : nodes.size();
        if (kept[i] != graph.nodes.size()) nodes.push_back(graph.nodes[i]);
    }
    std::size_t const gone = graph.nodes.size();
    std::erase_if(graph.edges,
                  [&](Graph::Edge const& edge) { return kept[edge.from] == gone || kept[edge.to] == gone; });
    for (Graph::Edge& edge : graph.edges)
        edge = {kept[edge.from], kept[edge.to], std::move(edge.relation)};
    graph.nodes = std::move(nodes);
}

} // namespace

int runExport(Arguments const& arguments) {
    struct Kind {
        char const* name;
        Graph (*build)(za::Ast const&);
    };
    struct Format {
        char const* name;
        std::string (*write)(Graph const&);
    };
    static constexpr Kind kinds[] = {
        {"calls", callsOf}, {"includes", includesOf}, {"inherits", inheritanceOf}};
    static constexpr Format formats[] = {{"dot", asDot}, {"graphml", asGraphml}, {"csv", asCsv}};
    arguments.requireOperands({"FILE"});
    Kind const& kind = entryOf(kinds, arguments.value("--what", "calls"), "--what");
    Format const& format = entryOf(formats, arguments.value("--format", "dot"), "--format");
    za::Ast const ast = readModel(arguments.operands()[0]);
    Graph graph = kind.build(ast);
    if (arguments.has("--no-system-headers")) dropForeign(graph);
    graph.sort();
    print(format.write(graph));
    return Ok;
}

} // namespace zelkor::command
