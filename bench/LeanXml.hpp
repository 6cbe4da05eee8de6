// The XML that the tree-building peers hold: an element named by the feature that holds it, everything single
// or referred to in attributes. It has half the nodes of the library's own form, which is kind to the peers.
#pragma once

#include "Dom.hpp"
#include "Stage.hpp"

namespace zelkor::bench {

inline constexpr std::string_view leanRoot = "model";
inline constexpr std::string_view leanTop = "element";
inline constexpr std::string_view leanDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

/// Several identities in one attribute.
inline std::string joined(std::span<Identity const> targets) {
    std::string all;
    for (Identity const& target : targets) {
        if (!all.empty()) all += ' ';
        all += IdentityText(target);
    }
    return all;
}

/// Adds up the text that a peer's tree must be written as, without writing it.
class LeanXmlPrint {
  public:
    using Node = std::size_t; // the element is the one opened last

    /// What `plan` comes to.
    static Fingerprint of(Plan const& plan) {
        LeanXmlPrint dom;
        dom.print.add(leanDeclaration);
        dom.print.add("<model></model>");
        DomBuilder<LeanXmlPrint> builder(dom, plan.seed());
        plan.replay(builder);
        dom.closeLast(); // the project, which stays open to the end
        return dom.print;
    }

    Node open(Node const* parent, std::string_view feature, bool, Kind kind, Identity const& identity) {
        if (parent) open_.back().nested = true;
        open_.push_back({parent ? feature : leanTop});
        print.add("<");
        print.add(open_.back().name);
        text(0, "class", className(kind));
        text(0, "uuid", IdentityText(identity));
        return open_.size();
    }
    void close(Node) { closeLast(); }
    void reserve(Node, std::string_view) {}
    void text(Node, std::string_view name, std::string_view value) {
        print.add(" =\"\"");
        print.add(name);
        print.add(value);
    }
    void number(Node node, std::string_view name, unsigned value) { text(node, name, std::to_string(value)); }
    void flag(Node node, std::string_view name, bool value) { text(node, name, value ? "true" : "false"); }
    void references(Node node, std::string_view name, std::span<Identity const> targets, bool) {
        text(node, name, joined(targets));
    }

  private:
    struct Open {
        std::string_view name;
        bool nested = false;
    };

    void closeLast() {
        if (open_.back().nested) {
            print.add("></>");
            print.add(open_.back().name);
        } else {
            print.add("/>");
        }
        open_.pop_back();
    }

    Fingerprint print;
    std::vector<Open> open_;
};

} // namespace zelkor::bench
