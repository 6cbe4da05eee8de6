#include "Contenders.hpp"
#include "Documents.hpp"
#include "Dom.hpp"

#include <memory>
#include <nlohmann/json.hpp>

namespace zelkor::bench {

namespace {

using nlohmann::json;

/// Builds the tree that the JSON document's text would give; its keys come out sorted. A node stays where it
/// is while it is open: only closed siblings move when a list grows.
struct NlohmannDom {
    using Node = json*;
    json document{{"format", "zelkor-ast"}, {"version", "1.0"}, {"elements", json::array()}};

    Node open(Node const* parent, std::string_view feature, bool many, Kind kind, Identity const& identity) {
        json object{{"class", className(kind)}, {"uuid", std::string_view(IdentityText(identity))}};
        if (parent && !many) return &((**parent)[feature.data()] = std::move(object));
        json& list = parent ? (**parent)[feature.data()] : document["elements"];
        return &list.emplace_back(std::move(object));
    }
    static void close(Node) {}
    static void reserve(Node node, std::string_view feature) { (*node)[feature.data()] = json::array(); }
    static void text(Node node, std::string_view name, std::string_view value) {
        (*node)[name.data()] = value;
    }
    static void number(Node node, std::string_view name, unsigned value) { (*node)[name.data()] = value; }
    static void flag(Node node, std::string_view name, bool value) { (*node)[name.data()] = value; }
    static void references(Node node, std::string_view name, std::span<Identity const> targets, bool many) {
        if (!many) return text(node, name, IdentityText(targets[0]));
        json list = json::array();
        for (Identity const& target : targets)
            list.push_back(std::string_view(IdentityText(target)));
        (*node)[name.data()] = std::move(list);
    }
};

void build(Stage const& stage, NlohmannDom& dom) {
    DomBuilder<NlohmannDom> builder(dom, stage.plan.seed());
    stage.plan.replay(builder);
}

void create(Stage& stage) {
    NlohmannDom dom;
    stage.measure([&] { build(stage, dom); });
    stage.expect(dom.document["elements"][0]["Files"].size() == stage.plan.count(Kind::SourceFile),
                 "files are missing");
}

void save(Stage& stage) {
    NlohmannDom dom;
    build(stage, dom);
    std::string text;
    stage.measure([&] { text = dom.document.dump(); });
    stage.expectDocument(text + '\n', stage.settings.json);
}

void parse(Stage& stage) {
    std::string const text = stage.readDocument(stage.jsonPath());
    json document;
    stage.measure([&] { document = json::parse(text); });
    stage.expect(document["elements"][0]["Files"].size() == stage.plan.count(Kind::SourceFile),
                 "files are missing");
}

void destroy(Stage& stage) {
    auto dom = std::make_unique<NlohmannDom>();
    build(stage, *dom);
    stage.measure([&] { dom.reset(); });
}

void memory(Stage& stage) {
    NlohmannDom dom;
    stage.measureMemory([&] { build(stage, dom); });
}

} // namespace

Contender nlohmannContender() {
    return {"nlohmann",
            {{"create", create},
             {"json.save", save},
             {"json.parse", parse},
             {"destroy", destroy},
             {"memory", memory}}};
}

} // namespace zelkor::bench
