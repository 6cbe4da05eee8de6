/// \file
/// The universal value: how a property value travels between the reflective and the typed side.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "brant/zero/Hash.hpp"
#include "brant/zero/Model.hpp"
#include "brant/zero/meta/Class.hpp"
#include "brant/zero/meta/Property.hpp"
#include "brant/zero/meta/Type.hpp"

#include <boost/optional/optional.hpp>

#include <cassert>
#include <concepts>
#include <cstdint>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace brant::zero {

/// The shape of a value.
enum class ValueFlags : std::uint32_t {
    Absent = 0,   ///< an empty optional
    One = 1,      ///< one primitive, enumeration, datatype or element
    Sequence = 2, ///< an ordered collection
    Set = 3,      ///< an unordered collection
    Map = 6       ///< a keyed collection
};

/// Type and shape of a value.
class ZELKOR_API ValueMeta {
  public:
    ValueMeta() noexcept = default;
    ValueMeta(meta::Type type, ValueFlags flags) noexcept : type_(std::move(type)), flags_(flags) {}
    /// The form of a many-valued property: type, property and shape follow from the property.
    explicit ValueMeta(meta::Property const& property);

    /// \returns the dynamic type: an element's class, the declared type for a null element, of a collection
    /// the type of its members.
    [[nodiscard]] meta::Type const& getType() const noexcept { return type_; }
    /// \returns the property of a collection value, else a null handle.
    [[nodiscard]] meta::Property const& getProperty() const noexcept { return property_; }
    [[nodiscard]] ValueFlags flags() const noexcept { return flags_; }
    /// \returns true unless the value owns a copy of a collection.
    [[nodiscard]] bool isManaged() const noexcept { return managed_; }
    void setUnmanaged() noexcept { managed_ = false; }

  private:
    meta::Type type_;
    meta::Property property_;
    ValueFlags flags_ = ValueFlags::Absent;
    bool managed_ = true;
};

namespace value {

/// The type-erased operations on a payload.
struct Operations {
    std::type_info const* payload;
    void (*destroy)(void*) noexcept;
    void* (*clone)(void const*);
    bool (*equal)(void const*, void const*);
    std::uint64_t (*hash)(void const*);
};

template <class T>
concept Primitive = std::same_as<T, bool> || std::same_as<T, int> || std::same_as<T, unsigned int> ||
    std::same_as<T, long> || std::same_as<T, unsigned long> || std::same_as<T, double> ||
    std::same_as<T, std::string> || std::same_as<T, std::u16string>;

template <class T>
concept Element = std::derived_from<T, ModelElement>;

/// What is copied as a whole: everything but elements.
template <class T>
concept Plain = Primitive<T> || SchemaEnumeration<T> || SchemaDatatype<T>;

template <class T>
struct Optional : std::false_type {};
template <class T>
struct Optional<boost::optional<T>> : std::true_type {
    using Inner = T;
};

template <class T>
struct Container : std::false_type {};
template <class T>
struct Container<std::vector<T>> : std::true_type {
    using Inner = T;
    template <class U>
    using Of = std::vector<U>;
    static constexpr ValueFlags flags = ValueFlags::Sequence;
};
template <class T>
struct Container<std::set<T>> : std::true_type {
    using Inner = T;
    template <class U>
    using Of = std::set<U>;
    static constexpr ValueFlags flags = ValueFlags::Set;
};

} // namespace value

/// A value with its type.
///
/// It owns a heap copy of its payload, unless it refers to the live collection of an element (managed, shape
/// not `One`): such a value must not outlive the element. Copies are deep; a moved-from value has no payload.
///
/// `T` stands for a primitive (`bool`, `int`, `unsigned int`, `long`, `unsigned long`, `double`,
/// `std::string`, `std::u16string`), an enumeration or value type of a schema, a handle class,
/// `boost::optional` of one of the first three, or `std::vector` or `std::set` of any of these.
class ZELKOR_API Value : public ValueMeta {
  public:
    Value() noexcept = default;
    /// A value without payload: absent, or one that reads as the default of its type.
    explicit Value(ValueMeta meta) noexcept : ValueMeta(std::move(meta)) {}
    /// An enumeration value: the payload is the word, sign-extended from the literal.
    Value(meta::Type const& type, unsigned long const& word, ValueFlags flags);
    Value(Value const& other);
    Value(Value&& other) noexcept;
    Value& operator=(Value other) noexcept;
    ~Value();

    /// A value of the property's type. \throws CannotCastIncompatibleTypes when `T` is not that type.
    template <value::Plain T>
    static Value createPrimitiveValue(meta::Property const& property, T const& value);
    /// A value of the element's class, or of the property's type for a null handle. It keeps the element's
    /// memory. \throws CannotCastIncompatibleTypes when the property's type is no `T` and the handle is null.
    template <value::Element T>
    static Value createElementValue(meta::Property const& property, T const& element);
    /// A value of the given type that owns a copy of `payload`. The type is not checked.
    /// \requires `T` to be the C++ face of `type`, or a handle class when `type` is a class.
    template <class T>
    static Value own(meta::Type const& type, ValueFlags flags, T payload);
    /// A value that owns a copy of a container and hands out its members one by one; `type` is that of a
    /// member.
    template <class C>
    static Value ownContainer(meta::Type const& type, C payload);
    /// A value that refers to a live collection.
    static Value refer(meta::Property const& property, AbstractOwnedCollection const& collection);

    /// \returns whether the value has no payload.
    [[nodiscard]] bool isEmpty() const noexcept { return data_ == nullptr; }
    /// \returns the payload, or the live collection. The payload of an enumeration is an `unsigned long`,
    /// that of an element a `ModelElement`; containers of them hold `int` and `ModelElement`.
    [[nodiscard]] void const* data() const noexcept { return data_; }
    /// \returns the live collection, or null for any other value.
    [[nodiscard]] AbstractOwnedCollection* collection() const noexcept;
    /// Passes when the value can be read as `T`: a plain value when it is there and of that very type, an
    /// optional also when it is absent, an element when it is absent or its class is `T` or a subclass, a
    /// container when the value owns one of that shape. A value that refers to a live collection cannot be
    /// read as a container. \throws CannotCastIncompatibleTypes otherwise.
    template <class T>
    void checkCompatible() const;
    /// \returns a copy of the payload, or the default of `T` when there is none.
    /// \throws CannotCastIncompatibleTypes as `checkCompatible` does.
    template <class T>
    [[nodiscard]] T getValue() const;
    /// \returns the number in a value of that enumeration, sign-extended; 0 without payload.
    /// \throws CannotCastIncompatibleTypes unless the value is one of that enumeration.
    [[nodiscard]] unsigned long getEnumerationWord(schema::EnumTable const& enumeration) const;
    /// \returns the members of an owned container, each as one value; empty for other values.
    [[nodiscard]] std::vector<Value> extract() const;
    /// Reports the value's type as one that does not fit. \throws CannotCastIncompatibleTypes.
    [[noreturn]] void refuse() const;

    /// Equality of shape and payload, and of type unless the payload is made of elements: texts by content,
    /// elements by identity of the object, live collections by address.
    friend ZELKOR_API bool operator==(Value const& a, Value const& b);
    /// \returns the hash of the payload, 0 without one. Equal for equal values.
    [[nodiscard]] std::uint64_t hash() const;

    // The operations on a payload of C++ type `T`. A null payload is one that is not there.

    template <class T>
    static void genericDeleter(void* payload) noexcept;
    template <class T>
    static void* genericCloner(void const* payload);
    template <class T>
    static bool genericComparator(void const* a, void const* b);
    template <class T>
    static std::uint64_t genericHasher(void const* payload);
    /// \returns the members of a value that owns a `C`, in the container's order; an element gets its own
    /// class as type, a null handle that of the container's members.
    template <class C>
    static std::vector<Value> typeMapperBasedExtractor(Value const& value);

  private:
    using Extractor = std::vector<Value> (*)(Value const&);

    template <class T>
    static value::Operations const* operationsOf() noexcept;
    template <class Payload>
    void take(Payload&& payload);
    /// \requires a payload of that C++ type.
    template <class Payload>
    [[nodiscard]] Payload const& payload() const noexcept {
        assert(operations_ != nullptr && *operations_->payload == typeid(Payload));
        return *static_cast<Payload const*>(data_);
    }

    // The shapes of `checkCompatible`. Types are told apart by the object that stands for them, never by
    // name.

    [[nodiscard]] bool hasType(ElementImpl const* type) const noexcept;
    [[nodiscard]] bool isOfClass(schema::ClassTable const& table) const;
    void requireOne(ElementImpl const* type) const;
    void requireOptional(ElementImpl const* type) const;
    void requireElement(schema::ClassTable const& table) const;
    void requireContainer(ValueFlags flags, ElementImpl const* type) const;
    void requireElements(ValueFlags flags, schema::ClassTable const& table) const;
    void requireShape(ValueFlags flags) const;

    void* data_ = nullptr;
    value::Operations const* operations_ = nullptr; ///< null for what is not owned
    Extractor extractor_ = nullptr;
};

} // namespace brant::zero

template <>
struct std::hash<brant::zero::Value> {
    std::size_t operator()(brant::zero::Value const& value) const { return value.hash(); }
};

#include "brant/zero/Value.ipp"
