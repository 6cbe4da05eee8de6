#include "Graph.hpp"

#include <brant/zero/Text.hpp>

#include <algorithm>
#include <numeric>

namespace zelkor::command {

using brant::zero::ModelElement;

namespace {

std::string id(std::size_t node) {
    return 'n' + std::to_string(node);
}

/// The columns and attributes of a node.
struct Attribute {
    char const* name;
    char const* type;
    std::string (*value)(ModelElement const&);
};
constexpr Attribute attributes[] = {
    {"uuid", "string", [](ModelElement const& element) { return element->identifier(); }},
    {"class", "string", className},
    {"label", "string", lineText},
    {"file", "string", [](ModelElement const& element) { return placeOf(element).path; }},
    {"line", "int", [](ModelElement const& element) { return std::to_string(placeOf(element).line); }},
    {"column", "int", [](ModelElement const& element) { return std::to_string(placeOf(element).column); }},
};

} // namespace

void Graph::sort() {
    std::vector<std::tuple<Place, std::string, std::string, std::size_t>> keys;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        keys.emplace_back(placeOf(nodes[i]), lineText(nodes[i]), nodes[i]->identifier(), i);
    std::sort(keys.begin(), keys.end());
    std::vector<std::size_t> position(nodes.size());
    std::vector<ModelElement> sorted;
    for (auto const& [place, text, identity, i] : keys) {
        position[i] = sorted.size();
        sorted.push_back(nodes[i]);
    }
    nodes = std::move(sorted);
    for (Edge& edge : edges)
        edge = {position[edge.from], position[edge.to], std::move(edge.relation)};
    std::sort(edges.begin(), edges.end(), [](Edge const& a, Edge const& b) {
        return std::tie(a.from, a.to, a.relation) < std::tie(b.from, b.to, b.relation);
    });
}

std::string dotText(std::string const& text) {
    std::string out = "\"";
    for (char const c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c == '\n' || c == '\r' ? ' ' : c;
    }
    return out + '"';
}

std::string xmlText(std::string const& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        auto const byte = static_cast<unsigned char>(text[i]);
        std::size_t const length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        std::string const character = text.substr(i, length);
        bool const valid = brant::zero::isValidUtf8(character) && character != "\xEF\xBF\xBE" &&
                           character != "\xEF\xBF\xBF" &&
                           (byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r');
        i += brant::zero::isValidUtf8(character) ? length : 1;
        if (!valid)
            out += "\xEF\xBF\xBD";
        else if (byte == '&' || byte == '<' || byte == '>' || byte == '"' || byte < 0x20)
            out += "&#" + std::to_string(byte) + ';';
        else
            out += character;
    }
    return out;
}

std::string csvText(std::string const& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (char const c : text)
        out += c == '"' ? "\"\"" : std::string(1, c);
    return out + '"';
}

std::string asDot(Graph const& graph) {
    std::string out = "digraph " + dotText(graph.name) + " {\n  node [shape=box];\n";
    for (std::size_t i = 0; i < graph.nodes.size(); ++i)
        out += "  " + id(i) + " [label=" + dotText(lineText(graph.nodes[i])) +
               ", tooltip=" + dotText(placeOf(graph.nodes[i]).text()) + "];\n";
    for (Graph::Edge const& edge : graph.edges)
        out += "  " + id(edge.from) + " -> " + id(edge.to) + " [class=" + dotText(edge.relation) +
               (edge.relation == graph.name ? "" : ", style=dashed") + "];\n";
    return out + "}\n";
}

std::string asGraphml(Graph const& graph) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n";
    for (Attribute const& attribute : attributes)
        out += std::string("  <key id=\"") + attribute.name + "\" for=\"node\" attr.name=\"" +
               attribute.name + "\" attr.type=\"" + attribute.type + "\"/>\n";
    out +=
        "  <key id=\"relation\" for=\"edge\" attr.name=\"relation\" attr.type=\"string\"/>\n  <graph id=\"" +
        xmlText(graph.name) + "\" edgedefault=\"directed\">\n";
    for (std::size_t i = 0; i < graph.nodes.size(); ++i) {
        out += "    <node id=\"" + id(i) + "\">";
        for (Attribute const& attribute : attributes)
            out += std::string("<data key=\"") + attribute.name + "\">" +
                   xmlText(attribute.value(graph.nodes[i])) + "</data>";
        out += "</node>\n";
    }
    for (Graph::Edge const& edge : graph.edges)
        out += "    <edge source=\"" + id(edge.from) + "\" target=\"" + id(edge.to) +
               "\"><data key=\"relation\">" + xmlText(edge.relation) + "</data></edge>\n";
    return out + "  </graph>\n</graphml>\n";
}

std::string asCsv(Graph const& graph) {
    std::string out = "record,id";
    for (Attribute const& attribute : attributes)
        out += std::string(",") + attribute.name;
    out += ",source,target,relation\n";
    for (std::size_t i = 0; i < graph.nodes.size(); ++i) {
        out += "node," + id(i);
        for (Attribute const& attribute : attributes)
            out += ',' + csvText(attribute.value(graph.nodes[i]));
        out += ",,,\n";
    }
    for (Graph::Edge const& edge : graph.edges)
        out += "edge," + std::string(std::size(attributes) + 1, ',') + id(edge.from) + ',' + id(edge.to) +
               ',' + csvText(edge.relation) + '\n';
    return out;
}

} // namespace zelkor::command
