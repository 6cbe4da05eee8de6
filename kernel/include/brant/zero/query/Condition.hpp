/// \file
/// Conditions: values that say of an element whether something holds, and print themselves.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "brant/zero/TypedAccess.hpp"
#include "brant/zero/query/Pattern.hpp"
#include "brant/zero/query/Place.hpp"

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace brant::zero::query {

template <class C>
concept IsCondition = std::derived_from<C, ConditionBase>;
template <class L>
concept IsAttribute = requires(L const& term) {
    typename std::remove_cvref_t<decltype(placeOf(term))>::Value;
};
template <class L>
concept IsRelation = requires(L const& term) {
    typename std::remove_cvref_t<decltype(placeOf(term))>::Target;
};
template <class Term>
using PlaceOf = std::remove_cvref_t<decltype(placeOf(std::declval<Term const&>()))>;

// Values in print: texts quoted, enumerations by name, elements by identity.

ZELKOR_API void printValue(std::ostream& out, std::string_view value);
ZELKOR_API void printValue(std::ostream& out, std::u16string_view value);
ZELKOR_API void printValue(std::ostream& out, ModelElementImpl const* value);
ZELKOR_API void printLiteral(std::ostream& out, schema::EnumTable const& enumeration, int number);
template <class T>
requires std::is_arithmetic_v<T>
void printValue(std::ostream& out, T value) {
    if constexpr (std::same_as<T, bool>)
        out << (value ? "true" : "false");
    else
        out << value;
}
template <SchemaEnumeration T>
void printValue(std::ostream& out, T value) {
    printLiteral(out, EnumerationTraits<T>::table, static_cast<int>(value));
}

namespace detail {

/// \returns the name of a comparison.
template <class Operator>
constexpr char const* symbolOf() {
    if constexpr (std::same_as<Operator, std::equal_to<>>)
        return " == ";
    else if constexpr (std::same_as<Operator, std::not_equal_to<>>)
        return " != ";
    else if constexpr (std::same_as<Operator, std::less<>>)
        return " < ";
    else if constexpr (std::same_as<Operator, std::less_equal<>>)
        return " <= ";
    else if constexpr (std::same_as<Operator, std::greater<>>)
        return " > ";
    else
        return " >= ";
}

/// Numbers by their value, whatever their types: no unsigned number is below zero.
template <class Operator, class A, class B>
[[nodiscard]] constexpr bool compare(A const& a, B const& b) {
    if constexpr (std::integral<A> && std::integral<B> && !std::same_as<A, bool>) {
        if constexpr (std::same_as<Operator, std::equal_to<>>)
            return std::cmp_equal(a, b);
        else if constexpr (std::same_as<Operator, std::not_equal_to<>>)
            return std::cmp_not_equal(a, b);
        else if constexpr (std::same_as<Operator, std::less<>>)
            return std::cmp_less(a, b);
        else if constexpr (std::same_as<Operator, std::less_equal<>>)
            return std::cmp_less_equal(a, b);
        else if constexpr (std::same_as<Operator, std::greater<>>)
            return std::cmp_greater(a, b);
        else
            return std::cmp_greater_equal(a, b);
    } else
        return Operator()(a, b);
}

} // namespace detail

/// Compares an attribute with a value.
template <class Place, class Operator, class V>
class Comparison : public ConditionBase {
  public:
    using Subject = typename Place::Subject;

    Comparison(Place place, V value) : place_(std::move(place)), value_(std::move(value)) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        auto const* const field = place_.read(element);
        return field != nullptr && detail::compare<Operator>(*field, value_);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << detail::symbolOf<Operator>();
        printValue(out, value_);
    }

  private:
    Place place_;
    V value_;
};

/// Asks where in an attribute a text stands.
template <class Place>
class TextCondition : public ConditionBase {
  public:
    using Subject = typename Place::Subject;

    TextCondition(TextTest kind, Place place, typename Place::Value text)
        : place_(std::move(place)), text_(std::move(text)), kind_(kind) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        auto const* const field = place_.read(element);
        if (field == nullptr) return false;
        switch (kind_) {
        case TextTest::StartsWith:
            return field->starts_with(text_);
        case TextTest::EndsWith:
            return field->ends_with(text_);
        default:
            return field->find(text_) != Place::Value::npos;
        }
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << (kind_ == TextTest::StartsWith ? ".startsWith("
                : kind_ == TextTest::EndsWith ? ".endsWith("
                                              : ".contains(");
        printValue(out, text_);
        out << ')';
    }

  private:
    Place place_;
    typename Place::Value text_;
    TextTest kind_;
};

/// Matches an attribute with a pattern.
template <class Place>
class MatchCondition : public ConditionBase {
  public:
    using Subject = typename Place::Subject;

    MatchCondition(Place place, Pattern pattern) : place_(std::move(place)), pattern_(std::move(pattern)) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        auto const* const field = place_.read(element);
        return field != nullptr && pattern_.matches(*field);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << ".matches(";
        printValue(out, pattern_.text());
        out << ')';
    }

  private:
    Place place_;
    Pattern pattern_;
};

/// Asks how many of the elements that are referred to meet a condition: some, all or none.
template <class Place, class Condition>
class QuantifiedCondition : public ConditionBase {
  public:
    static_assert(IsCondition<Condition>, "a condition on what is referred to is expected here");
    static_assert(std::derived_from<typename Place::Target, typename Condition::Subject>,
                  "the condition is about another class than the reference leads to");
    using Subject = typename Place::Subject;

    QuantifiedCondition(Quantifier kind, Place place, Condition condition)
        : place_(std::move(place)), condition_(std::move(condition)), kind_(kind) {
        requireSubject(place_.target(), condition_.subject());
    }
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        bool const sought = kind_ != Quantifier::All;
        bool const found = place_.some(
            element, [&](ModelElementImpl const& member) { return condition_.test(member) == sought; });
        return found == (kind_ == Quantifier::Any);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << (kind_ == Quantifier::Any ? ".any(" : kind_ == Quantifier::All ? ".all(" : ".none(");
        condition_.print(out, Loose);
        out << ')';
    }

  private:
    Place place_;
    Condition condition_;
    Quantifier kind_;
};

/// The number of elements that are referred to and meet a condition. No condition itself: compare it with a
/// number.
template <class Place, class Condition>
class Count {
  public:
    static_assert(IsCondition<Condition>, "a condition on what is referred to is expected here");
    static_assert(std::derived_from<typename Place::Target, typename Condition::Subject>,
                  "the condition is about another class than the reference leads to");
    using Subject = typename Place::Subject;

    Count(Place place, Condition condition) : place_(std::move(place)), condition_(std::move(condition)) {
        requireSubject(place_.target(), condition_.subject());
    }
    /// As a place does: never null.
    [[nodiscard]] std::size_t of(ModelElementImpl const& element) const {
        std::size_t number = 0;
        (void)place_.some(element, [&](ModelElementImpl const& member) {
            number += condition_.test(member);
            return false;
        });
        return number;
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out) const {
        place_.print(out);
        out << ".count(";
        condition_.print(out, Loose);
        out << ')';
    }

  private:
    Place place_;
    Condition condition_;
};

template <class Counted, class Operator, class V>
class CountCondition : public ConditionBase {
  public:
    using Subject = typename Counted::Subject;

    CountCondition(Counted counted, V value) : counted_(std::move(counted)), value_(value) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        return detail::compare<Operator>(counted_.of(element), value_);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return counted_.subject(); }
    void print(std::ostream& out, Binding) const {
        counted_.print(out);
        out << detail::symbolOf<Operator>();
        printValue(out, value_);
    }

  private:
    Counted counted_;
    V value_;
};

/// Asks for the class of what a single reference refers to.
template <class Place>
class ClassCondition : public ConditionBase {
  public:
    using Subject = typename Place::Subject;

    ClassCondition(Place place, schema::ClassTable const& wanted, bool exactly)
        : place_(std::move(place)), wanted_(&wanted), exactly_(exactly) {
        requireSingle(place_.last());
    }
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        ModelElementImpl const* const target = place_.read(element);
        if (target == nullptr) return false;
        schema::ClassTable const& table = target->classTable();
        return exactly_ ? &table == wanted_ : table.conformsTo(*wanted_);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << (exactly_ ? ".isExactly(" : ".is(") << wanted_->shortName << ')';
    }

  private:
    Place place_;
    schema::ClassTable const* wanted_;
    bool exactly_;
};

/// Asks whether a single reference refers to a given element, or to nothing.
template <class Place>
class ReferenceCondition : public ConditionBase {
  public:
    using Subject = typename Place::Subject;

    ReferenceCondition(Place place, ModelElement element, bool equal)
        : place_(std::move(place)), element_(std::move(element)), equal_(equal) {
        requireSingle(place_.last());
    }
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        return (place_.read(element) == (element_ ? element_.get() : nullptr)) == equal_;
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return place_.subject(); }
    void print(std::ostream& out, Binding) const {
        place_.print(out);
        out << (equal_ ? " == " : " != ");
        printValue(out, element_ ? element_.get() : nullptr);
    }

  private:
    Place place_;
    ModelElement element_;
    bool equal_;
};

/// Asks for the class of the element itself.
class ZELKOR_API IsACondition : public ConditionBase {
  public:
    using Subject = ModelElement;
    explicit IsACondition(schema::ClassTable const& wanted) noexcept : wanted_(&wanted) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const noexcept {
        return element.classTable().conformsTo(*wanted_);
    }
    [[nodiscard]] static schema::ClassTable const& subject() noexcept { return modelElementTable; }
    void print(std::ostream& out, Binding binding) const;

  private:
    schema::ClassTable const* wanted_;
};

/// Asks a function of the caller's.
template <class X, class Function>
class FunctionCondition : public ConditionBase {
  public:
    using Subject = X;
    FunctionCondition(std::string text, Function function)
        : text_(std::move(text)), function_(std::move(function)) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        return function_(handleOn<X>(const_cast<ModelElementImpl*>(&element)));
    }
    [[nodiscard]] static schema::ClassTable const& subject() noexcept { return X::Impl::table; }
    void print(std::ostream& out, Binding) const { out << '[' << text_ << ']'; }

  private:
    std::string text_;
    Function function_;
};

namespace detail {

/// The more special of two classes, one of which must be a subclass of the other.
template <class A, class B>
using Narrower = std::conditional_t<std::derived_from<A, B>, A, B>;

/// \returns the class that both conditions can be asked of. \throws std::invalid_argument when there is none.
ZELKOR_API schema::ClassTable const& commonSubject(schema::ClassTable const& a, schema::ClassTable const& b);

} // namespace detail

/// Both, or one of two.
template <class A, class B, Binding Kind>
class Connection : public ConditionBase {
  public:
    using Subject = detail::Narrower<typename A::Subject, typename B::Subject>;
    static_assert(std::derived_from<Subject, typename A::Subject> &&
                      std::derived_from<Subject, typename B::Subject>,
                  "the two conditions are about classes of which neither is a subclass of the other");

    Connection(A a, B b)
        : a_(std::move(a)), b_(std::move(b)), subject_(&detail::commonSubject(a_.subject(), b_.subject())) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const {
        if constexpr (Kind == And)
            return a_.test(element) && b_.test(element);
        else
            return a_.test(element) || b_.test(element);
    }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return *subject_; }
    void print(std::ostream& out, Binding binding) const {
        if (binding > Kind) out << '(';
        a_.print(out, Kind);
        out << (Kind == And ? " && " : " || ");
        b_.print(out, Kind);
        if (binding > Kind) out << ')';
    }

  private:
    A a_;
    B b_;
    schema::ClassTable const* subject_;
};

template <class A>
class Negation : public ConditionBase {
  public:
    using Subject = typename A::Subject;
    explicit Negation(A a) : a_(std::move(a)) {}
    [[nodiscard]] bool test(ModelElementImpl const& element) const { return !a_.test(element); }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return a_.subject(); }
    void print(std::ostream& out, Binding) const {
        out << "!(";
        a_.print(out, Loose);
        out << ')';
    }

  private:
    A a_;
};

/// Any condition that can be asked of an `X`, as one type. Costs an indirect call; copies share.
template <class X>
class Condition : public ConditionBase {
  public:
    using Subject = X;

    template <IsCondition C>
    requires(!std::same_as<C, Condition> && std::derived_from<X, typename C::Subject>)
        // NOLINTNEXTLINE(google-explicit-constructor): it is the same condition
        Condition(C condition)
        : held_(std::make_shared<Held<C> const>(std::move(condition))) {
        requireSubject(X::Impl::table, held_->subject());
    }
    [[nodiscard]] bool test(ModelElementImpl const& element) const { return held_->test(element); }
    [[nodiscard]] bool test(X const& element) const { return held_->test(*element.get()); }
    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return held_->subject(); }
    void print(std::ostream& out, Binding binding) const { held_->print(out, binding); }

  private:
    struct Holder {
        virtual ~Holder() = default;
        [[nodiscard]] virtual bool test(ModelElementImpl const& element) const = 0;
        [[nodiscard]] virtual schema::ClassTable const& subject() const noexcept = 0;
        virtual void print(std::ostream& out, Binding binding) const = 0;
    };
    template <class C>
    struct Held final : Holder {
        explicit Held(C c) : condition(std::move(c)) {}
        bool test(ModelElementImpl const& element) const override { return condition.test(element); }
        schema::ClassTable const& subject() const noexcept override { return condition.subject(); }
        void print(std::ostream& out, Binding binding) const override { condition.print(out, binding); }
        C condition;
    };
    std::shared_ptr<Holder const> held_;
};

// What the places promise.

template <class Owner, class T, std::size_t Depth>
TextCondition<AttributePlace<Owner, T, Depth>>
AttributePlace<Owner, T, Depth>::startsWith(T const& text) const {
    return {TextTest::StartsWith, *this, text};
}
template <class Owner, class T, std::size_t Depth>
TextCondition<AttributePlace<Owner, T, Depth>>
AttributePlace<Owner, T, Depth>::endsWith(T const& text) const {
    return {TextTest::EndsWith, *this, text};
}
template <class Owner, class T, std::size_t Depth>
TextCondition<AttributePlace<Owner, T, Depth>>
AttributePlace<Owner, T, Depth>::contains(T const& text) const {
    return {TextTest::Contains, *this, text};
}
template <class Owner, class T, std::size_t Depth>
MatchCondition<AttributePlace<Owner, T, Depth>>
AttributePlace<Owner, T, Depth>::matches(Pattern const& pattern) const {
    return {*this, pattern};
}
template <class Owner, class T, std::size_t Depth>
MatchCondition<AttributePlace<Owner, T, Depth>>
AttributePlace<Owner, T, Depth>::matches(std::string const& pattern) const {
    return {*this, Pattern(pattern)};
}
template <class Owner, class T, std::size_t Depth>
template <std::derived_from<T> Class>
ClassCondition<RelationPlace<Owner, T, Depth>> RelationPlace<Owner, T, Depth>::is() const {
    return {*this, Class::Impl::table, false};
}
template <class Owner, class T, std::size_t Depth>
template <std::derived_from<T> Class>
ClassCondition<RelationPlace<Owner, T, Depth>> RelationPlace<Owner, T, Depth>::isExactly() const {
    return {*this, Class::Impl::table, true};
}
template <class Owner, class T, std::size_t Depth>
ReferenceCondition<RelationPlace<Owner, T, Depth>> RelationPlace<Owner, T, Depth>::isNull() const {
    return {*this, ModelElement(), true};
}

} // namespace brant::zero::query
