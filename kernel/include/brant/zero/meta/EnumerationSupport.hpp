/// \file
/// What the registries must know of an enumeration or value type. For the assembly of meta packages: a file
/// that calls one of the two templates also needs the bodies of the collections of primitives.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/PropertySerializer.hpp"

#include <memory>

namespace brant::zero {

namespace meta::internal {

using CollectionMaker = std::unique_ptr<AbstractOwnedCollection> (*)(ModelElementImpl* owner,
                                                                     Property const& property);
using SerializerMaker = std::unique_ptr<PropertySerializer> (*)(Enum const& type);

ZELKOR_API void registerEnumeration(Enum const& type, schema::EnumTable const& table,
                                    CollectionMaker collections, SerializerMaker serializer);
ZELKOR_API void registerDatatype(DataType const& type, schema::DatatypeTable const& table,
                                 CollectionMaker collections, std::unique_ptr<DatatypeSerializer> serializer);

template <class T>
std::unique_ptr<AbstractOwnedCollection> makeCollection(ModelElementImpl* owner, Property const& property) {
    schema::PropertyRow const& row = Core::rowOf(property);
    if (row.ordered()) return std::make_unique<Standalone<PrimitiveSequence<T>>>(owner, row);
    return std::make_unique<Standalone<PrimitiveSet<T>>>(owner, row);
}

template <SchemaEnumeration E>
std::unique_ptr<PropertySerializer> makeSerializer(Enum const& type) {
    return std::make_unique<EnumPropertySerializerAsName<E>>(type);
}

} // namespace meta::internal

/// Makes an enumeration known: its names, its collections, and its text form under each of the keys "", "ID"
/// and "PublicID". It has no builders.
template <SchemaEnumeration E>
void registerEnumeration(meta::Enum const& type) {
    meta::internal::registerEnumeration(type, EnumerationTraits<E>::table, &meta::internal::makeCollection<E>,
                                        &meta::internal::makeSerializer<E>);
}

/// Makes a value type known: its names, its collections and the access to its fields. It has no builders.
template <SchemaDatatype T>
void registerDatatype(meta::DataType const& type, std::unique_ptr<meta::DatatypeSerializer> serializer) {
    meta::internal::registerDatatype(type, T::table, &meta::internal::makeCollection<T>,
                                     std::move(serializer));
}

} // namespace brant::zero
