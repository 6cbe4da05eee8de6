#pragma once

#include <new>

#include "quorl/BindingRegistry.hpp"

namespace quorl::factory {

/// A class information that keeps its name. Without more, the class has no objects, as enumerations and
/// mixins have none.
class ZELKOR_API QuorlFactoryClassInfo : public QuorlClassInfo {
  public:
    explicit QuorlFactoryClassInfo(std::string_view name, std::string description = {});

    InternedName getName() const override { return _name; }
    std::string const& getDescription() const override { return _description; }
    void allocateInstance(void** slot) const override;
    void deallocateInstance(void** slot) const noexcept override;
    void* getSelfPointer(void** slot) const noexcept override;
    bool isValidInstance(void** slot) const noexcept override;
    void copyInstance(void** to, void** from) const override;
    void bindInstance(void** slot, void* implementation) const override;

  private:
    InternedName _name;
    std::string _description;
};

/// Classes whose objects are handles `X` on elements that live elsewhere. `OwnsTarget` is false: releasing an
/// object drops the handle and no more, so no other form exists. A handle is one pointer wide, false as bool
/// without a living target, and readable as the handle of each of its superclasses.
template <class X, bool OwnsTarget>
class HandleClassInfo;

template <class X>
class HandleClassInfo<X, false> : public QuorlFactoryClassInfo {
    static_assert(sizeof(X) == sizeof(void*) && alignof(X) <= alignof(void*));

  public:
    using QuorlFactoryClassInfo::QuorlFactoryClassInfo;

    bool isHandleClass() const override { return true; }
    void allocateInstance(void** slot) const override { new (slot) X(); }
    void deallocateInstance(void** slot) const noexcept override { handle(slot).~X(); }
    void* getSelfPointer(void** slot) const noexcept override { return slot; }
    bool isValidInstance(void** slot) const noexcept override { return static_cast<bool>(handle(slot)); }
    void copyInstance(void** to, void** from) const override { new (to) X(handle(from)); }
    void bindInstance(void** slot, void* implementation) const override {
        handle(slot) = makeHandle(implementation);
    }

  protected:
    /// A handle on the element at this address.
    virtual X makeHandle(void* implementation) const = 0;

  private:
    static X& handle(void** slot) { return *std::launder(reinterpret_cast<X*>(slot)); }
};

struct DataTypePolicy {};

template <class Policy>
struct Marshaler;

template <>
struct Marshaler<DataTypePolicy> {
    /// \returns a copy of the `X` at `body` on the heap.
    template <class X>
    static void* copier(void const* body) {
        return new X(*static_cast<X const*>(body));
    }
};

/// Classes whose objects are values `X`. Between allocation and construction the body is memory without an X.
template <class X>
class CopyableDataTypeClassInfo : public QuorlFactoryClassInfo {
    static_assert(alignof(X) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

  public:
    using QuorlFactoryClassInfo::QuorlFactoryClassInfo;

    bool isSealed() const override { return true; }
    void allocateInstance(void** slot) const override {
        std::unique_ptr<void, RawDelete> raw(::operator new(sizeof(X)));
        CopyableSupport::addToUnconstructedSet(raw.get());
        *slot = raw.release();
    }
    void deallocateInstance(void** slot) const noexcept override {
        if (CopyableSupport::removeFromUnconstructedSet(*slot))
            RawDelete()(*slot);
        else
            delete static_cast<X*>(*slot);
    }
    void* getSelfPointer(void** slot) const noexcept override { return *slot; }
    bool isValidInstance(void** slot) const noexcept override {
        return !CopyableSupport::isInUnconstructedSet(*slot);
    }
    void copyInstance(void** to, void** from) const override {
        *to = Marshaler<DataTypePolicy>::copier<X>(*from);
    }

    /// For constructors: gives the new object in the first output its value.
    static void construct(krelArray& array, X value) {
        void* const body = omGetArrayElement(array, 0)->getSelfPointer();
        new (body) X(std::move(value));
        CopyableSupport::removeFromUnconstructedSet(body);
    }

  private:
    struct RawDelete {
        void operator()(void* raw) const noexcept { ::operator delete(raw); }
    };
};

/// A method of a factory class.
class ZELKOR_API QuorlMethod : public QuorlMethodInfo {
  public:
    using QuorlMethodInfo::QuorlMethodInfo;
};

/// The text of a string of one element, or of characters that are UTF-8. Throws InvalidValue for all else.
ZELKOR_API std::u16string extractString(krelArray const& value);
/// The bytes of characters as they are, or a string of one well-formed element as UTF-8. Throws InvalidValue.
ZELKOR_API std::string extractChars(krelArray const& value);

/// How a native type crosses the border: its spelling in signatures and both directions. Specialised here for
/// the built-in types; whoever brings a type of their own specialises it for that.
template <class V>
struct ValueTraits;

template <class V>
struct NumericTraits {
    static ArrayPtr toArray(V value) { return omCreateNumericScalar<V>(value); }
    /// Takes one number of any type that is exact in V.
    static V fromArray(krelArray const& value, QuorlType const& type, std::string_view where) {
        ConvertedValue const converted = QuorlTypeRepository::getInstance().convert(value, type, where);
        std::span<V const> const numbers = omGetNumbers<V>(*converted);
        if (numbers.size() != 1) // "uint32" takes a matrix, too
            raise<messages::WrongType>(where, type.getSpelling() + " scalar",
                                       std::to_string(numbers.size()) + " elements");
        return numbers[0];
    }
};

#define QUORL_NUMERIC_TRAITS(Type, Spelling)                                                                 \
    template <>                                                                                              \
    struct ValueTraits<Type> : NumericTraits<Type> {                                                         \
        static constexpr char typeName[] = Spelling;                                                         \
    };
QUORL_NUMERIC_TRAITS(bool, "logical scalar")
QUORL_NUMERIC_TRAITS(double, "double scalar")
QUORL_NUMERIC_TRAITS(std::int32_t, "int32 scalar")
QUORL_NUMERIC_TRAITS(std::int64_t, "int64 scalar")
QUORL_NUMERIC_TRAITS(std::uint32_t, "uint32")
QUORL_NUMERIC_TRAITS(std::uint64_t, "uint64 scalar")
#undef QUORL_NUMERIC_TRAITS

template <>
struct ValueTraits<std::string> {
    static constexpr char typeName[] = "char";
    static ArrayPtr toArray(std::string const& value) { return omCreateCharArray(value); }
    static std::string fromArray(krelArray const& value, QuorlType const&, std::string_view) {
        return extractChars(value);
    }
};

template <>
struct ValueTraits<std::u16string> {
    static constexpr char typeName[] = "QuorlFactoryString scalar";
    static ArrayPtr toArray(std::u16string const& value) { return omCreateStringScalar(value); }
    static std::u16string fromArray(krelArray const& value, QuorlType const&, std::string_view) {
        return extractString(value);
    }
};

/// An unchecked array.
template <>
struct ValueTraits<ArrayPtr> {
    static constexpr char typeName[] = "any";
    static ArrayPtr toArray(ArrayPtr value) { return value; }
    static ArrayPtr fromArray(krelArray const& value, QuorlType const&, std::string_view) {
        return omDuplicateArray(value);
    }
};

namespace impl {

class ZELKOR_API Invoker {
  public:
    /// Output, output name, then one to four input types; "void" stands for none.
    template <class... More>
    static std::unique_ptr<QuorlMethodSignature> createSignature(std::string_view output,
                                                                 std::string_view outputName,
                                                                 std::string_view input, More... more) {
        static_assert(sizeof...(More) <= 3, "a signature takes three to six leading strings");
        auto signature = QuorlMethodSignature::createMethodSignature();
        signature->addOutput(output, outputName);
        for (std::string_view type : {input, std::string_view(more)...})
            signature->addInput(type);
        return signature;
    }
};

/// The two directions of a property, on a body whose class fits and whose element is there.
class ZELKOR_API PropertyGetter {
  public:
    virtual ~PropertyGetter();
    virtual std::string_view getTypeName() const = 0;
    virtual ArrayPtr get(void* self) const = 0;
};

class ZELKOR_API PropertySetter {
  public:
    virtual ~PropertySetter();
    virtual void set(void* self, krelArray const& value, std::string_view where) const = 0;
};

/// Reads a `V` of an `X` by a plain function `F` that takes an X*; what it returns is an `R`.
template <class V, class X, class F, class R = V>
class AdaptedClassGetter : public PropertyGetter {
  public:
    explicit AdaptedClassGetter(F function) : _function(function) {}
    std::string_view getTypeName() const override { return ValueTraits<V>::typeName; }
    ArrayPtr get(void* self) const override {
        R result = _function(static_cast<X*>(self));
        return ValueTraits<V>::toArray(std::move(result));
    }

  private:
    F _function;
};

template <class V, class X, class F>
class AdaptedClassSetter : public PropertySetter {
  public:
    explicit AdaptedClassSetter(F function)
        : _function(function), _type(QuorlType::parse(ValueTraits<V>::typeName)) {}
    void set(void* self, krelArray const& value, std::string_view where) const override {
        _function(static_cast<X*>(self), ValueTraits<V>::fromArray(value, _type, where));
    }

  private:
    F _function;
    QuorlType _type;
};

/// A property made of a getter and, unless it is read-only, a setter.
class ZELKOR_API PropertyImpl : public QuorlPropInfo {
  public:
    PropertyImpl(std::string name, unsigned attributes, std::unique_ptr<PropertyGetter> getter,
                 std::unique_ptr<PropertySetter> setter = nullptr);

    std::string_view getTypeName() const override { return _getter->getTypeName(); }
    bool isReadOnly() const override { return _setter == nullptr; }
    ArrayPtr getQuorlArray(QuorlObject& self) const override;
    /// Throws CannotSetReadOnlyProperty without a setter.
    void setQuorlArray(QuorlObject& self, krelArray const& value) const override;

  private:
    std::unique_ptr<PropertyGetter> _getter;
    std::unique_ptr<PropertySetter> _setter;
};

} // namespace impl

} // namespace quorl::factory
