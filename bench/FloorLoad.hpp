// What both loaders of the floor share: elements made by class name, features written by table, references
// resolved in one go at the end.
#pragma once

#include "FloorTables.hpp"
#include "FloorWrite.hpp"
#include "Stage.hpp"

#include <stdexcept>
#include <string>

namespace zelkor::bench::floor {

template <bool tracks>
class Loader {
  public:
    using Types = Tree<tracks>;
    using Node = typename Types::Node;
    using Rows = Row<tracks>;

    explicit Loader(Model<tracks>& model_) : model(model_) {}

    struct Element {
        Node* node = nullptr;
        ClassTable<tracks> const* table = nullptr;
        std::size_t hint = 0;
        /// The row called `name`; the search begins behind the row found last.
        Rows const& row(std::string_view name) {
            Rows const* const found = table->find(name, hint);
            if (!found) throw std::runtime_error("no feature " + std::string(name));
            return *found;
        }
    };

    Element create(std::string_view wanted) {
        for (std::size_t at = 0; at < classNames.size(); ++at) {
            if (classNames[at] != wanted) continue;
            ClassTable<tracks> const& table = tableOf<tracks>(static_cast<Kind>(at));
            return {table.create(), &table, 0};
        }
        throw std::runtime_error("no class " + std::string(wanted));
    }

    void identify(Node& node, std::string_view text) {
        node.identity = identity(text);
        known.push_back({node.identity, &node});
    }

    void contain(Element const& owner, Rows const& row, Node& contained) {
        if (!row.connect(*owner.node, contained))
            throw std::runtime_error("wrong class in " + std::string(row.name));
    }

    void root(Node& node) {
        if (node.kind != Kind::Project) throw std::runtime_error("the root is no project");
        model.project = typename Types::template Counted<typename Types::Project>(
            static_cast<typename Types::Project*>(&node));
    }

    void text(Element const& element, Rows const& row, std::string_view value) {
        if (row.form == Form::Reference || row.form == Form::References)
            open.push_back({identity(value), element.node, &row});
        else if (!row.assignText(*element.node, value))
            throw std::runtime_error("wrong value of " + std::string(row.name));
    }

    /// Connects all references. The index is built once, with its slots fetched ahead, and dropped
    /// afterwards.
    void resolve() {
        std::size_t size = 16;
        while (size < known.size() * 2)
            size *= 2;
        std::vector<Known> slots(size);
        std::size_t const mask = size - 1;
        for (std::size_t at = 0; at < known.size(); ++at) {
            if (at + ahead < known.size())
                __builtin_prefetch(&slots[known[at + ahead].identity.low & mask], 1);
            std::size_t slot = known[at].identity.low & mask;
            while (slots[slot].node)
                slot = (slot + 1) & mask;
            slots[slot] = known[at];
        }
        for (std::size_t at = 0; at < open.size(); ++at) {
            if (at + ahead < open.size()) __builtin_prefetch(&slots[open[at + ahead].target.low & mask]);
            std::size_t slot = open[at].target.low & mask;
            while (slots[slot].node && !(slots[slot].identity == open[at].target))
                slot = (slot + 1) & mask;
            if (!slots[slot].node || !open[at].row->connect(*open[at].owner, *slots[slot].node))
                throw std::runtime_error("a reference leads nowhere");
        }
    }

  private:
    static constexpr std::size_t ahead = 16;

    struct Known {
        Identity identity;
        Node* node = nullptr;
    };
    struct Open {
        Identity target;
        Node* owner;
        Rows const* row;
    };

    static Identity identity(std::string_view text) {
        auto const parsed = parseIdentity(text);
        if (!parsed) throw std::runtime_error("no identity: " + std::string(text));
        return *parsed;
    }

    Model<tracks>& model;
    std::vector<Known> known;
    std::vector<Open> open;
};

/// A loaded tree must write the document of the built one.
inline void expectSaves(Stage const& stage, Model<false> const& model) {
    std::string text;
    JsonWriter<false>(text).write(*model.project);
    stage.expect(Fingerprint::of(text) == stage.settings.json, "the loaded tree is not the built one");
}

} // namespace zelkor::bench::floor
