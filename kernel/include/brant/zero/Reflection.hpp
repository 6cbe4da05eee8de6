/// \file
/// Reading and writing by property: one algorithm per kind of property, for all classes.
#pragma once

#include "brant/zero/Collection.hpp"
#include "brant/zero/Value.hpp"

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace brant::zero {

/// \returns a value of a derived property.
[[nodiscard]] ZELKOR_API Value derivedValue(schema::PropertyRow const& row, bool value);
/// \returns a value of a derived property that yields a list of elements.
template <class T>
[[nodiscard]] Value derivedValue(schema::PropertyRow const& row, std::vector<T> elements) {
    return Value::ownContainer(Core::propertyOf(&row).getType(), std::move(elements));
}
/// \returns the element as a value of its own class, or of the property's type when the handle is null.
[[nodiscard]] ZELKOR_API Value elementValue(meta::Property const& property, ModelElement const& element);
/// \returns a scalar of the property's type from the bits of a field.
[[nodiscard]] ZELKOR_API Value scalarValue(meta::Property const& property, schema::PropertyRow const& row,
                                           std::uint64_t bits);
[[nodiscard]] ZELKOR_API Value oldAttribute(meta::Property const& property, schema::PropertyRow const& row,
                                            std::uint64_t bits);
[[nodiscard]] ZELKOR_API Value oldAttribute(meta::Property const& property, schema::PropertyRow const& row,
                                            std::string const& text);
[[nodiscard]] ZELKOR_API Value oldAttribute(meta::Property const& property, schema::PropertyRow const& row,
                                            std::u16string const& text);
[[nodiscard]] inline Value oldAttribute(meta::Property const&, schema::PropertyRow const&,
                                        ModelElement const&) {
    return Value();
}
[[nodiscard]] inline Value oldAttribute(meta::Property const&, schema::PropertyRow const&, std::monostate) {
    return Value();
}
/// \returns an empty, detached collection of the property's kind.
[[nodiscard]] ZELKOR_API std::unique_ptr<AbstractOwnedCollection>
emptyCollection(meta::Property const& property);

} // namespace brant::zero
