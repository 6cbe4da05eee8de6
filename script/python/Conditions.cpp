#include "Conditions.hpp"

#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/query/Operators.hpp>

#include <functional>

namespace zelkor::python {

using brant::zero::schema::ValueKind;

namespace {

/// What all nodes have: the walk, around the test of each.
template <class Derived>
class Walking : public Node {
  public:
    Body* next(query::Walk& walk, ClassTable const* exactly) const override {
        auto const& self = static_cast<Derived const&>(*this);
        while (Body* const body = walk.next())
            if ((exactly == nullptr || &body->classTable() == exactly) && self.Derived::test(*body))
                return body;
        return nullptr;
    }
};

/// A condition of the library as a node.
template <class C>
class Held final : public Walking<Held<C>> {
  public:
    explicit Held(C condition, bool whenMissing = false)
        : condition_(std::move(condition)), whenMissing_(whenMissing) {}
    bool test(Body const& element) const override { return condition_.test(element); }
    bool whenMissing() const noexcept override { return whenMissing_; }
    ClassTable const& subject() const noexcept override { return condition_.subject(); }

  private:
    C condition_;
    bool whenMissing_;
};

template <class C>
std::shared_ptr<Node const> hold(C condition, bool whenMissing = false) {
    return std::make_shared<Held<C> const>(std::move(condition), whenMissing);
}

/// Asks the element that a single reference leads to.
class Through final : public Walking<Through> {
  public:
    Through(query::Step step, std::shared_ptr<Node const> inner) : step_(step), inner_(std::move(inner)) {}
    bool test(Body const& element) const override {
        Body const* const target = query::follow(element, step_);
        return target == nullptr ? inner_->whenMissing() : inner_->test(*target);
    }
    bool whenMissing() const noexcept override { return inner_->whenMissing(); }
    ClassTable const& subject() const noexcept override { return *step_.row->owner; }

  private:
    query::Step step_;
    std::shared_ptr<Node const> inner_;
};

template <bool Both>
class Joined final : public Walking<Joined<Both>> {
  public:
    Joined(std::shared_ptr<Node const> a, std::shared_ptr<Node const> b)
        : a_(std::move(a)), b_(std::move(b)),
          subject_(&query::detail::commonSubject(a_->subject(), b_->subject())) {}
    bool test(Body const& element) const override {
        return Both ? a_->test(element) && b_->test(element) : a_->test(element) || b_->test(element);
    }
    ClassTable const& subject() const noexcept override { return *subject_; }

  private:
    std::shared_ptr<Node const> a_;
    std::shared_ptr<Node const> b_;
    ClassTable const* subject_;
};

class Negated final : public Walking<Negated> {
  public:
    explicit Negated(std::shared_ptr<Node const> inner) : inner_(std::move(inner)) {}
    bool test(Body const& element) const override { return !inner_->test(element); }
    ClassTable const& subject() const noexcept override { return inner_->subject(); }

  private:
    std::shared_ptr<Node const> inner_;
};

template <class T>
using Attribute = query::AttributePlace<ModelElement, T, 0>;
using Relation = query::RelationPlace<ModelElement, ModelElement, 0>;

Relation relationOf(Place const& place) {
    return Relation({}, place.last);
}

/// Calls `make` with the operator that the comparison stands for.
template <class Make>
auto withOperator(Comparison operation, Make const& make) {
    switch (operation) {
    case Comparison::Equal:
        return make(std::equal_to<>());
    case Comparison::NotEqual:
        return make(std::not_equal_to<>());
    case Comparison::Less:
        return make(std::less<>());
    case Comparison::LessEqual:
        return make(std::less_equal<>());
    case Comparison::Greater:
        return make(std::greater<>());
    default:
        return make(std::greater_equal<>());
    }
}

template <class T, class V>
std::shared_ptr<Node const> comparison(Place const& place, Comparison operation, V value) {
    return withOperator(operation, [&](auto op) {
        return hold(query::Comparison<Attribute<T>, decltype(op), V>(Attribute<T>({}, place.last), value));
    });
}

void requireEquality(Place const& place, Comparison operation) {
    if (operation != Comparison::Equal && operation != Comparison::NotEqual)
        fail("InvalidArgument", place.text + ": only == and != can be asked of it");
}

/// Numbers are compared by their value, whatever their types.
template <class T>
std::shared_ptr<Node const> numberNode(Place const& place, Comparison operation, PyObject* value) {
    if (PyFloat_Check(value)) return comparison<T, double>(place, operation, PyFloat_AS_DOUBLE(value));
    if (!PyLong_Check(value) || PyBool_Check(value)) failType(place.text, "int or float", value);
    int overflow = 0;
    long const number = PyLong_AsLongAndOverflow(value, &overflow);
    if (overflow == 0) return comparison<T, long>(place, operation, number);
    unsigned long const large = overflow > 0 ? PyLong_AsUnsignedLong(value) : 0;
    if (overflow < 0 || PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        fail("InvalidArgument", place.text + ": the number has more than 64 bits");
    }
    return comparison<T, unsigned long>(place, operation, large);
}

std::shared_ptr<Node const> attributeNode(Place const& place, Comparison operation, PyObject* value) {
    switch (place.row().valueKind) {
    case ValueKind::Boolean:
        requireEquality(place, operation);
        if (!PyBool_Check(value)) failType(place.text, "bool", value);
        return comparison<bool, bool>(place, operation, value == Py_True);
    case ValueKind::Integer:
        return numberNode<std::int32_t>(place, operation, value);
    case ValueKind::UnlimitedNatural:
        return numberNode<std::uint32_t>(place, operation, value);
    case ValueKind::Integer64:
        return numberNode<long>(place, operation, value);
    case ValueKind::UInteger64:
        return numberNode<unsigned long>(place, operation, value);
    case ValueKind::Real:
        return numberNode<double>(place, operation, value);
    case ValueKind::String:
        return comparison<std::u16string>(place, operation, textOf(value, place.text));
    case ValueKind::StdString:
        return comparison<std::string>(place, operation, bytesOf(value, place.text));
    default:
        requireEquality(place, operation);
        return comparison<std::int32_t, long>(
            place, operation, Types::get().enumOf(*place.row().enumeration).value(value, place.text));
    }
}

std::string valueText(PyObject* value) {
    return py::repr(value).cast<std::string>();
}

void requireText(Place const& place) {
    ValueKind const kind = place.row().valueKind;
    if (kind != ValueKind::String && kind != ValueKind::StdString)
        fail("InvalidArgument", place.text + " is no text");
}

/// Calls `make` with the condition on what is referred to; without one, with that which is compiled to
/// nothing.
template <class Make>
auto withInner(Condition const* condition, Make const& make) {
    return condition == nullptr ? make(query::Anything()) : make(*condition);
}

std::string textOfInner(Condition const* condition) {
    return condition == nullptr ? "" : condition->text();
}

} // namespace

std::shared_ptr<Node const> const& everything() {
    static auto const node = hold(query::Anything());
    return node;
}

char const* symbolOf(Comparison operation) {
    static constexpr char const* symbols[] = {" == ", " != ", " < ", " <= ", " > ", " >= "};
    return symbols[static_cast<int>(operation)];
}

Condition Condition::both(Condition const& other) const {
    return {std::make_shared<Joined<true> const>(node_, other.node_),
            text(Tie::And) + " & " + other.text(Tie::And), Tie::And};
}
Condition Condition::either(Condition const& other) const {
    return {std::make_shared<Joined<false> const>(node_, other.node_),
            text(Tie::Or) + " | " + other.text(Tie::Or), Tie::Or};
}
Condition Condition::negated() const {
    return {std::make_shared<Negated const>(node_), "~(" + text_ + ")"};
}

Condition Place::behindPath(std::shared_ptr<Node const> node, std::string condition) const {
    for (std::size_t i = path.size(); i-- > 0;)
        node = std::make_shared<Through const>(path[i], std::move(node));
    return {std::move(node), std::move(condition)};
}

Condition compareAttribute(Place const& place, Comparison operation, PyObject* value) {
    // Python binds & tighter than ==, so a comparison next to it stands in brackets.
    Condition const condition = place.behindPath(attributeNode(place, operation, value), "");
    return {condition.node(), "(" + place.text + symbolOf(operation) + valueText(value) + ")"};
}

Condition compareReference(Place const& place, bool equal, PyObject* value) {
    ModelElement element;
    if (value != Py_None) {
        if (!isElement(value)) failType(place.text, "an element or None", value);
        element = ModelElement(&bodyOf(asElement(value)));
    }
    query::ReferenceCondition<Relation> const condition(relationOf(place), element, equal);
    // A path that ends early has no element behind it: it is None, and no other.
    bool const missing = (value == Py_None) == equal;
    return place.behindPath(hold(condition, missing),
                            "(" + place.text + (equal ? " == " : " != ") + valueText(value) + ")");
}

Condition testText(Place const& place, query::TextTest kind, char const* name, PyObject* value) {
    requireText(place);
    std::string const text = place.text + '.' + name + '(' + valueText(value) + ')';
    if (place.row().valueKind == ValueKind::String)
        return place.behindPath(
            hold(query::TextCondition<Attribute<std::u16string>>(
                kind, Attribute<std::u16string>({}, place.last), textOf(value, place.text))),
            text);
    return place.behindPath(hold(query::TextCondition<Attribute<std::string>>(
                                kind, Attribute<std::string>({}, place.last), bytesOf(value, place.text))),
                            text);
}

Condition matchText(Place const& place, std::string const& pattern) {
    requireText(place);
    std::string const text = place.text + ".matches(" + py::repr(py::str(pattern)).cast<std::string>() + ")";
    query::Pattern const compiled(pattern);
    if (place.row().valueKind == ValueKind::String)
        return place.behindPath(
            hold(query::MatchCondition<Attribute<std::u16string>>({{}, place.last}, compiled)), text);
    return place.behindPath(hold(query::MatchCondition<Attribute<std::string>>({{}, place.last}, compiled)),
                            text);
}

Condition quantify(Place const& place, query::Quantifier kind, char const* name, Condition const* condition) {
    std::string const text = place.text + '.' + name + '(' + textOfInner(condition) + ')';
    return withInner(condition, [&](auto const& inner) {
        query::QuantifiedCondition<Relation, std::decay_t<decltype(inner)>> const test(
            kind, relationOf(place), inner);
        return place.behindPath(hold(test, kind != query::Quantifier::Any), text);
    });
}

Condition countElements(Place const& place, Condition const* condition, Comparison operation, long number) {
    auto const node = withInner(condition, [&](auto const& inner) {
        using Counted = query::Count<Relation, std::decay_t<decltype(inner)>>;
        return withOperator(operation, [&](auto op) {
            bool const missing = query::detail::compare<decltype(op)>(0L, number);
            return hold(
                query::CountCondition<Counted, decltype(op), long>(Counted(relationOf(place), inner), number),
                missing);
        });
    });
    return place.behindPath(node, "(" + place.text + ".count(" + textOfInner(condition) + ")" +
                                      symbolOf(operation) + std::to_string(number) + ")");
}

Condition testClass(Place const& place, ClassTable const& wanted, bool exactly,
                    std::string const& className) {
    query::ClassCondition<Relation> const condition(relationOf(place), wanted, exactly);
    return place.behindPath(hold(condition),
                            place.text + (exactly ? ".is_exactly(" : ".is_(") + className + ")");
}

Condition isOfClass(ClassTable const& wanted, std::string const& className) {
    return {hold(query::IsACondition(wanted)), "is_a(" + className + ")"};
}

} // namespace zelkor::python
