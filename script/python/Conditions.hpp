/// \file
/// Conditions of queries that are put together at run time, from the library's own ones.
#pragma once

#include "Element.hpp"

#include <brant/zero/query/Condition.hpp>
#include <brant/zero/query/Walk.hpp>

#include <memory>
#include <string>
#include <vector>

namespace zelkor::python {

namespace query = brant::zero::query;

/// Asks elements. What stands behind the interface is compiled, and it goes on from one hit to the next by
/// itself: an element that does not pass costs what it costs in a query of C++.
class Node {
  public:
    virtual ~Node() = default;
    [[nodiscard]] virtual bool test(Body const& element) const = 0;
    /// \returns the next element of the walk that passes, null behind the last one; with a class those of
    /// that class only.
    [[nodiscard]] virtual Body* next(query::Walk& walk, ClassTable const* exactly) const = 0;
    /// \returns what holds where a path ends before it gets to the element.
    [[nodiscard]] virtual bool whenMissing() const noexcept { return false; }
    /// \returns the class that can be asked.
    [[nodiscard]] virtual ClassTable const& subject() const noexcept = 0;
};

/// How tightly the text of a condition holds together.
enum class Tie { Atom, And, Or };

/// A condition: what it tests and how it reads in Python. A value; copies share. Conditions of the library
/// take it for one of their own.
class Condition : public query::ConditionBase {
  public:
    using Subject = ModelElement;

    Condition(std::shared_ptr<Node const> node, std::string text, Tie tie = Tie::Atom)
        : node_(std::move(node)), text_(std::move(text)), tie_(tie) {}

    [[nodiscard]] bool test(Body const& element) const { return node_->test(element); }
    [[nodiscard]] ClassTable const& subject() const noexcept { return node_->subject(); }
    void print(std::ostream& out, query::Binding) const { out << text_; }
    [[nodiscard]] std::shared_ptr<Node const> const& node() const noexcept { return node_; }
    [[nodiscard]] std::string const& text() const noexcept { return text_; }
    /// \returns the text, in brackets where what stands around it is tighter.
    [[nodiscard]] std::string text(Tie around) const { return tie_ > around ? "(" + text_ + ")" : text_; }

    [[nodiscard]] Condition both(Condition const& other) const;
    [[nodiscard]] Condition either(Condition const& other) const;
    [[nodiscard]] Condition negated() const;

  private:
    std::shared_ptr<Node const> node_;
    std::string text_;
    Tie tie_;
};

enum class Comparison { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };

/// A path of single references and the property at its end, asked of elements of the class that it starts
/// from.
struct Place {
    std::vector<query::Step> path;
    query::Step last;
    std::string text;

    [[nodiscard]] PropertyRow const& row() const noexcept { return *last.row; }
    [[nodiscard]] bool isRelation() const noexcept { return row().refersToElements(); }
    /// \returns the class that what is referred to is known to have.
    [[nodiscard]] ClassTable const& target() const noexcept {
        return last.narrowed == nullptr ? *row().target : *last.narrowed;
    }
    /// \returns a condition that asks the element at the end of the path.
    [[nodiscard]] Condition behindPath(std::shared_ptr<Node const> node, std::string text) const;
};

Condition compareAttribute(Place const& place, Comparison operation, PyObject* value);
Condition compareReference(Place const& place, bool equal, PyObject* value);
Condition testText(Place const& place, query::TextTest kind, char const* name, PyObject* value);
Condition matchText(Place const& place, std::string const& pattern);
/// Without a condition: whether there is an element.
Condition quantify(Place const& place, query::Quantifier kind, char const* name, Condition const* condition);
Condition countElements(Place const& place, Condition const* condition, Comparison operation, long number);
Condition testClass(Place const& place, ClassTable const& wanted, bool exactly, std::string const& className);
/// \returns the node that every element passes.
std::shared_ptr<Node const> const& everything();
/// Asks for the class of the element itself.
Condition isOfClass(ClassTable const& wanted, std::string const& className);

/// \returns " == " and the like.
char const* symbolOf(Comparison operation);

} // namespace zelkor::python
