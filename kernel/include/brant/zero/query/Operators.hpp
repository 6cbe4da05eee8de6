/// \file
/// The operators that make conditions of terms and put conditions together, and how conditions are written
/// out.
#pragma once

#include "brant/zero/query/Condition.hpp"

#include <concepts>
#include <functional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace brant::zero::query {

namespace detail {

template <class T>
concept Text = std::same_as<T, std::string> || std::same_as<T, std::u16string>;
template <class T>
concept Number = std::is_arithmetic_v<T> && !std::same_as<T, bool>;
/// Whether a value can be set against an attribute of type `T`: numbers with numbers, texts with texts of the
/// same width, everything else with its own type.
template <class T, class V>
concept ComparableTo = (Number<T> && Number<V>) || (Text<T> && std::convertible_to<V const&, T>) ||
                       (std::same_as<T, V> && !Text<T>);
template <class T, class V>
using Kept = std::conditional_t<Text<T>, T, V>;

template <class Operator, class Term, class V>
auto compareWith(Term const& term, V const& value) {
    using Place = PlaceOf<Term>;
    return Comparison<Place, Operator, Kept<typename Place::Value, V>>(placeOf(term), value);
}
template <class T>
inline constexpr bool isCount = false;
template <class Place, class Condition>
inline constexpr bool isCount<Count<Place, Condition>> = true;

} // namespace detail

template <class L, class V>
concept EquatableAttribute = IsAttribute<L> && detail::ComparableTo<typename PlaceOf<L>::Value, V>;
template <class L, class V>
concept OrderedAttribute = EquatableAttribute<L, V> &&
    (detail::Number<typename PlaceOf<L>::Value> || detail::Text<typename PlaceOf<L>::Value>);
template <class L, class V>
concept CountedNumber = detail::isCount<L> && std::integral<V> && detail::Number<V>;

#define BRANT_COMPARISON(symbol, Operator, Attribute)                                                        \
    template <class L, class V>                                                                              \
    requires Attribute<L, std::decay_t<V const>>                                                             \
    [[nodiscard]] auto operator symbol(L const& term, V const& value) {                                      \
        return detail::compareWith<Operator, L, std::decay_t<V const>>(term, value);                         \
    }                                                                                                        \
    template <class L, class V>                                                                              \
    requires CountedNumber<L, V>                                                                             \
    [[nodiscard]] auto operator symbol(L const& counted, V value) {                                          \
        return CountCondition<L, Operator, V>(counted, value);                                               \
    }
BRANT_COMPARISON(==, std::equal_to<>, EquatableAttribute)
BRANT_COMPARISON(!=, std::not_equal_to<>, EquatableAttribute)
BRANT_COMPARISON(<, std::less<>, OrderedAttribute)
BRANT_COMPARISON(<=, std::less_equal<>, OrderedAttribute)
BRANT_COMPARISON(>, std::greater<>, OrderedAttribute)
BRANT_COMPARISON(>=, std::greater_equal<>, OrderedAttribute)
#undef BRANT_COMPARISON

template <IsRelation L, std::derived_from<ModelElement> E>
[[nodiscard]] auto operator==(L const& term, E const& element) {
    return ReferenceCondition<PlaceOf<L>>(placeOf(term), element, true);
}
template <IsRelation L, std::derived_from<ModelElement> E>
[[nodiscard]] auto operator!=(L const& term, E const& element) {
    return ReferenceCondition<PlaceOf<L>>(placeOf(term), element, false);
}

template <IsCondition A, IsCondition B>
[[nodiscard]] auto operator&&(A const& a, B const& b) {
    return Connection<A, B, And>(a, b);
}
template <IsCondition A, IsCondition B>
[[nodiscard]] auto operator||(A const& a, B const& b) {
    return Connection<A, B, Or>(a, b);
}
template <IsCondition A>
[[nodiscard]] auto operator!(A const& a) {
    return Negation<A>(a);
}

/// Whether the element is a `Class`, subclasses included.
template <std::derived_from<ModelElement> Class>
[[nodiscard]] IsACondition isA() {
    return IsACondition(Class::Impl::table);
}
/// Whether a function says so; `text` stands for it in print. The function gets a handle.
template <std::derived_from<ModelElement> X, std::predicate<X const&> Function>
[[nodiscard]] auto satisfies(std::string text, Function function) {
    return FunctionCondition<X, Function>(std::move(text), std::move(function));
}

/// \returns the condition in words.
template <IsCondition C>
[[nodiscard]] std::string toText(C const& condition) {
    std::ostringstream out;
    condition.print(out, Loose);
    return out.str();
}
template <IsCondition C>
std::ostream& operator<<(std::ostream& out, C const& condition) {
    condition.print(out, Loose);
    return out;
}

} // namespace brant::zero::query
