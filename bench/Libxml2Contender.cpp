#include "Contenders.hpp"
#include "LeanXml.hpp"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <memory>

namespace zelkor::bench {

namespace {

xmlChar const* letters(char const* text) {
    return reinterpret_cast<xmlChar const*>(text);
}

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;
Document newDocument() {
    return {xmlNewDoc(letters("1.0")), &xmlFreeDoc};
}

/// Builds the tree of LeanXml.hpp.
struct Libxml2Dom {
    using Node = xmlNode*;
    xmlDoc* document;
    Node root;

    explicit Libxml2Dom(xmlDoc* document_)
        : document(document_), root(xmlNewDocNode(document, nullptr, letters(leanRoot.data()), nullptr)) {
        xmlDocSetRootElement(document, root);
    }

    Node open(Node const* parent, std::string_view feature, bool, Kind kind, Identity const& identity) {
        std::string_view const name = parent ? feature : leanTop;
        Node const node = xmlNewDocNode(document, nullptr, letters(name.data()), nullptr);
        xmlAddChild(parent ? *parent : root, node);
        text(node, "class", className(kind));
        text(node, "uuid", IdentityText(identity));
        return node;
    }
    static void close(Node) {}
    static void reserve(Node, std::string_view) {}
    void text(Node node, std::string_view name, std::string_view value) {
        terminated.assign(value);
        xmlNewProp(node, letters(name.data()), letters(terminated.c_str()));
    }
    void number(Node node, std::string_view name, unsigned value) { text(node, name, std::to_string(value)); }
    void flag(Node node, std::string_view name, bool value) { text(node, name, value ? "true" : "false"); }
    void references(Node node, std::string_view name, std::span<Identity const> targets, bool) {
        text(node, name, joined(targets));
    }

  private:
    std::string terminated; // texts of the plan are views, the peer wants a final zero
};

void build(Stage const& stage, xmlDoc* document) {
    Libxml2Dom dom(document);
    DomBuilder<Libxml2Dom> builder(dom, stage.plan.seed());
    stage.plan.replay(builder);
}

void create(Stage& stage) {
    Document const document = newDocument();
    stage.measure([&] { build(stage, document.get()); });
    stage.expect(xmlDocGetRootElement(document.get())->children != nullptr, "the tree is empty");
}

void save(Stage& stage) {
    Document const document = newDocument();
    build(stage, document.get());
    xmlChar* text = nullptr;
    int size = 0;
    stage.measure([&] { xmlDocDumpMemoryEnc(document.get(), &text, &size, "UTF-8"); });
    std::unique_ptr<xmlChar, decltype(xmlFree)> const owned(text, xmlFree);
    stage.expect(text != nullptr, "nothing was written");
    stage.expectDocument({reinterpret_cast<char const*>(text), static_cast<std::size_t>(size)},
                         stage.settings.leanXml);
}

void destroy(Stage& stage) {
    Document document = newDocument();
    build(stage, document.get());
    stage.measure([&] { document.reset(); });
}

void memory(Stage& stage) {
    Document const document = newDocument();
    stage.measureMemory([&] { build(stage, document.get()); });
}

} // namespace

Contender libxml2Contender() {
    return {"libxml2", {{"create", create}, {"xml.save", save}, {"destroy", destroy}, {"memory", memory}}};
}

} // namespace zelkor::bench
