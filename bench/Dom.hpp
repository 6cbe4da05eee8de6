// Builds any tree of named nodes from the plan. A `Dom` offers:
//   Node open(Node const* parent, std::string_view feature, bool many, Kind, Identity const&);
//   void close(Node) (after its features), void reserve(Node, std::string_view feature) (a list that is
//   filled later), void text/number/flag(Node, name, value), void references(Node, name, span of identities,
//   bool many)
#pragma once

#include "Identity.hpp"
#include "Plan.hpp"

#include <span>
#include <vector>

namespace zelkor::bench {

template <class Dom>
class DomBuilder {
  public:
    using Node = typename Dom::Node;
    DomBuilder(Dom& dom_, std::uint64_t seed) : dom(dom_), identities(seed) {}

    void project(ProjectRecord const& record) {
        scopes.push_back({begin(nullptr, {}, false, record, {"Files", "Compilations"})});
        features(scopes.back(), record);
    }
    void file(FileRecord const& record) {
        Node const node = begin(&scopes.front(), "Files", true, record);
        files.push_back(last);
        features(node, record);
        dom.close(node);
    }
    void openScope(UnitRecord const& record) { open("Compilations", record); }
    void openScope(NamespaceRecord const& record) { open("Namespaces", record); }
    void closeScope() {
        dom.close(scopes.back());
        scopes.pop_back();
    }
    template <class Record>
    void symbol(Record const& record) {
        Node const node = begin(&scopes.back(), "Symbols", true, record);
        if constexpr (isTypeRecord<Record>) types.push_back(last);
        features(node, record);
        dom.close(node);
    }

  private:
    template <class Record>
    Node begin(Node const* parent, std::string_view feature, bool many, Record const&,
               std::initializer_list<std::string_view> lists = {}) {
        last = identities.next();
        Node const node = dom.open(parent, feature, many, Record::kind, last);
        for (std::string_view const list : lists)
            dom.reserve(node, list);
        return node;
    }

    template <class Record>
    void open(std::string_view feature, Record const& record) {
        Node const node = record.hasNamespaces
                              ? begin(&scopes.back(), feature, true, record, {"Namespaces", "Symbols"})
                              : begin(&scopes.back(), feature, true, record, {"Symbols"});
        features(node, record);
        scopes.push_back(node);
    }

    template <class Record>
    void contain(Node const& owner, std::string_view feature, bool many, Record const& record) {
        Node const node = begin(&owner, feature, many, record);
        features(node, record);
        dom.close(node);
    }

    template <class Record>
    void features(Node const& node, Record const& record) {
        forEachFeature<Record>([&](auto const& feature) {
            if (feature.absent(record)) return;
            auto const& value = record.*(feature.member);
            if constexpr (formOf<decltype(feature)> == Form::Text) {
                dom.text(node, feature.name, value);
            } else if constexpr (formOf<decltype(feature)> == Form::Number) {
                dom.number(node, feature.name, value);
            } else if constexpr (formOf<decltype(feature)> == Form::Flag) {
                dom.flag(node, feature.name, value);
            } else if constexpr (formOf<decltype(feature)> == Form::Enumerated) {
                dom.text(node, feature.name, literalName(value));
            } else if constexpr (formOf<decltype(feature)> == Form::Reference) {
                dom.references(node, feature.name, std::span(&identityOf(value), 1), false);
            } else if constexpr (formOf<decltype(feature)> == Form::References) {
                targets.clear();
                for (auto const& index : value)
                    targets.push_back(identityOf(index));
                dom.references(node, feature.name, targets, true);
            } else if constexpr (formOf<decltype(feature)> == Form::Child) {
                contain(node, feature.name, false, *value);
            } else {
                dom.reserve(node, feature.name);
                for (auto const& each : value)
                    contain(node, feature.name, true, each);
            }
        });
    }

    Identity const& identityOf(TypeIndex index) const { return types[index.at]; }
    Identity const& identityOf(FileIndex index) const { return files[index.at]; }

    Dom& dom;
    IdentitySource identities;
    Identity last;
    std::vector<Identity> types;
    std::vector<Identity> files;
    std::vector<Identity> targets;
    std::vector<Node> scopes;
};

} // namespace zelkor::bench
