#include "Contenders.hpp"
#include "LeanXml.hpp"
#include "Search.hpp"

#include <pugixml.hpp>

namespace zelkor::bench {

namespace {

/// Builds the tree of LeanXml.hpp.
struct PugixmlDom {
    using Node = pugi::xml_node;
    pugi::xml_node root;

    Node open(Node const* parent, std::string_view feature, bool, Kind kind, Identity const& identity) {
        Node node = parent ? append(*parent, feature) : append(root, leanTop);
        text(node, "class", className(kind));
        text(node, "uuid", IdentityText(identity));
        return node;
    }
    static void close(Node) {}
    static void reserve(Node, std::string_view) {}
    static void text(Node node, std::string_view name, std::string_view value) {
        terminated.assign(value);
        node.append_attribute(name.data()) = terminated.c_str();
    }
    static void number(Node node, std::string_view name, unsigned value) {
        node.append_attribute(name.data()) = value;
    }
    static void flag(Node node, std::string_view name, bool value) {
        node.append_attribute(name.data()) = value;
    }
    static void references(Node node, std::string_view name, std::span<Identity const> targets, bool) {
        node.append_attribute(name.data()) = joined(targets).c_str();
    }

  private:
    static Node append(Node parent, std::string_view name) { return parent.append_child(name.data()); }
    static inline std::string terminated; // texts of the plan are views, the peer wants a final zero
};

void build(Stage const& stage, pugi::xml_document& document) {
    PugixmlDom dom{document.append_child(leanRoot.data())};
    DomBuilder<PugixmlDom> builder(dom, stage.plan.seed());
    stage.plan.replay(builder);
}

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(void const* data, std::size_t size) override {
        text.append(static_cast<char const*>(data), size);
    }
};

void expectSaves(Stage& stage, pugi::xml_document const& document) {
    StringWriter writer;
    document.save(writer, "", pugi::format_raw | pugi::format_no_declaration);
    stage.expectDocument(std::string(leanDeclaration) + writer.text, stage.settings.leanXml);
}

void create(Stage& stage) {
    pugi::xml_document document;
    stage.measure([&] { build(stage, document); });
    expectSaves(stage, document);
}

void memory(Stage& stage) {
    pugi::xml_document document;
    stage.measureMemory([&] { build(stage, document); });
}

void destroy(Stage& stage) {
    pugi::xml_document document;
    build(stage, document);
    stage.measure([&] { document.reset(); });
}

/// Counts functions of a name below a scope, whose own name with `::` is `outer`.
std::size_t countNamed(pugi::xml_node scope, std::string const& outer, std::string const& wanted) {
    std::size_t found = 0;
    for (pugi::xml_node const child : scope.children()) {
        std::string_view const feature = child.name();
        if (feature == "Namespaces")
            found += countNamed(child, outer + child.attribute("Name").value() + "::", wanted);
        else if (feature == "Symbols" && std::string_view(child.attribute("class").value()) == "Function")
            found += outer + child.attribute("Name").value() == wanted && !child.child("TemplateArgs");
    }
    return found;
}

void find(Stage& stage) {
    pugi::xml_document document;
    build(stage, document);
    measureSearch(stage, [&](std::string const& name) {
        std::size_t found = 0;
        for (pugi::xml_node const unit : document.first_child().first_child().children("Compilations"))
            found += countNamed(unit, {}, name);
        return found;
    });
}

} // namespace

Contender pugixmlContender() {
    return {"pugixml", {{"create", create}, {"memory", memory}, {"destroy", destroy}, {"find", find}}};
}

} // namespace zelkor::bench
