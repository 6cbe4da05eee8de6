// Bodies of the templates of Value.hpp.
#pragma once

namespace brant::zero {

namespace value {

/// \returns the object of a primitive's type, made known by the registry.
[[nodiscard]] ZELKOR_API ElementImpl const* primitiveType(schema::ValueKind kind);

template <Primitive T>
constexpr schema::ValueKind kindOf() noexcept {
    using schema::ValueKind;
    if constexpr (std::same_as<T, bool>)
        return ValueKind::Boolean;
    else if constexpr (std::same_as<T, int>)
        return ValueKind::Integer;
    else if constexpr (std::same_as<T, unsigned int>)
        return ValueKind::UnlimitedNatural;
    else if constexpr (std::same_as<T, long>)
        return ValueKind::Integer64;
    else if constexpr (std::same_as<T, unsigned long>)
        return ValueKind::UInteger64;
    else if constexpr (std::same_as<T, double>)
        return ValueKind::Real;
    else if constexpr (std::same_as<T, std::string>)
        return ValueKind::StdString;
    else
        return ValueKind::String;
}

/// \returns the object that stands for the type, null before its package is assembled.
template <Plain T>
ElementImpl const* typeObject() {
    if constexpr (Primitive<T>)
        return primitiveType(kindOf<T>());
    else if constexpr (SchemaEnumeration<T>)
        return EnumerationTraits<T>::table.object;
    else
        return T::table.object;
}

template <Element T>
schema::ClassTable const& classTableOf() noexcept {
    if constexpr (std::same_as<T, ModelElement>)
        return modelElementTable;
    else
        return T::Impl::table;
}

/// What the payload of a `T` is. Enumerations share one representation, as do handles: a value can be read as
/// any class that its element has, and the code for it exists once.
template <class T>
struct StoredAs {
    using Type = T;
};
template <SchemaEnumeration T>
struct StoredAs<T> {
    using Type = unsigned long;
};
template <Element T>
struct StoredAs<T> {
    using Type = ModelElement;
};
template <class C>
requires Container<C>::value && SchemaEnumeration<typename Container<C>::Inner>
struct StoredAs<C> {
    using Type = typename Container<C>::template Of<int>; // signed, for the order in a set
};
template <class C>
requires Container<C>::value && Element<typename Container<C>::Inner>
struct StoredAs<C> {
    using Type = typename Container<C>::template Of<ModelElement>;
};
template <class T>
using Stored = typename StoredAs<T>::Type;

/// From the number of an enumeration to the word in a value.
inline unsigned long wordOf(int number) noexcept {
    return static_cast<unsigned long>(static_cast<long>(number));
}

template <class T>
Stored<T> toStored(T&& payload) {
    if constexpr (SchemaEnumeration<T>)
        return wordOf(static_cast<int>(payload));
    else if constexpr (std::same_as<T, Stored<T>> || Element<T>)
        return std::move(payload);
    else {
        Stored<T> stored;
        if constexpr (requires { stored.reserve(payload.size()); }) stored.reserve(payload.size());
        for (auto const& member : payload)
            stored.insert(stored.end(), static_cast<typename Stored<T>::value_type>(member));
        return stored;
    }
}

template <class T>
T fromStored(Stored<T> const& stored) {
    if constexpr (SchemaEnumeration<T>)
        return static_cast<T>(static_cast<int>(stored));
    else if constexpr (std::same_as<T, Stored<T>>)
        return stored;
    else if constexpr (Element<T>)
        return T(stored.get());
    else {
        T payload;
        if constexpr (requires { payload.reserve(stored.size()); }) payload.reserve(stored.size());
        for (auto const& member : stored) {
            if constexpr (Element<typename T::value_type>)
                payload.insert(payload.end(), typename T::value_type(member.get()));
            else
                payload.insert(payload.end(), static_cast<typename T::value_type>(member));
        }
        return payload;
    }
}

template <class T>
std::uint64_t hashOf(T const& payload) {
    if constexpr (std::same_as<T, double>)
        return hashReal(payload);
    else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
        return static_cast<std::uint64_t>(payload);
    else if constexpr (std::same_as<T, std::string> || std::same_as<T, std::u16string>)
        return hashString(payload);
    else if constexpr (Container<T>::value)
        return hashRange(payload, &hashOf<typename Container<T>::Inner>);
    else
        return std::hash<T>()(payload);
}

} // namespace value

template <class T>
void Value::genericDeleter(void* payload) noexcept {
    delete static_cast<T*>(payload);
}

template <class T>
void* Value::genericCloner(void const* payload) {
    return payload == nullptr ? nullptr : new T(*static_cast<T const*>(payload));
}

template <class T>
bool Value::genericComparator(void const* a, void const* b) {
    if (a == nullptr || b == nullptr) return a == b;
    return *static_cast<T const*>(a) == *static_cast<T const*>(b);
}

template <class T>
std::uint64_t Value::genericHasher(void const* payload) {
    return payload == nullptr ? 0 : value::hashOf<T>(*static_cast<T const*>(payload));
}

template <class T>
value::Operations const* Value::operationsOf() noexcept {
    static constexpr value::Operations operations{&typeid(T), &genericDeleter<T>, &genericCloner<T>,
                                                  &genericComparator<T>, &genericHasher<T>};
    return &operations;
}

template <class Payload>
void Value::take(Payload&& payload) {
    static_assert(!std::is_lvalue_reference_v<Payload>);
    data_ = new Payload(std::move(payload));
    operations_ = operationsOf<Payload>();
}

template <class T>
Value Value::own(meta::Type const& type, ValueFlags flags, T payload) {
    static_assert(!value::Container<T>::value, "a container goes into a value by ownContainer");
    Value result{ValueMeta(type, flags)};
    result.take(value::toStored<T>(std::move(payload)));
    return result;
}

template <class C>
Value Value::ownContainer(meta::Type const& type, C payload) {
    static_assert(value::Container<C>::value, "the container is a std::vector or a std::set");
    Value result{ValueMeta(type, value::Container<C>::flags)};
    result.setUnmanaged();
    result.take(value::toStored<C>(std::move(payload)));
    result.extractor_ = &typeMapperBasedExtractor<C>;
    return result;
}

template <value::Plain T>
Value Value::createPrimitiveValue(meta::Property const& property, T const& payload) {
    Value result = own<T>(property.getType(), ValueFlags::One, payload);
    result.checkCompatible<T>();
    return result;
}

template <value::Element T>
Value Value::createElementValue(meta::Property const& property, T const& element) {
    meta::Type const type =
        element != nullptr ? meta::Type(element.get()->getMetaClass()) : property.getType();
    Value result = own<ModelElement>(type, ValueFlags::One, element);
    result.checkCompatible<T>();
    return result;
}

template <class C>
std::vector<Value> Value::typeMapperBasedExtractor(Value const& value) {
    using Inner = typename value::Container<C>::Inner;
    std::vector<Value> members;
    if (value.isEmpty()) return members;
    auto const& container = value.payload<value::Stored<C>>();
    members.reserve(container.size());
    for (auto const& member : container) {
        if constexpr (value::Element<Inner>)
            members.push_back(own<ModelElement>(member != nullptr ? meta::Type(member.get()->getMetaClass())
                                                                  : meta::Type(Inner::metaClass()),
                                                ValueFlags::One, member));
        else
            members.push_back(own<Inner>(value.getType(), ValueFlags::One, static_cast<Inner>(member)));
    }
    return members;
}

template <class T>
void Value::checkCompatible() const {
    if constexpr (value::Plain<T>)
        requireOne(value::typeObject<T>());
    else if constexpr (value::Element<T>)
        requireElement(value::classTableOf<T>());
    else if constexpr (value::Optional<T>::value)
        requireOptional(value::typeObject<typename value::Optional<T>::Inner>());
    else {
        static_assert(value::Container<T>::value, "no value has this type");
        using Inner = typename value::Container<T>::Inner;
        if constexpr (value::Element<Inner>)
            requireElements(value::Container<T>::flags, value::classTableOf<Inner>());
        else
            requireContainer(value::Container<T>::flags, value::typeObject<Inner>());
    }
}

template <class T>
T Value::getValue() const {
    checkCompatible<T>();
    if (data_ == nullptr) return T{};
    if constexpr (value::Optional<T>::value) {
        using Inner = typename value::Optional<T>::Inner;
        return value::fromStored<Inner>(payload<value::Stored<Inner>>());
    } else
        return value::fromStored<T>(payload<value::Stored<T>>());
}

// Payloads that many types share are compiled once, in the library.
#define BRANT0_FOR_EACH_SHARED_PAYLOAD(X)                                                                    \
    X(bool)                                                                                                  \
    X(int)                                                                                                   \
    X(unsigned int)                                                                                          \
    X(long)                                                                                                  \
    X(unsigned long)                                                                                         \
    X(double)                                                                                                \
    X(std::string)                                                                                           \
    X(std::u16string)                                                                                        \
    X(ModelElement)                                                                                          \
    X(std::vector<int>)                                                                                      \
    X(std::set<int>)                                                                                         \
    X(std::vector<ModelElement>)

#define BRANT0_EXTERN(T) extern template value::Operations const* Value::operationsOf<T>() noexcept;
BRANT0_FOR_EACH_SHARED_PAYLOAD(BRANT0_EXTERN)
#undef BRANT0_EXTERN

} // namespace brant::zero
