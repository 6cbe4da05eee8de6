/// \file
/// Questions about meta objects that need more than one property.
#pragma once

#include "brant/zero/meta/Class.hpp"
#include "brant/zero/meta/Type.hpp"

#include <string>

namespace brant::zero::meta {

/// \returns the dotted name: packages without the nameless root, then the type; a primitive's simple name.
[[nodiscard]] ZELKOR_API std::u16string qualifiedName(Type const& type);
/// The same as bytes, for messages and text forms.
[[nodiscard]] ZELKOR_API std::string qualifiedNameUtf8(Type const& type);
/// \returns the dotted name of the property: that of its owner, then its own.
[[nodiscard]] ZELKOR_API std::u16string qualifiedName(Property const& property);
/// \returns whether `cls` is `other` or one of its subclasses. A null class is none.
[[nodiscard]] ZELKOR_API bool isSubclassOf(Class const& cls, Class const& other);
/// \returns a builder of the class on that model, or null for an abstract class.
[[nodiscard]] ZELKOR_API std::unique_ptr<Builder> instantiateBuilder(Class const& cls, Model const& model);
/// \returns the class table behind a class, or null for one that was not made from a table.
[[nodiscard]] ZELKOR_API schema::ClassTable const* tableOf(Class const& cls) noexcept;

} // namespace brant::zero::meta
