/// \file
/// Types whose values have a text of their own, and the registry of them.
#pragma once

#include "brant/zero/Value.hpp"
#include "brant/zero/meta/DatatypeSerializer.hpp"
#include "brant/zero/meta/Enum.hpp"

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/optional/optional.hpp>

#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <utility>
#include <vector>

namespace brant::zero::meta {

/// Turns values of one type into text and back, and makes values of that type. The parsing operations and
/// those that make values take the type that the result gets.
class ZELKOR_API PropertySerializer {
  public:
    virtual ~PropertySerializer();

    /// \returns the text of an optional value; none when the type has no form of its own for it.
    [[nodiscard]] virtual boost::optional<std::u16string> serializeOptionalValue(Value const& value) const;
    /// \returns the value as one of an optional.
    [[nodiscard]] virtual Value toOptionalValue(Value const& value) const;
    /// \returns the text of a value. \throws CannotCastIncompatibleTypes for a value of another type.
    [[nodiscard]] virtual std::u16string serializeValue(Value const& value) const = 0;
    /// \throws boost::bad_lexical_cast for a text that stands for no value, CannotCastIncompatibleTypes when
    /// `type` is not the serializer's type.
    [[nodiscard]] virtual Value parseValue(std::u16string const& text, Type const& type) const = 0;
    /// The same for an optional.
    [[nodiscard]] virtual Value parseOptionalValue(std::u16string const& text, Type const& type) const = 0;
    /// \returns an absent value.
    [[nodiscard]] virtual Value createEmptyOptionalValue(Type const& type) const = 0;
    /// \returns the value that a field has before anything is known of it: zero, false, an empty text.
    [[nodiscard]] virtual Value createDefaultValue(Type const& type) const = 0;
    virtual void releaseValue(Value&& value, Type const& type) const;
    /// \returns a value that owns a list of the given ones. \throws CannotCastIncompatibleTypes for a value
    /// of another type.
    [[nodiscard]] virtual Value combineAsUnmanagedSequenceValue(Type const& type,
                                                                std::vector<Value> const& values) const = 0;
    /// \returns a value that owns a set of the given ones; equal ones collapse. \throws
    /// CannotCastIncompatibleTypes.
    [[nodiscard]] virtual Value combineAsUnmanagedSetValue(Type const& type,
                                                           std::vector<Value> const& values) const = 0;
};

/// What the serializers of a C++ type have in common; the text form is left to the derived class.
template <class T>
class DefaultPropertySerializer : public PropertySerializer {
  public:
    [[nodiscard]] std::u16string serializeValue(Value const& value) const override {
        return toText(value.getValue<T>());
    }
    [[nodiscard]] Value parseValue(std::u16string const& text, Type const& type) const override {
        return checkedValue<T, T>(type, fromText(text, type));
    }
    [[nodiscard]] Value parseOptionalValue(std::u16string const& text, Type const& type) const override {
        return checkedValue<T, boost::optional<T>>(type, fromText(text, type));
    }
    [[nodiscard]] Value createEmptyOptionalValue(Type const& type) const override {
        return Value(ValueMeta(type, ValueFlags::Absent));
    }
    [[nodiscard]] Value createDefaultValue(Type const& type) const override {
        return Value::own<T>(type, ValueFlags::One, T{});
    }
    [[nodiscard]] Value combineAsUnmanagedSequenceValue(Type const& type,
                                                        std::vector<Value> const& values) const override {
        return combineValues<std::vector<T>>(type, values);
    }
    [[nodiscard]] Value combineAsUnmanagedSetValue(Type const& type,
                                                   std::vector<Value> const& values) const override {
        return combineValues<std::set<T>>(type, values);
    }

    [[nodiscard]] virtual std::u16string toText(T const& value) const = 0;
    /// \throws boost::bad_lexical_cast.
    [[nodiscard]] virtual T fromText(std::u16string const& text, Type const& type) const = 0;
};

namespace internal {

/// \returns the name of the first literal, in the order of names, that has this number; empty when none has.
[[nodiscard]] ZELKOR_API std::u16string literalName(Enum const& type, std::int64_t number);
/// \returns the number of the literal of that very name. \throws boost::bad_lexical_cast when there is none.
[[nodiscard]] ZELKOR_API std::int64_t literalNumber(Enum const& type, std::u16string const& name);

} // namespace internal

/// Writes an enumeration as the names of its literals. A number without a literal becomes an empty text,
/// which does not read back. Linear in the number of literals when writing, logarithmic when reading.
template <SchemaEnumeration E>
class EnumPropertySerializerAsName final : public DefaultPropertySerializer<E> {
  public:
    explicit EnumPropertySerializerAsName(Enum type) : type_(std::move(type)) {}

    [[nodiscard]] std::u16string toText(E const& value) const override {
        return internal::literalName(type_, static_cast<int>(value));
    }
    [[nodiscard]] E fromText(std::u16string const& text, Type const&) const override {
        return static_cast<E>(static_cast<int>(internal::literalNumber(type_, text)));
    }

  private:
    Enum type_;
};

/// The serializers of all types of the process. Made on first use and never destroyed; any thread may look
/// up.
class ZELKOR_API PropertySerializerRegistry {
  public:
    static PropertySerializerRegistry& getInstance();

    /// Takes the place of what was registered for the type under this key, which ends then: whoever still
    /// holds it must be done with it. Readers and writers of files use the key "".
    void registerPropertySerializer(Type const& type, std::unique_ptr<PropertySerializer> serializer,
                                    std::string const& key);
    void registerDatatypeSerializer(DataType const& type, std::unique_ptr<DatatypeSerializer> serializer);

    /// \returns the serializer, or null. The eight primitives have theirs from the start, under the key "".
    [[nodiscard]] PropertySerializer const* getPropertySerializer(Type const& type,
                                                                  std::string const& key = {}) const;
    /// \returns the serializer, or null.
    [[nodiscard]] DatatypeSerializer const* getDatatypeSerializer(Type const& type) const;

  private:
    PropertySerializerRegistry() = default;

    mutable std::shared_mutex mutex_;
    std::map<std::pair<ElementImpl const*, std::string>, std::unique_ptr<PropertySerializer>> serializers_;
    std::map<ElementImpl const*, std::unique_ptr<DatatypeSerializer>> datatypes_;
};

} // namespace brant::zero::meta
