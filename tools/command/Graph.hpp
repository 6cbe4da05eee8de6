// A graph of elements and the three forms in which it leaves the program.
#pragma once

#include "Records.hpp"

#include <string>
#include <vector>

namespace zelkor::command {

struct Graph {
    struct Edge {
        std::size_t from;
        std::size_t to;
        std::string relation;
    };

    std::string name;
    std::vector<brant::zero::ModelElement> nodes;
    std::vector<Edge> edges;

    /// Brings nodes into the order of their places, names and identities, and edges into that of their ends.
    void sort();
};

/// Text between double quotes for dot: `"` and `\` are escaped, line ends become blanks.
[[nodiscard]] std::string dotText(std::string const& text);
/// Text for XML content and attributes. What XML cannot hold becomes U+FFFD.
[[nodiscard]] std::string xmlText(std::string const& text);
/// One field of a CSV line (RFC 4180), in quotes where it has to be.
[[nodiscard]] std::string csvText(std::string const& text);

/// The graph as a whole document. Nodes carry class, name, place; ids are `n0`, `n1`, ... in graphml and csv
/// too.
[[nodiscard]] std::string asDot(Graph const& graph);
[[nodiscard]] std::string asGraphml(Graph const& graph);
/// One table: lines of nodes, then lines of edges, told apart by the first column.
[[nodiscard]] std::string asCsv(Graph const& graph);

} // namespace zelkor::command
