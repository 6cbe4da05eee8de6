/// \file
/// Calls of static operations from scripts, made from their functions.
#pragma once

#include "brant/zero/meta/StandardTypes.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"
#include "brant/zero/mi/Methods.hpp"

#include <concepts>
#include <type_traits>
#include <utility>

namespace brant::zero::mi {

/// \returns the primitive type that has the C++ face `T`.
template <class T>
meta::Type const& primitiveType() {
    if constexpr (std::same_as<T, bool>)
        return meta::StandardTypes::boolean();
    else if constexpr (std::same_as<T, double>)
        return meta::StandardTypes::real();
    else if constexpr (std::same_as<T, long>)
        return meta::StandardTypes::integer64();
    else if constexpr (std::same_as<T, unsigned long>)
        return meta::StandardTypes::uInteger64();
    else {
        static_assert(std::same_as<T, std::string>, "no static operation has this type");
        return meta::StandardTypes::stdString();
    }
}

template <class T>
T fromArray(krelArray const& array) {
    if constexpr (std::same_as<T, Model>)
        return modelOf(array);
    else if constexpr (std::derived_from<T, ModelElement>)
        return T(elementOf(array, T::Impl::table).get());
    else
        return MetaMarshalerRegistry::getInstance()
            .getPropertyMarshaler(primitiveType<T>())
            .fromKrelArray(&array)
            .template getValue<T>();
}

template <class T>
quorl::ArrayPtr resultArray(T const& result) {
    if constexpr (std::derived_from<T, ModelElement>)
        return toArray(result, T::Impl::table);
    else
        return MetaMarshalerRegistry::getInstance()
            .getPropertyMarshaler(primitiveType<T>())
            .toKrelArray(Value::own<T>(primitiveType<T>(), ValueFlags::One, result));
}

namespace detail {

template <class Result, class... Arguments, std::size_t... I>
quorl::ArrayPtr callWith(Result (*function)(Arguments...), quorl::Inputs inputs, std::index_sequence<I...>) {
    return resultArray<std::remove_cvref_t<Result>>(
        function(fromArray<std::remove_cvref_t<Arguments>>(*inputs[I])...));
}

template <class Result, class... Arguments>
quorl::ArrayPtr callAll(Result (*function)(Arguments...), quorl::Inputs inputs) {
    return callWith(function, inputs, std::index_sequence_for<Arguments...>());
}

} // namespace detail

/// \requires inputs of the types of the function's parameters, in number too.
template <auto Function>
quorl::ArrayPtr callStatic(quorl::Inputs inputs) {
    return detail::callAll(Function, inputs);
}

} // namespace brant::zero::mi
