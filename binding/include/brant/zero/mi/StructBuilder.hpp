/// \file
/// Builders and identities from script values.
#pragma once

#include "brant/zero/Builder.hpp"
#include "brant/zero/Uuid.hpp"
#include "brant/zero/mi/ValueMarshaler.hpp"

#include <memory>

namespace brant::zero::mi {

/// The field of an init that names the class to make instead of the declared one: a class of the metamodel,
/// or the script or model name of a class.
inline constexpr char metaClassField[] = "MetaClass";

namespace detail {

/// A builder on the model with the values of one struct of the array. Each field names a property of the
/// class or is `MetaClass`; a field without value is left out. What a property owns is given as structs, one
/// for each element, nested as deep as need be; all else as the property itself would take it. \throws
/// NoSuchProperty, CannotSetReadOnlyProperty, InvalidValue when an owned property gets no structs,
/// CannotInstantiate for an abstract class, and what the marshalers report.
[[nodiscard]] ZELKOR_API std::unique_ptr<Builder> createBuilderFromStruct(krelArray const& init,
                                                                          std::size_t index,
                                                                          Model const& model,
                                                                          meta::Class const& metaClass);
/// The same for a place where only an init may stand: \throws InvalidValue unless the array is a struct of
/// one element.
[[nodiscard]] ZELKOR_API std::unique_ptr<Builder> createBuilderFromStructFirst(krelArray const& init,
                                                                               std::size_t index,
                                                                               Model const& model,
                                                                               meta::Class const& metaClass);
/// A builder without values. \throws CannotInstantiate for an abstract class.
[[nodiscard]] ZELKOR_API std::unique_ptr<Builder> createEmptyBuilder(Model const& model,
                                                                     meta::Class const& metaClass);
/// \returns the identity that a text spells. \throws InvalidValue for all else.
[[nodiscard]] ZELKOR_API boost::uuids::uuid extractUuid(krelArray const& value);

} // namespace detail

} // namespace brant::zero::mi
