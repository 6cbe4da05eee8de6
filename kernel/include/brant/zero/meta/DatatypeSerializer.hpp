/// \file
/// Types whose values are written field by field.
#pragma once

#include "brant/zero/Value.hpp"
#include "brant/zero/meta/DataType.hpp"

#include <boost/optional/optional.hpp>

#include <set>
#include <vector>

namespace brant::zero::meta {

/// \returns a value of the type that can be read as `As`. \throws CannotCastIncompatibleTypes when it cannot.
template <class T, class As>
[[nodiscard]] Value checkedValue(Type const& type, T payload) {
    Value value = Value::own<T>(type, ValueFlags::One, std::move(payload));
    value.checkCompatible<As>();
    return value;
}

/// \returns a value that owns a `C` of the payloads of the given ones. \throws CannotCastIncompatibleTypes.
template <class C>
[[nodiscard]] Value combineValues(Type const& type, std::vector<Value> const& values) {
    C members;
    if constexpr (requires { members.reserve(values.size()); }) members.reserve(values.size());
    for (Value const& value : values)
        members.insert(members.end(), value.getValue<typename C::value_type>());
    Value combined = Value::ownContainer(type, std::move(members));
    combined.checkCompatible<C>();
    return combined;
}

/// Lets the values of a datatype be read and written as records of properties.
class ZELKOR_API DatatypeSerializer {
  public:
    virtual ~DatatypeSerializer();

    /// \returns the value in an optional; none when the type has no form of its own for it.
    [[nodiscard]] virtual boost::optional<Value> fromOptionalValue(Value const& value) const;
    /// \returns the value as one of an optional.
    [[nodiscard]] virtual Value toOptionalValue(Value const& value) const;
    /// \returns one field, as a value of the property's type.
    /// \throws NoSuchProperty when the datatype has no such property, CannotCastIncompatibleTypes for a value
    /// of another type.
    [[nodiscard]] virtual Value getPropertyValue(Value const& value, Property const& property) const = 0;
    /// \returns a copy of `value` with one field changed; `value` stays as it is. \throws as
    /// `getPropertyValue`.
    [[nodiscard]] virtual Value setPropertyValue(Value const& value, Property const& property,
                                                 Value const& fieldValue) const = 0;
    /// \returns an absent value.
    [[nodiscard]] virtual Value createEmptyOptionalValue() const = 0;
    /// \returns a value whose fields have the defaults of the schema.
    [[nodiscard]] virtual Value createDefaultValue() const = 0;
    /// \returns a value that owns a list of the given ones. \throws CannotCastIncompatibleTypes for a value
    /// of another type.
    [[nodiscard]] virtual Value combineAsUnmanagedSequenceValue(Type const& type,
                                                                std::vector<Value> const& values) const = 0;
    /// \returns a value that owns a set of the given ones; equal ones collapse. \throws
    /// CannotCastIncompatibleTypes.
    [[nodiscard]] virtual Value combineAsUnmanagedSetValue(Type const& type,
                                                           std::vector<Value> const& values) const = 0;
};

/// What the serializers of datatypes have in common; access to the fields is left to the derived class.
template <SchemaDatatype T>
class DefaultDatatypeSerializer : public DatatypeSerializer {
  public:
    [[nodiscard]] Value getPropertyValue(Value const& value, Property const& property) const override {
        return doGetPropertyValue(value.getValue<T>(), property);
    }
    [[nodiscard]] Value setPropertyValue(Value const& value, Property const& property,
                                         Value const& fieldValue) const override {
        T changed = value.getValue<T>();
        doSetPropertyValue(changed, property, fieldValue);
        return checkedValue<T, T>(type(), std::move(changed));
    }
    [[nodiscard]] Value createEmptyOptionalValue() const override {
        return Value(ValueMeta(type(), ValueFlags::Absent));
    }
    [[nodiscard]] Value createDefaultValue() const override { return checkedValue<T, T>(type(), T()); }
    [[nodiscard]] Value combineAsUnmanagedSequenceValue(Type const& type,
                                                        std::vector<Value> const& values) const override {
        return combineValues<std::vector<T>>(type, values);
    }
    [[nodiscard]] Value combineAsUnmanagedSetValue(Type const& type,
                                                   std::vector<Value> const& values) const override {
        return combineValues<std::set<T>>(type, values);
    }

  protected:
    virtual Value doGetPropertyValue(T const& object, Property const& property) const = 0;
    virtual void doSetPropertyValue(T& object, Property const& property, Value const& fieldValue) const = 0;

  private:
    static Type type() { return Type(static_cast<ModelElementImpl*>(T::table.object)); }
};

} // namespace brant::zero::meta
