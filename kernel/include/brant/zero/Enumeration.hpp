/// \file
/// How the kernel learns of an enumeration of the schema.
#pragma once

#include "brant/zero/Export.hpp"
#include "brant/zero/Schema.hpp"

#include <concepts>
#include <type_traits>

namespace brant::zero {

/// Specialised for each enumeration of a schema: `static schema::EnumTable const table`.
template <class E>
struct EnumerationTraits;

template <class E>
concept SchemaEnumeration = std::is_enum_v<E> && requires {
    { EnumerationTraits<E>::table } -> std::convertible_to<schema::EnumTable const&>;
};

/// A value type of the schema: a record with `static schema::DatatypeTable const table`.
template <class T>
concept SchemaDatatype = std::is_class_v<T> && requires {
    { T::table } -> std::convertible_to<schema::DatatypeTable const&>;
};

} // namespace brant::zero
