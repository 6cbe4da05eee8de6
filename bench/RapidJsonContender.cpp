#include "Contenders.hpp"
#include "Documents.hpp"
#include "Dom.hpp"

#include <memory>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace zelkor::bench {

namespace {

using rapidjson::Value;

/// Builds the tree that the JSON document's text would give. A node stays where it is while it is open: only
/// closed siblings move when a list grows.
struct RapidJsonDom {
    using Node = Value*;
    rapidjson::Document document;

    RapidJsonDom() {
        document.SetObject();
        document.AddMember("format", "zelkor-ast", document.GetAllocator());
        document.AddMember("version", "1.0", document.GetAllocator());
        document.AddMember("elements", Value(rapidjson::kArrayType), document.GetAllocator());
    }

    Node open(Node const* parent, std::string_view feature, bool many, Kind kind, Identity const& identity) {
        Value object(rapidjson::kObjectType);
        object.AddMember("class", constant(className(kind)), document.GetAllocator());
        object.AddMember("uuid", copied(IdentityText(identity)), document.GetAllocator());
        if (parent && !many) return add(*parent, feature, std::move(object));
        Value& list = parent ? (**parent)[constant(feature)] : document["elements"];
        list.PushBack(std::move(object), document.GetAllocator());
        return &list[list.Size() - 1];
    }
    static void close(Node) {}
    void reserve(Node node, std::string_view feature) { add(node, feature, Value(rapidjson::kArrayType)); }
    void text(Node node, std::string_view name, std::string_view value) { add(node, name, copied(value)); }
    void number(Node node, std::string_view name, unsigned value) { add(node, name, Value(value)); }
    void flag(Node node, std::string_view name, bool value) { add(node, name, Value(value)); }
    void references(Node node, std::string_view name, std::span<Identity const> targets, bool many) {
        if (!many) return text(node, name, IdentityText(targets[0]));
        Value list(rapidjson::kArrayType);
        for (Identity const& target : targets)
            list.PushBack(copied(IdentityText(target)), document.GetAllocator());
        add(node, name, std::move(list));
    }

  private:
    static Value constant(std::string_view text) {
        return Value(rapidjson::StringRef(text.data(), static_cast<rapidjson::SizeType>(text.size())));
    }
    Value copied(std::string_view text) {
        return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), document.GetAllocator());
    }
    Node add(Node node, std::string_view name, Value value) {
        node->AddMember(constant(name), value, document.GetAllocator());
        return &(node->MemberEnd() - 1)->value;
    }
};

void build(Stage const& stage, RapidJsonDom& dom) {
    DomBuilder<RapidJsonDom> builder(dom, stage.plan.seed());
    stage.plan.replay(builder);
}

void create(Stage& stage) {
    RapidJsonDom dom;
    stage.measure([&] { build(stage, dom); });
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    dom.document.Accept(writer);
    text.Put('\n');
    stage.expectDocument({text.GetString(), text.GetSize()}, stage.settings.json);
}

void memory(Stage& stage) {
    RapidJsonDom dom;
    stage.measureMemory([&] { build(stage, dom); });
}

void parse(Stage& stage) {
    std::string const text = stage.readDocument(stage.jsonPath());
    rapidjson::Document document;
    stage.measure([&] { document.Parse(text.data(), text.size()); });
    stage.expect(!document.HasParseError() && document["elements"].Size() == 1,
                 "the document was not parsed");
}

} // namespace

Contender rapidJsonContender() {
    return {"rapidjson", {{"create", create}, {"memory", memory}, {"json.parse", parse}}};
}

} // namespace zelkor::bench
